// A client that registers for remote keys once the receiver is ready. It says "registered", and
// then the number of each event.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/IRadioKeyService.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

using com::tarq::radiokey::IRadioKeyService;

class Follower : public com::tarq::radiokey::BnRadioKeyCallback {
    android::binder::Status onClick(int32_t number, int32_t second, int32_t third,
                                    int32_t rssiDBm) override {
        const bool isWhole = second == number + 1 && third == number + 2 && rssiDBm == -number;
        printf(isWhole ? "%d\n" : "%d mixed up\n", number);
        fflush(stdout);
        return android::binder::Status::ok();
    }
};

// Argument: how often to register the one callback.
int main(int /*argc*/, char** argv) {
    const auto service = android::interface_cast<IRadioKeyService>(
            android::defaultServiceManager()->getService(IRadioKeyService::SERVICE_NAME()));
    const android::sp<Follower> callback = new Follower;
    for (int32_t status = -1; status == -1; usleep(1000)) service->getChipStatus(&status);
    for (int i = 0; i < atoi(argv[1]); ++i) {
        if (!service->registerRadioKeyCallback(callback).isOk()) return 1;
    }
    puts("registered");
    fflush(stdout);
    android::IPCThreadState::self()->joinThreadPool();
}
