#include "tools/tarqctl/ask/led_refusals.h"

namespace tarq::tools {

LedRefusals::LedRefusals(const std::string& records) : mRecords(records) {
    mRecords.skip();
}

std::vector<host::LedRecord> LedRefusals::find(const IsOurs& isOurs) {
    std::vector<host::LedRecord> refused;
    mRecords.read([&](const std::string& line) {
        host::LedLine parsed;
        if (!host::parseLedLine(line, &parsed) || parsed.record.whyRefused.empty()) return;
        if (isOurs(parsed.record)) refused.push_back(parsed.record);
    });
    return refused;
}

}  // namespace tarq::tools
