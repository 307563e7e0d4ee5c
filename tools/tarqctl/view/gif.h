// Moving pictures in the format GIF.
#pragma once

#include <gif_lib.h>
#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

namespace tarq::tools {

// Encodes frame by frame; of each only what differs from the one before is kept. All of it throws
// std::bad_alloc.
class Gif {
  public:
    static constexpr uint8_t kTransparent = 0;  // a place in the palette that is in no frame

    // palette: RRGGBB, 256 at most. loops: it is shown again and again, else once.
    Gif(size_t width, size_t height, const std::vector<uint32_t>& palette, bool loops);

    // Row by row, places in the palette. time: for how long, in ms. A GIF counts in hundredths of a
    // second, and browsers show a frame of less than 20 ms for longer.
    void add(const std::vector<uint8_t>& pixels, int64_t time);
    // The file; called once, after the last frame.
    std::string finish();

  private:
    const int mWidth;
    const int mHeight;
    std::string mBytes;
    std::unique_ptr<GifFileType, void (*)(GifFileType*)> mEncoder;
    std::vector<uint8_t> mSeen;  // the frame before
};

}  // namespace tarq::tools
