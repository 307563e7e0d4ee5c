// Saved logs: parsed, read and explained.
#include <stddef.h>
#include <stdint.h>

#include <sstream>

#include "tools/tarqctl/tarqctl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const char* json : {"--json=false", "--json"}) {
        std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
        std::ostringstream out;
        tarq::tools::runTarqctl({"explain-log", json}, false, in, out, out);
    }
    return 0;
}
