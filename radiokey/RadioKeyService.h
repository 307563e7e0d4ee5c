// The radio key service: tells every registered callback of what the receiver of remote keys
// hears, and lets clients ask and tune the receiver.
#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <vector>

#include <com/tarq/radiokey/BnRadioKeyService.h>
#include <com/tarq/radiokey/IRadioKeyCallback.h>
#include <utils/Looper.h>
#include <utils/Thread.h>

namespace com::tarq::radiokey {

// Binder methods run on any binder thread, several at once; each returns an ok status. Numbers are
// the receiver library's and pass through unchanged.
class RadioKeyService : public BnRadioKeyService {
  public:
    RadioKeyService();

    // *rssi in dBm, whether the receiver is ready or not.
    android::binder::Status getRssiDBm(int32_t* rssi) override;
    // The registration lasts until the process that hosts the callback dies: the proxy held here
    // keeps the callback alive. Registered twice, it is told once.
    android::binder::Status registerRadioKeyCallback(
            const android::sp<IRadioKeyCallback>& callback) override;
    // *status is the library's, or -1 while the receiver is being started or set to another
    // frequency. A receiver that could not be started is not told apart from one that was.
    android::binder::Status getChipStatus(int32_t* status) override;
    // Any number, which is also kept for the next start, in the property
    // persist.radiokey.frequence. For the whole device: the last caller's counts.
    android::binder::Status setRadiokeyFrequency(int32_t frequency) override;

    // Tells every callback of one reception, in the order of their binders' addresses. It waits for
    // none of them, and what cannot be delivered is dropped. For the receive thread.
    void onClick(int32_t value1, int32_t value2, int32_t value3, int32_t rssiDBm);

    // Forgets the callback of a process that died; nothing for a binder that is not registered. Any
    // thread that does not hold mLock.
    void remove(const android::wp<android::IBinder>& who);

  protected:
    // The threads hold the service weakly: they cannot act before somebody holds it, or the first
    // of them to let go would destroy it while the others start.
    void onFirstRef() override;
    ~RadioKeyService() override;

  private:
    // The tag of the log lines of the service and its threads.
    static constexpr char kLogTag[] = "RadioKeyService";

    class DeathNotifier;
    class MHandler;
    class SetupThread;
    class RecvThread;
    class RequestThread;

    void threadInitialize();
    // Copies of them, in the order of their binders' addresses.
    std::vector<android::sp<IRadioKeyCallback>> callbacks();

    // It is written without a lock: a status that is asked for in between may be either.
    std::atomic<bool> mChipReady{false};
    std::mutex mLock;  // guards mCallbacks; never held while a callback is called
    // No thread that builds a service prepares a looper, so mLooper is empty and mHandler hears
    // nothing.
    android::sp<MHandler> mHandler;
    android::sp<android::Looper> mLooper;
    std::map<android::sp<android::IBinder>, android::sp<DeathNotifier>> mCallbacks;
    // Destroyed in the opposite order, without waiting for them.
    android::sp<RecvThread> mRecvThread;
    android::sp<RequestThread> mRequestThread;
    android::sp<SetupThread> mSetupThread;
};

}  // namespace com::tarq::radiokey
