// Saved logs: taken apart, read and explained. Users paste such logs from anywhere; whatever they
// hold, there is something to say about every request in them.
#include <stddef.h>
#include <stdint.h>

#include <sstream>
#include <stdexcept>

#include "tools/tarqctl/log/log_source.h"
#include "tools/tarqctl/log/saved_log.h"
#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/match/match_log.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    tarq::tools::MatchLog log;
    tarq::tools::SavedLog lines([&log](const tarq::tools::LogLine& line) { log.add(line); });
    const tarq::tools::LogSink sink = {[](const std::string&) {},
                                       [&lines](const std::string& line) { lines.add(line); }};
    try {
        tarq::tools::readLog(in, sink, 1 << 20);
    } catch (const std::runtime_error&) {
        return 0;  // damaged, or too much
    }
    for (const tarq::tools::MatchRequest& request : log.all()) {
        const tarq::tools::Explanation explanation = explain(request);
        if (asText(explanation).empty() || asJson(explanation).empty()) __builtin_trap();
    }
    return 0;
}
