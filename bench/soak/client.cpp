// One client process: it registers callbacks, calls, and holds the daemon to its word. Keys are
// counted by each callback as they come, so a gap is seen where it is; the rest is looked at when
// all is quiet. What it had before it began it must have again at the end.
#include <binder/ProcessState.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/rgbleds/BnRgbLedsCallbacks.h>
#include <unistd.h>

#include <thread>
#include <vector>

#include "bench/soak/calls.h"

namespace soak {

using android::sp;
using android::binder::Status;

namespace {

// Counts itself, so that one that nobody lets go of is seen.
class LedCallback : public com::tarq::rgbleds::BnRgbLedsCallbacks {
  public:
    LedCallback() { ++alive; }
    ~LedCallback() override { --alive; }
    Status onValueChange(int32_t value) override {
        ++shared->events;
        for (int i = 0; i < 4; ++i) {
            if (kLedOperations[i].value != value) continue;
            ++shared->leds[i].heard;
            return Status::ok();
        }
        finding("a client", "wrong: an LED event of %d", value);
        return Status::ok();
    }
    static std::atomic<int> alive;
};
std::atomic<int> LedCallback::alive{0};

class KeyCallback : public com::tarq::radiokey::BnRadioKeyCallback {
  public:
    explicit KeyCallback(const std::string& client) : mClient(client) {}

    Status onClick(int32_t number, int32_t twice, int32_t thrice, int32_t rssiDBm) override {
        ++shared->events;
        const int32_t last = mLast;
        if (twice != 2 * number || thrice != 3 * number || rssiDBm != -(number % 100)) {
            finding(mClient.c_str(), "wrong: key %d is %d %d %d", number, twice, thrice, rssiDBm);
        } else if (last == 0) {
            mFirst = number;
        } else if (number <= last) {
            finding(mClient.c_str(), "doubled: key %d after %d", number, last);
        } else if (number != last + 1) {
            finding(mClient.c_str(), "lost: keys %d to %d", last + 1, number - 1);
        }
        mLast = number;
        return Status::ok();
    }

    // What has been begun by now may have passed before it was registered; all else is for it.
    void isRegistered() { mBegunBefore = shared->keysBegun; }
    bool hasAll() const { return mLast == shared->keysTaken || shared->keysTaken <= mBegunBefore; }
    void check() const {
        if (mFirst > mBegunBefore + 1) {
            finding(mClient.c_str(), "lost: keys %d to %d, right after the registration",
                    mBegunBefore + 1, mFirst - 1);
        }
        if (!hasAll()) {
            finding(mClient.c_str(), "lost: keys %d to %d, the last ones", mLast + 1,
                    shared->keysTaken.load());
        }
    }

  private:
    const std::string mClient;
    std::atomic<int32_t> mFirst{0}, mLast{0};
    int32_t mBegunBefore = 0;
};

class Client {
  public:
    Client(int client, const Services& services, const Random& random)
        : mCaller(client, services, random), mServices(services) {}

    void registerForKeys() {
        constexpr size_t kMost = 6;  // they can never be withdrawn
        if (mKeys.size() == kMost) return;
        const sp<KeyCallback> callback = new KeyCallback(mCaller.mName);
        for (int times = mCaller.mRandom.number(1, 2); times > 0; --times) {
            mCaller.call("registerRadioKeyCallback", android::OK, [&] {
                return statusOf(mServices.radio->registerRadioKeyCallback(callback));
            });
        }
        callback->isRegistered();
        mKeys.push_back(callback);
    }

    void registerForLeds() {
        if (!isKept(mCaller.mClient) && !shared->slotIsFree) return;
        mCaller.call("registerRgbLedsCallbacks", android::OK, [&] {
            return statusOf(mServices.leds->registerRgbLedsCallbacks(new LedCallback));
        });
    }

    // A service that does not know the call does not keep them either.
    void sendObjects() {
        android::Parcel data;
        android::Parcel reply;
        for (int i = mCaller.mRandom.number(1, 100); i > 0; --i) {
            data.writeStrongBinder(new LedCallback);
        }
        mCaller.call("an unknown call", android::UNKNOWN_TRANSACTION, [&] {
            return android::IInterface::asBinder(mServices.shell)->transact(99, data, &reply);
        });
    }

    void callFromThreads() {
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            const int seed = mCaller.mRandom.number(0, 1 << 30);
            threads.emplace_back([this, seed] {
                Caller caller(mCaller.mClient, mServices, Random(0, seed, 0));
                for (int calls = 0; calls < 5; ++calls) caller.callSomething();
            });
        }
        for (std::thread& thread : threads) thread.join();
    }

    void act() {
        switch (mCaller.mRandom.number(1, 40)) {
            case 1:
                return registerForKeys();
            case 2:
                return registerForLeds();
            case 3:
                return sendObjects();
            case 4:
                return callFromThreads();
            default:
                return mCaller.callSomething();
        }
    }

    void checkKeys() const {
        for (const sp<KeyCallback>& callback : mKeys) {
            becomes([&] { return callback->hasAll(); });
            callback->check();
        }
    }

    // One callback may be in the LED service's slot.
    void checkHoldings(const Holdings& before) const {
        if (!becomes([] { return LedCallback::alive <= 1; })) {
            finding(mCaller.mName.c_str(), "held: %d objects of this client, which nobody needs",
                    LedCallback::alive.load());
        }
        if (becomes([&] { return holdingsOf(getpid()) == before; })) return;
        const Holdings now = holdingsOf(getpid());
        finding(mCaller.mName.c_str(), "held: %zu descriptors, %zu threads; before %zu, %zu",
                now.descriptors, now.threads, before.descriptors, before.threads);
    }

    Caller mCaller;

  private:
    const Services& mServices;
    std::vector<sp<KeyCallback>> mKeys;
};

}  // namespace

// By then it has its thread for events and both connections of its main thread.
int runClient(int number, Random random) {
    android::ProcessState::self()->startThreadPool();
    const Services services = {find<com::tarq::hardwareInfo::IHardwareInfoService>(),
                               find<com::tarq::rgbleds::IRgbLedsService>(),
                               find<com::tarq::shell::IShellService>(),
                               find<com::tarq::radiokey::IRadioKeyService>(
                                       com::tarq::radiokey::IRadioKeyService::SERVICE_NAME())};
    Client client(number, services, random);
    client.registerForLeds();
    client.registerForKeys();
    const Holdings before = holdingsOf(getpid());
    ++shared->ready;
    while (!isOver()) {
        client.act();
        pauseMs(client.mCaller.mRandom.number(0, 4));
    }
    ++shared->idle;
    while (shared->phase != Phase::kCount) pauseMs(5);
    client.checkKeys();
    ++shared->idle;
    while (shared->phase != Phase::kLeave) pauseMs(5);
    client.checkHoldings(before);
    if (hasLeaks()) finding(client.mCaller.mName.c_str(), "held: a leak, see above");
    return 0;
}

int runWitness() {
    const auto hardware = find<com::tarq::hardwareInfo::IHardwareInfoService>();
    std::vector<android::String16> items;
    bool result = false;
    if (hardware == nullptr || !hardware->getHardwareInfo(&items, &result).isOk()) {
        finding("witness", "no answer: the daemon does not serve");
        return 0;
    }
    std::string text;
    for (const android::String16& item : items)
        text += android::String8(item).string() + std::string(" ");
    if (shared->hardware[0] == '\0') {
        text.copy(shared->hardware, sizeof(shared->hardware) - 1);
    } else if (text != shared->hardware) {
        finding("witness", "wrong: the sound board has %s; before %s", text.c_str(),
                shared->hardware);
    }
    return 0;
}

}  // namespace soak
