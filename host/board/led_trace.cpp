#include "host/board/led_trace.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <system_error>

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

LedTraceWriter::~LedTraceWriter() {
    if (mFd >= 0) close(mFd);
}

void LedTraceWriter::open(const std::filesystem::path& file) {
    mFd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (mFd < 0) throw std::system_error(errno, std::system_category(), file);
    write(Json{{"leds", mLeds}}.dump());
}

void LedTraceWriter::add(const LedRecord& record) {
    Json line = {{"ms", record.ms}, {"attribute", record.attribute}, {"text", record.text}};
    if (record.refused) line["refused"] = true;
    write(line.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void LedTraceWriter::write(const std::string& line) const {
    const std::string bytes = line + "\n";
    if (mFd < 0 || ::write(mFd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size())) {
        return;
    }
    perror("virtual_board: the trace of the LEDs lacks a line");
}

LedTraceLine parseLedTraceLine(const std::string& line) {
    const Json json = Json::parse(line);
    if (json.contains("leds")) return {json.at("leds").get<size_t>(), {}};
    return {0,
            {json.at("ms").get<int64_t>(), json.at("attribute").get<std::string>(),
             json.at("text").get<std::string>(), json.value("refused", false)}};
}

}  // namespace tarq::board
