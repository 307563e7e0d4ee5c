// A frame of the serial line for people, one line, and for programs, one object. What is not known
// of it is not guessed: a damaged frame is told by its bytes and by what is wrong with them, an id
// without a name by its number.
#include "tools/tarqctl/view/frames.h"

#include <stdio.h>

#include <algorithm>
#include <ostream>

#include "host/board/coprocessor/ezsp.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

namespace ash = board::ash;

using ash::asHex;
using ash::Bytes;
using ash::Ezsp;
using ash::Frame;
using ash::Type;

static std::string hex(uint8_t byte) {
    return asHex({byte});
}

// "" for one that is not known. The codes of the protocol (Silicon Labs UG101) for why a
// co-processor has reset itself or stopped.
static std::string codeName(uint8_t code) {
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

// An id without a name is shown as a number, its parameters as bytes.
static std::string ezspText(const Bytes& content) {
    const Ezsp ezsp = ash::parseEzsp(content);
    std::string text = "EZSP " + hex(ezsp.sequence) + " ";
    text += ezsp.name.empty() ? "id " + hex(ezsp.id) : ezsp.name;
    const std::string meaning = ash::meaningOf(ezsp);
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

std::string textOf(const Frame& frame) {
    if (frame.damage.empty()) return bodyText(frame);
    const size_t size = frame.bytes.size();
    return "skipped " + std::to_string(size) + (size == 1 ? " byte, " : " bytes, ") + frame.damage +
           ": " + asHex(frame.bytes);
}

// The members' names stay; which there are follows from the type.
static void addContent(const Frame& frame, Json& json) {
    if (frame.type == Type::kData) {
        const ash::Ezsp ezsp = ash::parseEzsp(frame.content);
        json["content"] = ash::asHex(frame.content, "");
        json["ezsp"] = {{"sequence", ezsp.sequence},
                        {"answer", ezsp.isAnswer},
                        {"id", ezsp.id},
                        {"name", ezsp.name},
                        {"parameters", ash::asHex(ezsp.parameters, "")},
                        {"meaning", ash::meaningOf(ezsp)}};
    } else if (!frame.content.empty()) {
        json["version"] = frame.content[0];
        json["code"] = frame.content[1];
        json["reason"] = codeName(frame.content[1]);
    }
}

// What is not known of a damaged frame is left out rather than null: a reader asks for "damage"
// first.
static Json jsonOf(const Frame& frame, const std::optional<FrameOrigin>& origin) {
    Json json;
    if (origin) {
        if (origin->ms) json["ms"] = *origin->ms;
        if (!origin->time.empty()) json["time"] = origin->time;
        json["from"] = origin->sender;
    }
    json["bytes"] = ash::asHex(frame.bytes, "");
    if (frame.type != Type::kNone) {
        json["type"] = nameOf(frame.type);
        json["checksum"] = frame.isChecksumGood ? "good" : "bad";
    }
    if (!frame.damage.empty()) {
        json["damage"] = frame.damage;
        return json;
    }
    if (frame.type == Type::kData) {
        json["number"] = frame.number;
        json["again"] = frame.isAgain;
    }
    if (frame.type == Type::kAck || frame.type == Type::kNak) json["busy"] = frame.isBusy;
    if (frame.type <= Type::kNak) json["ack"] = frame.expected;
    addContent(frame, json);
    return json;
}

void printFrame(const Session& session, const Frame& frame,
                const std::optional<FrameOrigin>& origin) {
    if (session.json) return printJson(session.out, jsonOf(frame, origin));
    std::string line = textOf(frame);
    if (origin) {
        char sender[16];
        snprintf(sender, sizeof(sender), "%-13s", origin->sender.c_str());
        line.insert(0, origin->time + (origin->time.empty() ? "" : " ") + sender);
    }
    session.out << line + "\n" << std::flush;
}

FramePrinter::FramePrinter(const Session& session, const std::vector<std::string>& senders)
    : mSession(session) {
    for (const std::string& sender : senders) mDirections.push_back({sender});
}

// In the order in which senders were first heard of, behind those that were named.
FramePrinter::Direction& FramePrinter::of(const std::string& sender) {
    const auto known = std::find_if(mDirections.begin(), mDirections.end(),
                                    [&](const Direction& one) { return one.sender == sender; });
    return known != mDirections.end() ? *known : mDirections.emplace_back(Direction{sender});
}

// A frame is told with the origin of its last byte, by which time all of it was there.
void FramePrinter::print(Direction* direction, const std::vector<board::ash::Frame>& frames) const {
    for (const board::ash::Frame& frame : frames) {
        if (frame.damage.empty()) {
            ++direction->good;
        } else {
            ++direction->damaged;
            direction->skippedBytes += frame.bytes.size();
        }
        printFrame(mSession, frame, direction->last);
    }
}

void FramePrinter::take(const std::optional<FrameOrigin>& origin, const board::ash::Bytes& bytes) {
    Direction& direction = of(origin ? origin->sender : "");
    direction.last = origin;
    print(&direction, direction.reader.read(bytes));
}

// Where nothing came at all, one line of zeros says so.
void FramePrinter::finish() {
    if (mDirections.empty()) of("");
    for (Direction& direction : mDirections) print(&direction, direction.reader.finish());
    if (mSession.json) return;
    const auto number = [](size_t count, const std::string& what) {
        return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
    };
    for (const Direction& one : mDirections) {
        mSession.out << one.sender + (one.sender.empty() ? "" : ": ") + number(one.good, "frame") +
                                ", " + std::to_string(one.damaged) + " damaged, " +
                                number(one.skippedBytes, "byte") + " skipped\n"
                     << std::flush;
    }
}

}  // namespace tarq::tools
