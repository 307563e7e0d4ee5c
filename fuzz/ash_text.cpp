// A capture of the serial line as people paste it: bytes in hexadecimal, or lines of JSON. What is
// damaged is named, and nothing else happens.
#include "fuzz/tool.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    runTool({"ash"}, data, size);
    runTool({"--json", "ash"}, data, size);
    return 0;
}
