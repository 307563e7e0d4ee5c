// Requests to the radio key service, on a board without a receiver. Its threads run along, as they
// do in the daemon.
#include <host/log_sink.h>

#include "fuzz/board_files.h"
#include "fuzz/transact.h"
#include "radiokey/RadioKeyService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static BoardFiles board;
    static const android::sp<com::tarq::radiokey::RadioKeyService> service = [] {
        tarq::host::setLogSink([](int, const char*, const std::string&) {});
        return new com::tarq::radiokey::RadioKeyService;
    }();
    transact(service, data, size);
    return 0;
}
