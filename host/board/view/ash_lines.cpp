#include "host/board/view/ash_lines.h"

#include <stdio.h>
#include <time.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "host/board/ash/ezsp.h"
#include "host/board/ash/frame_text.h"
#include "host/board/led_trace.h"
#include "host/board/serial_record.h"

namespace tarq::board {

using ash::Frame;
using ash::Type;
using Json = nlohmann::ordered_json;

// In ms, what CLOCK_MONOTONIC lacks to the time of the day. Taken once: the difference of two
// clocks wavers.
static int64_t offset() {
    using std::chrono::milliseconds;
    const auto wall = std::chrono::system_clock::now().time_since_epoch();
    static const int64_t kOffset = std::chrono::duration_cast<milliseconds>(wall).count() - now();
    return kOffset;
}

static std::string timeOfDay(int64_t ms) {
    const int64_t wall = offset() + ms;
    const auto seconds = static_cast<time_t>(wall / 1000);
    tm parts = {};
    localtime_r(&seconds, &parts);
    char text[40];
    snprintf(text, sizeof(text), "%02d:%02d:%02d.%03d", parts.tm_hour, parts.tm_min, parts.tm_sec,
             static_cast<int>(wall % 1000));
    return text;
}

std::string lineOf(const Frame& frame, const std::optional<FrameOrigin>& origin) {
    if (!origin) return asText(frame);
    char sender[16];
    snprintf(sender, sizeof(sender), " %-13s", senderName(origin->isFromHost));
    return timeOfDay(origin->ms) + sender + asText(frame);
}

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
        json["reason"] = ash::codeName(frame.content[1]);
    }
}

std::string jsonOf(const Frame& frame, const std::optional<FrameOrigin>& origin) {
    Json json;
    if (origin) json = {{"ms", origin->ms}, {"from", senderName(origin->isFromHost)}};
    json["bytes"] = ash::asHex(frame.bytes, "");
    if (frame.type != Type::kNone) {
        json["type"] = nameOf(frame.type);
        json["checksum"] = frame.isChecksumGood ? "good" : "bad";
    }
    if (!frame.damage.empty()) {
        json["damage"] = frame.damage;
        return json.dump();
    }
    if (frame.type == Type::kData) {
        json["number"] = frame.number;
        json["again"] = frame.isAgain;
    }
    if (frame.type == Type::kAck || frame.type == Type::kNak) json["busy"] = frame.isBusy;
    if (frame.type <= Type::kNak) json["ack"] = frame.expected;
    addContent(frame, json);
    return json.dump();
}

void FrameCounts::add(const Frame& frame) {
    if (frame.damage.empty()) {
        ++good;
    } else {
        ++damaged;
        skippedBytes += frame.bytes.size();
    }
}

std::string textOf(const FrameCounts& counts) {
    const auto number = [](size_t count, const std::string& what) {
        return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
    };
    return number(counts.good, "frame") + ", " + std::to_string(counts.damaged) + " damaged, " +
           number(counts.skippedBytes, "byte") + " skipped";
}

}  // namespace tarq::board
