#include "host/board/ash/frame_text.h"

#include "host/board/ash/ezsp.h"

namespace tarq::board::ash {

static std::string hex(uint8_t byte) {
    return asHex({byte});
}

static std::string ezspText(const Bytes& content) {
    const Ezsp ezsp = parseEzsp(content);
    std::string text = "EZSP " + hex(ezsp.sequence) + " ";
    text += ezsp.name.empty() ? "id " + hex(ezsp.id) : ezsp.name;
    const std::string meaning = meaningOf(ezsp);
    if (ezsp.isAnswer) text += " answered";
    return meaning.empty() ? text : text + (ezsp.isAnswer ? ": " : ", ") + meaning;
}

static std::string codeText(const Bytes& content) {
    const std::string name = codeName(content[1]);
    return "version " + std::to_string(content[0]) + " code " + hex(content[1]) +
           (name.empty() ? "" : ", " + name);
}

// content: long enough for the type.
static std::string bodyText(const Frame& frame) {
    const std::string expected = " " + std::to_string(frame.expected);
    const std::string name = nameOf(frame.type);
    switch (frame.type) {
        case Type::kData:
            return name + " frame " + std::to_string(frame.number) + " ack" + expected +
                   (frame.isAgain ? " again" : "") + "  " + ezspText(frame.content);
        case Type::kAck:
        case Type::kNak:
            return name + expected + (frame.isBusy ? " busy" : "");
        case Type::kResetDone:
        case Type::kError:
            return name + " " + codeText(frame.content);
        default:
            return name;
    }
}

std::string codeName(uint8_t code) {
    switch (code) {
        case 0x00:
            return "unknown";
        case 0x01:
            return "external";
        case 0x02:
            return "power-on";
        case 0x03:
            return "watchdog";
        case 0x06:
            return "assertion";
        case 0x09:
            return "boot loader";
        case 0x0B:
            return "software";
        case 0x51:
            return "too many time-outs of acknowledgements";
        default:
            return "";
    }
}

std::string asText(const Frame& frame) {
    if (frame.damage.empty()) return bodyText(frame);
    const size_t size = frame.bytes.size();
    return "skipped " + std::to_string(size) + (size == 1 ? " byte, " : " bytes, ") + frame.damage +
           ": " + asHex(frame.bytes);
}

}  // namespace tarq::board::ash
