// A question is a frame, the answer a list of writes with their times, which the serial line
// carries out. A fault changes only the last step, from the answer's frame to these writes, so that
// each is as its name says whatever was asked. Nothing here waits or knows the line.
#include "host/board/coprocessor/coprocessor.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <stdexcept>

namespace tarq::board {

using ash::Bytes;
using ash::Type;
using Fault = host::CoprocessorFault;
using std::chrono::milliseconds;

static constexpr milliseconds kLate{1500};
static constexpr milliseconds kGap{20};
static constexpr size_t kPiece = 3;      // in bytes
static constexpr size_t kTooLong = 128;  // likewise

void Coprocessor::setManufacturer(const std::string& hex) {
    if (hex.empty() || hex.size() > 4 ||
        hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        throw std::invalid_argument("a manufacturer is one to four hexadecimal digits");
    }
    mManufacturer = static_cast<uint16_t>(strtoul(hex.c_str(), nullptr, 16));
}

// As the answer has it: four bits, four bits and a byte.
void Coprocessor::setVersion(const std::string& text) {
    unsigned a = 0, b = 0, c = 0;
    const bool isRead = sscanf(text.c_str(), "%2u.%2u.%3u", &a, &b, &c) == 3;
    const unsigned version = a << 12 | b << 8 | c;
    // Only what reads back the same was in range, and had nothing around it.
    if (!isRead || a > 15 || b > 15 || c > 255 || ash::versionText(version) != text) {
        throw std::invalid_argument("a version is A.B.C, up to 15.15.255");
    }
    mVersion = static_cast<uint16_t>(version);
}

// Damaged and unknown questions get no answer. A real one asks for them once more with a NAK, which
// the host, who polls for anything of 5 bytes or more, would not take for an answer either.
std::vector<Coprocessor::Sending> Coprocessor::answer(const ash::Frame& question) {
    if (!question.damage.empty() || mFault == Fault::kSilent) return {};
    if (question.type == Type::kReset) {
        constexpr uint8_t kAshVersion = 2;
        constexpr uint8_t kBySoftware = 0x0B;
        mNumber = 0;
        ash::Frame done;
        done.type = Type::kResetDone;
        done.content = {kAshVersion, kBySoftware};
        return disturbed(done);
    }
    if (question.type != Type::kData || mFault == Fault::kSilentAfterReset) return {};
    const ash::Frame answer = answerToData(question);
    return answer.content.empty() ? std::vector<Sending>{} : disturbed(answer);
}

// Without content when the command is not known. The host's own number is not looked at: its check
// counts on through its attempts without being answered.
ash::Frame Coprocessor::answerToData(const ash::Frame& question) {
    const auto low = [](uint16_t number) { return static_cast<uint8_t>(number & 0xFF); };
    const auto high = [](uint16_t number) { return static_cast<uint8_t>(number >> 8); };
    ash::Ezsp ezsp = ash::parseEzsp(question.content);
    ash::Frame frame;
    if (ezsp.isAnswer || ezsp.name.empty()) return frame;
    if (ezsp.name == "query") {
        constexpr uint8_t kSuccess = 0;
        ezsp.parameters = {kSuccess, low(mManufacturer), high(mManufacturer), low(mVersion),
                           high(mVersion)};
    } else {
        constexpr uint8_t kProtocol = 7;
        constexpr uint8_t kMeshStack = 2;
        ezsp.parameters = {kProtocol, kMeshStack, low(mVersion), high(mVersion)};
    }
    ezsp.isAnswer = true;
    frame.type = Type::kData;
    frame.number = mNumber;
    frame.expected = static_cast<uint8_t>((question.number + 1) & 7);
    frame.content = encodeEzsp(ezsp);
    mNumber = static_cast<uint8_t>((mNumber + 1) & 7);
    return frame;
}

static void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// The answer as the present fault has it.
std::vector<Coprocessor::Sending> Coprocessor::disturbed(const ash::Frame& answer) const {
    Bytes bytes = encode(answer);
    ash::Frame acknowledgement;
    acknowledgement.type = Type::kAck;
    acknowledgement.expected = answer.expected;
    if (mFault == Fault::kMerged) {
        ash::Frame again = answer;
        again.isAgain = true;
        append(bytes, encode(again));
    } else if (mFault == Fault::kGarbage) {
        const Bytes noise = {0x00, 0xFF, 0x55, 0xAA};
        bytes.insert(bytes.begin(), noise.begin(), noise.end());
    } else if (mFault == Fault::kTooLong) {
        for (const Bytes once = bytes; bytes.size() <= kTooLong;) append(bytes, once);
    } else if (mFault == Fault::kAcknowledged) {
        const Bytes front = encode(acknowledgement);
        bytes.insert(bytes.begin(), front.begin(), front.end());
    } else if (mFault == Fault::kTooShort) {
        bytes = encode(acknowledgement);
        bytes.push_back(ash::kFlag);
    }
    if (mFault != Fault::kPieces) {
        return {{mFault == Fault::kLate ? kLate : milliseconds(0), std::move(bytes)}};
    }
    std::vector<Sending> pieces;
    for (size_t begin = 0; begin < bytes.size(); begin += kPiece) {
        const size_t end = std::min(begin + kPiece, bytes.size());
        pieces.push_back({kGap * static_cast<int>(pieces.size()),
                          Bytes(bytes.begin() + static_cast<ptrdiff_t>(begin),
                                bytes.begin() + static_cast<ptrdiff_t>(end))});
    }
    return pieces;
}

}  // namespace tarq::board
