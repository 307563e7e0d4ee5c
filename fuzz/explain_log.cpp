// Saved logs: taken apart, read and explained. Users paste such logs from anywhere; whatever they
// hold, there is something to say about every request in them.
#include <stddef.h>
#include <stdint.h>

#include <sstream>

#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/match/log.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    tarq::tools::MatchLog log;
    for (std::string line; std::getline(in, line);) log.add(line);
    for (const tarq::tools::MatchRequest& request : log.all()) {
        const tarq::tools::Explanation explanation = explain(request);
        if (asText(explanation).empty() || asJson(explanation).empty()) __builtin_trap();
    }
    return 0;
}
