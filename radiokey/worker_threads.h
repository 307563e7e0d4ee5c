// What works for the service beside the binder threads. Each thread holds the service weakly, so
// that neither keeps the other alive. None of them calls into the managed runtime.
#pragma once

#include "radiokey/RadioKeyService.h"

namespace com::tarq::radiokey {

// Starts the receiver at the frequency that was last set, or 433, and ends.
class RadioKeyService::SetupThread : public android::Thread {
  public:
    explicit SetupThread(const android::wp<RadioKeyService>& service)
        : Thread(false), mService(service) {}

  private:
    bool threadLoop() override;

    const android::wp<RadioKeyService> mService;
};

// Hands on one reception after the other. It polls from the start, whether the receiver is ready
// or not.
class RadioKeyService::RecvThread : public android::Thread {
  public:
    explicit RecvThread(const android::wp<RadioKeyService>& service)
        : Thread(false), mService(service) {}

  private:
    bool threadLoop() override;

    const android::wp<RadioKeyService> mService;
};

// Logs that it is there, every 5 seconds.
class RadioKeyService::RequestThread : public android::Thread {
  public:
    explicit RequestThread(const android::wp<RadioKeyService>& service)
        : Thread(false), mService(service) {}

  private:
    bool threadLoop() override;

    const android::wp<RadioKeyService> mService;
};

// It belongs to the looper of the thread that builds the service. Nobody posts anything.
class RadioKeyService::MHandler : public android::MessageHandler {
  public:
    void handleMessage(const android::Message& message) override;
};

}  // namespace com::tarq::radiokey
