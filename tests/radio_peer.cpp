// A client that registers for remote keys. It says "registered", then the first event's number,
// those at the end of a step, and whatever does not follow on the one before.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/IRadioKeyService.h>
#include <stdio.h>
#include <stdlib.h>

using android::binder::Status;
using com::tarq::radiokey::BnRadioKeyCallback;
using com::tarq::radiokey::IRadioKeyService;

class Follower : public BnRadioKeyCallback {
  public:
    explicit Follower(int step) : mStep(step) {}

    Status onClick(int32_t number, int32_t second, int32_t third, int32_t rssiDBm) override {
        if (second != number + 1 || third != number + 2 || rssiDBm != -number) puts("mixed up");
        if (mLast == 0) {
            printf("first %d\n", number);
        } else if (number != mLast + 1) {
            printf("%d after %d\n", number, mLast);
        }
        if (number % mStep == 0) printf("%d\n", number);
        fflush(stdout);
        mLast = number;
        return Status::ok();
    }

  private:
    const int32_t mStep;
    int32_t mLast = 0;
};

// Arguments: how often to register the one callback, and how many events are a step.
int main(int /*argc*/, char** argv) {
    const auto service = android::interface_cast<IRadioKeyService>(
            android::defaultServiceManager()->getService(IRadioKeyService::SERVICE_NAME()));
    const android::sp<Follower> callback = new Follower(atoi(argv[2]));
    for (int i = 0; i < atoi(argv[1]); ++i) {
        if (!service->registerRadioKeyCallback(callback).isOk()) return 1;
    }
    puts("registered");
    fflush(stdout);
    android::IPCThreadState::self()->joinThreadPool();
}
