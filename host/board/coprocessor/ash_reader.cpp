// Bytes are gathered up to the next flag, which ends a frame, or cancel byte, which ends nothing
// good. They are kept twice, as they came and with the escapes undone, because the presence check
// sends without escaping: what does not decode in one form may do so in the other.
#include "host/board/coprocessor/ash_frame.h"

#include <algorithm>
#include <utility>

namespace tarq::board::ash {

// More than a frame of which every byte is escaped; what is longer is skipped in parts.
static constexpr size_t kMaxLine = 300;

std::vector<Frame> Reader::read(const uint8_t* bytes, size_t size) {
    for (size_t i = 0; i < size; ++i) take(bytes[i]);
    return std::exchange(mFrames, {});
}

std::vector<Frame> Reader::finish() {
    if (!mLine.empty()) skip("no flag at the end");
    mDamage.clear();
    return std::exchange(mFrames, {});
}

void Reader::take(uint8_t byte) {
    if (byte == kCancel) cancel();
    mLine.push_back(byte);
    switch (byte) {
        case kFlag:
            return endFrame();
        case kCancel:
        case kXon:
        case kXoff:
            break;
        case kSubstitute:
            if (mDamage.empty()) mDamage = "garbled by the line";
            break;
        case kEscape:
            mIsEscaped = true;
            break;
        default:
            mPlain.push_back(std::exchange(mIsEscaped, false) ? byte ^ 0x20 : byte);
    }
    if (mDamage.empty() && (mPlain.size() > kMaxFrame || mLine.size() == kMaxLine)) {
        mDamage = "longer than a frame";
    }
    if (mLine.size() == kMaxLine) skip(mDamage);
}

// One in front of a frame belongs to it. The rest after a part that was too long is gone as well.
void Reader::cancel() {
    if (!mLine.empty()) skip(mDamage.empty() ? "cancelled" : mDamage);
    mDamage.clear();
}

// Without the cancel byte in front and the flag.
Bytes Reader::unescapedLine() const {
    return Bytes(mLine.begin() + (mLine[0] == kCancel ? 1 : 0), mLine.end() - 1);
}

// The presence check escapes nothing, and the control byte of its second DATA frame is an XON. On a
// line with RTS and CTS that is a byte like any other; the checksum tells which of the two it was.
// An escape byte would be lost to the co-processor, but can be read here all the same.
void Reader::endFrame() {
    if (!mDamage.empty()) return skip(std::exchange(mDamage, {}));
    if (mPlain.empty()) return skip("a flag without a frame");
    Frame frame = decode(mPlain);
    if (!frame.isChecksumGood) {
        if (Frame asItCame = decode(unescapedLine()); asItCame.isChecksumGood) {
            frame = std::move(asItCame);
            const bool hasEscape = std::find(mLine.begin(), mLine.end(), kEscape) != mLine.end();
            if (hasEscape && frame.damage.empty()) frame.damage = "a byte in it is not escaped";
        }
    }
    frame.bytes = std::exchange(mLine, {});
    mFrames.push_back(std::move(frame));
    mPlain.clear();
    mIsEscaped = false;
}

void Reader::skip(const std::string& why) {
    Frame frame;
    frame.damage = why;
    frame.bytes = std::exchange(mLine, {});
    mFrames.push_back(std::move(frame));
    mPlain.clear();
    mIsEscaped = false;
}

}  // namespace tarq::board::ash
