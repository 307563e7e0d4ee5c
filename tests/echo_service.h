// The object that the platform's own tests and fuzzer call: it gives back, keeps and calls what it
// is handed, and can be made to wait. And the calls that the tests and the peer program make.
#pragma once

#include <binder/Binder.h>
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace echo {

using namespace android;  // NOLINT: this file is about nothing else

inline const String16 kName("echo");
inline const String16 kLiving("living");  // an object of class Living
constexpr uint32_t kOneWay = IBinder::FLAG_ONEWAY;

enum Code : uint32_t {
    ECHO = IBinder::FIRST_CALL_TRANSACTION,  // bytes -> the same bytes
    SIZED,                                   // int32 size -> that many bytes
    STATUS,                                  // int32 status -> that status
    WHO,                                     // -> int32 uid, int32 pid
    KEEP,     // binder -> int32 1 if it is one of those kept before; told of its death
    LAST,     // -> the binder kept last
    FORGET,   // drops all that is kept
    FIRE,     // int32 n, int32 tag -> int32 accepted: n one-way calls to the last kept
    DEATHS,   // -> int32 death notices so far
    WAIT,     // returns when OPEN_GATE was called, counted as waiting until then
    WAITING,  // -> int32 calls that wait
    OPEN_GATE,
    LIVING,  // -> int32 objects of class Living in the daemon
    MAKE,    // -> a new object of class Living
    CALLS,   // -> int32 calls to objects of class Living, int32 most of them at once to one, int32
             // uid
};

// Counts its living instances, and the calls to all of them.
class Living : public BBinder {
  public:
    Living() { ++count(); }
    ~Living() override { --count(); }
    static std::atomic<int32_t>& count() {
        static std::atomic<int32_t> instances{0};
        return instances;
    }
    static std::atomic<int32_t> calls, mostAtOnce, lastUid;

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        if (code != FIRST_CALL_TRANSACTION) return BBinder::onTransact(code, data, reply, flags);
        mostAtOnce = std::max<int32_t>(mostAtOnce, ++mInside);
        usleep(static_cast<useconds_t>(data.readInt32()));
        lastUid = static_cast<int32_t>(IPCThreadState::self()->getCallingUid());
        --mInside;
        ++calls;
        return OK;
    }

  private:
    std::atomic<int32_t> mInside{0};
};
inline std::atomic<int32_t> Living::calls{0}, Living::mostAtOnce{0}, Living::lastUid{-1};

class EchoService : public BBinder, public IBinder::DeathRecipient {
  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        switch (code) {
            case ECHO:
                return reply->setData(data.data(), data.dataSize());
            case SIZED:
                return reply->setDataSize(static_cast<uint32_t>(data.readInt32()) % (1u << 20));
            case STATUS:
                return data.readInt32();
            case WHO:
                reply->writeInt32(static_cast<int32_t>(IPCThreadState::self()->getCallingUid()));
                return reply->writeInt32(IPCThreadState::self()->getCallingPid());
            case KEEP:
                return keep(data, reply);
            case LAST:
                return reply->writeStrongBinder(last());
            case FORGET:
                return forget();
            case FIRE:
                return fire(data, reply);
            case DEATHS:
                return reply->writeInt32(mDeaths);
            case WAIT:
                return waitForGate();
            case WAITING:
                return reply->writeInt32(mWaiting);
            case OPEN_GATE:
                return openGate();
            case LIVING:
                return reply->writeInt32(Living::count());
            case MAKE:
                return reply->writeStrongBinder(new Living);
            case CALLS:
                reply->writeInt32(Living::calls);
                reply->writeInt32(Living::mostAtOnce);
                return reply->writeInt32(Living::lastUid);
            default:
                return BBinder::onTransact(code, data, reply, flags);
        }
    }

  private:
    void binderDied(const wp<IBinder>& /*who*/) override { ++mDeaths; }

    status_t keep(const Parcel& data, Parcel* reply) {
        sp<IBinder> binder;
        const status_t status = data.readStrongBinder(&binder);
        if (status != OK) return status;
        bool known = false;
        {
            std::lock_guard<std::mutex> guard(mLock);
            for (const auto& kept : mKept) known = known || kept == binder;
            mKept.push_back(binder);
        }
        binder->linkToDeath(this);
        return reply->writeInt32(known ? 1 : 0);
    }

    sp<IBinder> last() {
        std::lock_guard<std::mutex> guard(mLock);
        return mKept.empty() ? nullptr : mKept.back();
    }

    status_t forget() {
        std::vector<sp<IBinder>> dropped;
        std::lock_guard<std::mutex> guard(mLock);
        dropped.swap(mKept);
        return OK;
    }

    status_t fire(const Parcel& data, Parcel* reply) {
        const int32_t calls = data.readInt32();
        Parcel call;
        call.writeInt32(data.readInt32());
        const sp<IBinder> target = last();
        if (target == nullptr) return BAD_VALUE;
        int32_t accepted = 0;
        for (int32_t i = 0; i < calls; ++i) {
            if (target->transact(1, call, nullptr, kOneWay) == OK) ++accepted;
        }
        return reply->writeInt32(accepted);
    }

    status_t waitForGate() {
        std::unique_lock<std::mutex> guard(mLock);
        ++mWaiting;
        const int opened = mOpened;
        mGate.wait(guard, [&] { return mOpened != opened; });
        --mWaiting;
        return OK;
    }

    status_t openGate() {
        std::lock_guard<std::mutex> guard(mLock);
        ++mOpened;
        mGate.notify_all();
        return OK;
    }

    std::atomic<int32_t> mDeaths{0};
    std::mutex mLock;
    std::condition_variable mGate;
    int mOpened = 0;
    std::atomic<int32_t> mWaiting{0};
    std::vector<sp<IBinder>> mKept;
};

inline sp<IBinder> find() {
    return defaultServiceManager()->getService(kName);
}

// A call whose arguments are int32s and whose reply, if it has one, begins with an int32.
inline status_t call(const sp<IBinder>& service, uint32_t code,
                     const std::vector<int32_t>& arguments = {}, int32_t* out = nullptr) {
    Parcel data, reply;
    for (const int32_t argument : arguments) data.writeInt32(argument);
    const status_t status = service->transact(code, data, &reply);
    if (status == OK && out != nullptr) *out = reply.readInt32();
    return status;
}

inline int32_t ask(const sp<IBinder>& service, uint32_t code) {
    int32_t answer = -1;
    call(service, code, {}, &answer);
    return answer;
}

// The object in the reply to a call without arguments.
inline sp<IBinder> receive(const sp<IBinder>& service, uint32_t code) {
    Parcel data, reply;
    service->transact(code, data, &reply);
    return reply.readStrongBinder();
}

// Hands an object over. known: whether the daemon had it already.
inline status_t keep(const sp<IBinder>& service, const sp<IBinder>& object, bool* known = nullptr) {
    Parcel data, reply;
    data.writeStrongBinder(object);
    const status_t status = service->transact(KEEP, data, &reply);
    if (known != nullptr) *known = reply.readInt32() == 1;
    return status;
}

}  // namespace echo
