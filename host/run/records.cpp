// The board writes the lines and the tools read them, so both directions stand here beside each
// other. A line that is none is told to the reader, who passes over it.
#include "host/run/records.h"

#include <stdio.h>
#include <time.h>

#include <nlohmann/json.hpp>

#include "host/run/text.h"

namespace tarq::host {

// In ns, since the epoch of the clock.
static int64_t nsOf(clockid_t clock) {
    timespec time = {};
    clock_gettime(clock, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

int64_t nowMs() {
    return nsOf(CLOCK_MONOTONIC) / 1'000'000;
}

// What the two clocks differ by is taken once: it wavers. Only the difference is rounded, so that
// other processes have the same.
std::string logTime(int64_t ms) {
    static const int64_t kOffset =
            (nsOf(CLOCK_REALTIME) - nsOf(CLOCK_MONOTONIC) + 500'000) / 1'000'000;
    const int64_t wall = kOffset + ms;
    const time_t second = wall / 1000;
    tm local = {};
    localtime_r(&second, &local);
    char text[32];
    const size_t size = strftime(text, sizeof(text), "%m-%d %H:%M:%S", &local);
    snprintf(text + size, sizeof(text) - size, ".%03d", static_cast<int>(wall % 1000));
    return text;
}

using Json = nlohmann::ordered_json;

std::string firstLedLine(size_t leds) {
    return Json{{"leds", leds}}.dump();
}

// A refused record may hold any bytes, as whoever wrote it meant something else.
std::string ledLine(const LedRecord& record) {
    Json line = {{"ms", record.ms}, {"attribute", record.attribute}, {"text", record.text}};
    if (!record.whyRefused.empty()) {
        line["refused"] = true;
        line["why"] = record.whyRefused;
    }
    return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// A file of a board that is just beginning, or of another version, may hold anything.
bool parseLedLine(const std::string& line, LedLine* parsed) {
    try {
        const Json json = Json::parse(line);
        *parsed = {};
        parsed->leds = json.value("leds", size_t{0});
        if (parsed->leds != 0) return true;
        parsed->record = {json.at("ms").get<int64_t>(), json.at("attribute").get<std::string>(),
                          json.at("text").get<std::string>(), json.value("why", "")};
        return true;
    } catch (const Json::exception&) {
        return false;
    }
}

const char* senderName(bool isHost) {
    return isHost ? "host" : "coprocessor";
}

std::string serialLine(const SerialChunk& chunk) {
    return Json{{"ms", chunk.ms},
                {"from", senderName(chunk.isFromHost)},
                {"bytes", hexOf({chunk.bytes.begin(), chunk.bytes.end()})}}
            .dump();
}

bool parseSerialLine(const std::string& line, SerialChunk* chunk) {
    try {
        const Json json = Json::parse(line);
        std::string bytes;
        if (!parseHex(json.at("bytes").get<std::string>(), &bytes).empty()) return false;
        *chunk = {json.at("ms").get<int64_t>(),
                  json.at("from").get<std::string>() == senderName(true),
                  {bytes.begin(), bytes.end()}};
        return true;
    } catch (const Json::exception&) {
        return false;
    }
}

}  // namespace tarq::host
