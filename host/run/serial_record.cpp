#include "host/run/serial_record.h"

#include <nlohmann/json.hpp>

#include "host/run/text.h"

namespace tarq::host {

using Json = nlohmann::ordered_json;

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
