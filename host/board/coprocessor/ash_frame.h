// The frames of ASH, the protocol of the serial line between a host and a Zigbee co-processor. On
// the line a frame is
//
//     control byte | content | checksum, high byte first | flag
//
// where every byte before the flag that means something to the line is escaped: 7d and the byte
// with 20 flipped. The checksum is of the bytes before they are escaped.
//
//     bits of the control byte         mask  value
//     0 n n n r a a a          DATA      80     00   n: its number, r: transmitted again
//     1 0 0 - b a a a          ACK       e0     80   b: busy, send no data
//     1 0 1 - b a a a          NAK       e0     a0
//     1 1 0 0 0 0 0 0          RST       ff     c0
//     1 1 0 0 0 0 0 1          RSTACK    ff     c1
//     1 1 0 0 0 0 1 0          ERROR     ff     c2
//
// a is the number that is expected next. The content of DATA, 3 to 128 bytes, is XORed with a
// pseudo-random sequence; that of RSTACK and ERROR is a version and a code; the others have none.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

namespace tarq::board::ash {

using Bytes = std::vector<uint8_t>;

// The bytes that mean something to the line itself; in a frame they are escaped.
constexpr uint8_t kFlag = 0x7E;
constexpr uint8_t kEscape = 0x7D;
constexpr uint8_t kXon = 0x11;  // this and the next are ignored
constexpr uint8_t kXoff = 0x13;
constexpr uint8_t kSubstitute = 0x18;  // in the place of a byte that the line has garbled
constexpr uint8_t kCancel = 0x1A;      // what came since the last flag does not count
constexpr size_t kMaxFrame = 131;      // control byte to checksum, not escaped

enum class Type { kNone, kData, kAck, kNak, kReset, kResetDone, kError };

struct Frame {
    Type type = Type::kNone;
    uint8_t number = 0;    // of DATA
    bool isAgain = false;  // DATA
    bool isBusy = false;   // ACK and NAK
    uint8_t expected = 0;  // by who sends DATA, ACK or NAK
    Bytes content = {};    // of DATA without the randomisation

    // The rest is for a frame that was received.
    bool isChecksumGood = false;
    std::string damage = {};  // why it is to be skipped, else ""; what is above is a guess then
    Bytes bytes = {};         // as they were on the line
};

// "DATA"; "" for none.
const char* nameOf(Type type);

// bytes: from the control byte to the checksum, not escaped, any number of them. It never fails:
// what cannot be a frame has its reason in damage. Which bytes they were on the line is for the
// caller to add.
Frame decode(const Bytes& bytes);

// The bytes on the line, up to the flag. RST and RSTACK begin with a cancel byte, as they do
// wherever they are sent.
Bytes encode(const Frame& frame);

// CRC-CCITT with 1021 as its polynomial, begun with ffff; over control byte and content as they are
// before escaping, so of DATA with the randomisation.
uint16_t checksum(const uint8_t* bytes, size_t size);

// "02 1a 7e"
std::string asHex(const Bytes& bytes, const char* between = " ");

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
