// The tool within this process, for the targets that give it something to read.
#pragma once

#include <stdint.h>
#include <stdlib.h>

#include <sstream>

#include "tools/tarqctl/tarqctl.h"

// What is read is done or refused, and a refusal begins as each of the tool does.
inline int runTool(const std::vector<std::string>& words, const uint8_t* data, size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    std::ostringstream out;
    std::ostringstream err;
    const int code = tarq::tools::runTarqctl(words, false, in, out, err);
    if (code < 0 || code > 2) abort();
    const std::string said = out.str() + err.str();
    if (code == 2 && said.find("tarqctl: ") == said.npos && said.find("\"error\"") == said.npos) {
        abort();
    }
    return code;
}
