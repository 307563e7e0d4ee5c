// Requests to the shell service from a caller that it must refuse, whatever the request holds: 2000
// is the uid of the device's debug shell.
#include <binder/IPCThreadState.h>
#include <host/log_sink.h>
#include <stdio.h>
#include <stdlib.h>

#include "fuzz/transact.h"
#include "shell/ShellService.h"

// Linked in place of popen: no input may get as far as a command line.
extern "C" FILE* __wrap_popen(const char* /*command*/, const char* /*type*/) {
    abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const android::sp<com::tarq::shell::ShellService> service = [] {
        tarq::host::setLogSink([](int, const char*, const std::string&) {});
        return new com::tarq::shell::ShellService;
    }();
    constexpr int64_t refused = 2000;
    android::IPCThreadState::self()->restoreCallingIdentity(refused << 32);
    transact(service, data, size);
    return 0;
}
