// Requests to the radio key service, whose receiver does nothing.
#include <host/log_sink.h>

#include "common/pause.h"
#include "fuzz/board_files.h"
#include "fuzz/transact.h"
#include "radiokey/RadioKeyService.h"
#include "radiokey/radiokey.h"

int32_t radiokey_init(int32_t /*frequency*/) {
    return 0;
}

int32_t radiokey_reset(int32_t /*frequency*/) {
    return 0;
}

int32_t radiokey_uninit() {
    return 0;
}

int32_t radiokey_detect_chip() {
    return 1;
}

int32_t radiokey_get_rssi_dbm() {
    return -100;
}

int32_t radiokey_recv_poll(int32_t* /*value1*/, int32_t* /*value2*/, int32_t* /*value3*/) {
    pauseFor(std::chrono::seconds(1));
    return -1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static BoardFiles board;
    static const android::sp<com::tarq::radiokey::RadioKeyService> service = [] {
        tarq::host::setLogSink([](int, const char*, const std::string&) {});
        return new com::tarq::radiokey::RadioKeyService;
    }();
    transact(service, data, size);
    return 0;
}
