// The list of panels in a description file, searched for panel 3. What is found is an item of the
// list as it stands there; otherwise the result is left alone.
#include <host/log_sink.h>
#include <stdint.h>
#include <stdlib.h>

#include "hardware_info/display_probe.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tarq::host::setLogSink([](int, const char*, const std::string&) {});
    const std::string_view list(reinterpret_cast<const char*>(data), size);
    std::string item = "before,";
    const bool found = findPanel(list, 3, item);
    if (found ? list.find(item) == list.npos || item.find(',') != item.npos : item != "before,") {
        abort();
    }
    return 0;
}
