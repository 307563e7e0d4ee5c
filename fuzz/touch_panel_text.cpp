// What a touch panel's driver tells is taken, as "type-id", or refused without a trace.
#include <host/log_sink.h>
#include <stdint.h>
#include <stdlib.h>

#include "hardware_info/touch_panel_probe.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tarq::host::setLogSink([](int, const char*, const std::string&) {});
    std::string info = "before";
    const bool told = parseTpInfo({reinterpret_cast<const char*>(data), size}, info);
    if (told ? info.find('-') == std::string::npos : info != "before") abort();
    return 0;
}
