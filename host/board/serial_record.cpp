#include "host/board/serial_record.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "host/board/attributes.h"

namespace tarq::board {

using Json = nlohmann::ordered_json;

std::filesystem::path recordOfSerial(const std::filesystem::path& board) {
    return board / "run/serial.jsonl";
}

const char* senderName(bool isHost) {
    return isHost ? "host" : "coprocessor";
}

std::string asLine(const SerialChunk& chunk) {
    return Json{{"ms", chunk.ms},
                {"from", senderName(chunk.isFromHost)},
                {"bytes", ash::asHex(chunk.bytes, "")}}
            .dump();
}

SerialChunk parseSerialLine(const std::string& line) {
    const Json json = Json::parse(line);
    const std::string bytes = fromHex(json.at("bytes").get<std::string>());
    return {json.at("ms").get<int64_t>(), json.at("from").get<std::string>() == senderName(true),
            ash::Bytes(bytes.begin(), bytes.end())};
}

}  // namespace tarq::board
