// A daemon with nothing but the radio key service. The receiver hears what the test writes into a
// pipe, numbers one after the other.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>

#include "radiokey/RadioKeyService.h"
#include "radiokey/radiokey.h"

using com::tarq::radiokey::RadioKeyService;

static int gPipe = -1;
static std::atomic<int32_t> gStrength{0};

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
    return gStrength;
}

int32_t radiokey_recv_poll(int32_t* value1, int32_t* value2, int32_t* value3) {
    int32_t number = 0;
    if (read(gPipe, &number, sizeof(number)) != sizeof(number)) return -1;
    *value1 = number;
    *value2 = number + 1;
    *value3 = number + 2;
    gStrength = -number;
    return 0;
}

// Argument: the pipe's path.
int main(int /*argc*/, char** argv) {
    gPipe = open(argv[1], O_RDONLY | O_CLOEXEC);
    const android::sp<android::ProcessState> process = android::ProcessState::self();
    android::defaultServiceManager()->addService(RadioKeyService::SERVICE_NAME(),
                                                 new RadioKeyService);
    process->startThreadPool();
    puts("ready");
    fflush(stdout);
    android::IPCThreadState::self()->joinThreadPool();
}
