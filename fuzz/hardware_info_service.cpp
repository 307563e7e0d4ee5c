// Requests to the hardware information service.
#include <host/log_sink.h>

#include "fuzz/transact.h"
#include "hardware_info/HardwareInfoService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const android::sp<com::tarq::hardwareInfo::HardwareInfoService> service = [] {
        tarq::host::setLogSink([](int, const char*, const std::string&) {});
        return new com::tarq::hardwareInfo::HardwareInfoService;
    }();
    transact(service, data, size);
    return 0;
}
