#include "host/board/led_trace.h"

#include <chrono>
#include <nlohmann/json.hpp>

namespace tarq::board {

using Json = nlohmann::ordered_json;

std::filesystem::path traceOfLeds(const std::filesystem::path& board) {
    return board / "run/leds.jsonl";
}

int64_t now() {
    using std::chrono::milliseconds;
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<milliseconds>(time).count();
}

void LedTraceWriter::open(const std::filesystem::path& file) {
    mFile.open(file);
    mFile.add(Json{{"leds", mLeds}}.dump());
}

void LedTraceWriter::add(const LedRecord& record) {
    Json line = {{"ms", record.ms}, {"attribute", record.attribute}, {"text", record.text}};
    if (record.refused) line["refused"] = true;
    mFile.add(line.dump(-1, ' ', false, Json::error_handler_t::replace));
}

LedTraceLine parseLedTraceLine(const std::string& line) {
    const Json json = Json::parse(line);
    if (json.contains("leds")) return {json.at("leds").get<size_t>(), {}};
    return {0,
            {json.at("ms").get<int64_t>(), json.at("attribute").get<std::string>(),
             json.at("text").get<std::string>(), json.value("refused", false)}};
}

}  // namespace tarq::board
