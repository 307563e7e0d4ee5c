// Takes the bytes of one direction of the line apart.
#pragma once

#include "host/board/coprocessor/ash_frame.h"

namespace tarq::board::ash {

// Every byte is in the bytes of exactly one frame, in their order. What is damaged reaches up to
// the next flag or cancel byte; the frame after that is a good one again. For one thread.
class Reader {
  public:
    // The frames that end in these bytes, which may be any part of the stream.
    std::vector<Frame> read(const uint8_t* bytes, size_t size);
    std::vector<Frame> read(const Bytes& bytes) { return read(bytes.data(), bytes.size()); }
    // What came since the last flag, as a damaged frame, if anything did.
    std::vector<Frame> finish();

  private:
    void take(uint8_t byte);
    void cancel();
    void endFrame();
    Bytes unescapedLine() const;
    void skip(const std::string& why);

    Bytes mLine;   // as it came, since the last frame
    Bytes mPlain;  // not escaped
    bool mIsEscaped = false;
    std::string mDamage;  // why the next flag does not end a frame
    std::vector<Frame> mFrames;
};

}  // namespace tarq::board::ash
