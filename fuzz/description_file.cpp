// A description file, read and applied to the table of a board with index 3 and overlay id 5. The
// dump behind it reads every field that the file may have filled, also those without a terminator.
#include <host/log_sink.h>
#include <stdint.h>

#include "hardware_info/description_loader.h"
#include "hardware_info/peripheral_list.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tarq::host::setLogSink([](int, const char*, const std::string&) {});
    FILE* file = fmemopen(const_cast<uint8_t*>(data), size, "r");
    if (file == nullptr) return 0;  // there is no file of no bytes in memory
    HardwareDescription description;
    if (readDescription(file, &description)) applyDescription(description, 3, 5);
    fclose(file);
    dump_hardware();
    return 0;
}
