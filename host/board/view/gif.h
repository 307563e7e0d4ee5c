// Moving pictures.
#pragma once

#include <gif_lib.h>
#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

namespace tarq::board {

// Makes the bytes of a GIF file, frame by frame. Of each only what differs from the one before is
// kept. All of it throws std::runtime_error when there is not enough memory.
class Gif {
  public:
    // palette: RRGGBB, 256 at most; transparent: the one of them that is in no frame. loops: it is
    // shown again and again, else once.
    Gif(size_t width, size_t height, const std::vector<uint32_t>& palette, uint8_t transparent,
        bool loops);

    // Row by row, places in the palette. time: for how long, in ms.
    void add(const std::vector<uint8_t>& pixels, int64_t time);
    // Called once, after the last frame.
    std::string finish();

  private:
    static void check(int result);
    void putScreen(const std::vector<uint32_t>& palette);
    void putLooping();
    void putControl(int64_t time);

    const size_t mWidth;
    const size_t mHeight;
    const uint8_t mTransparent;
    std::string mBytes;
    std::unique_ptr<GifFileType, void (*)(GifFileType*)> mEncoder;
    std::vector<uint8_t> mBefore;  // what is seen so far
};

}  // namespace tarq::board
