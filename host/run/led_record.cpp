#include "host/run/led_record.h"

#include <nlohmann/json.hpp>

namespace tarq::host {

using Json = nlohmann::ordered_json;

std::string firstLedLine(size_t leds) {
    return Json{{"leds", leds}}.dump();
}

std::string ledLine(const LedRecord& record) {
    Json line = {{"ms", record.ms}, {"attribute", record.attribute}, {"text", record.text}};
    if (record.isRefused) line["refused"] = true;
    return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool parseLedLine(const std::string& line, LedLine* parsed) {
    try {
        const Json json = Json::parse(line);
        *parsed = {};
        parsed->leds = json.value("leds", size_t{0});
        if (parsed->leds != 0) return true;
        parsed->record = {json.at("ms").get<int64_t>(), json.at("attribute").get<std::string>(),
                          json.at("text").get<std::string>(), json.value("refused", false)};
        return true;
    } catch (const Json::exception&) {
        return false;
    }
}

}  // namespace tarq::host
