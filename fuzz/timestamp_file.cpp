// A timestamp file, for a package of time 100 and for one that is newer than any: what lets the
// first one in must let in the second.
#include <host/log_sink.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "fuzz/board_files.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/timestamp_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const BoardFiles board;
    tarq::host::setLogSink([](int, const char*, const std::string&) {});
    strcpy(peripheralTable[static_cast<size_t>(PeripheralType::LCD)].value, "ili9881c-3");
    const std::string_view content(reinterpret_cast<const char*>(data), size);
    const bool later = isLaterThanListed(content, 100);
    if (later && !isLaterThanListed(content, INT64_MAX)) abort();
    return 0;
}
