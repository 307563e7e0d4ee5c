// One client's calls beside the plainest round trip of packets of the same sizes, on one CPU. What
// lies between the two is the library's work and the service's own: parcels, look-ups, log lines.
// Nothing can be faster than the floor, as a call is two packets at least.
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "bench/bench.h"
#include "bench/log_lines.h"
#include "hardware_info/board_identity.h"
#include "hardware_info/peripheral_list.h"
#include "host/platform/binder/wire.h"

namespace bench {

using com::tarq::hardwareInfo::IHardwareInfoService;

// Two ends of a pair, as the library's clients and its daemon have two ends of a connection. The
// other process ends with the socket, or with this process.
PingPong::PingPong(size_t requestSize, size_t replySize)
    : mRequest(requestSize), mReply(replySize) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) abort();
    mPeer = fork();
    if (mPeer == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(ends[0]);
        while (recv(ends[1], mRequest.data(), mRequest.size(), 0) > 0) {
            send(ends[1], mReply.data(), mReply.size(), MSG_NOSIGNAL);
        }
        _exit(0);
    }
    close(ends[1]);
    mFd = ends[0];
}

PingPong::~PingPong() {
    close(mFd);
    stop(mPeer);
}

void PingPong::roundTrip() {
    send(mFd, mRequest.data(), mRequest.size(), MSG_NOSIGNAL);
    if (recv(mFd, mReply.data(), mReply.size(), 0) <= 0) abort();
}

// getService waits until the daemon serves.
static android::sp<IHardwareInfoService> findService() {
    return android::interface_cast<IHardwareInfoService>(
            android::defaultServiceManager()->getService(IHardwareInfoService::descriptor));
}

static size_t packetSize(const android::Parcel& parcel) {
    return sizeof(android::host::PacketHeader) + parcel.dataSize();
}

// A reply has no result here, but the record that opens each one.
CallSizes setOtaTimestampSizes() {
    android::Parcel request;
    request.writeInterfaceToken(IHardwareInfoService::descriptor);
    request.writeInt64(0);
    android::Parcel reply;
    reply.writeInt32(0);
    return {packetSize(request), packetSize(reply)};
}

// The reply is put together again from what the service answers: its texts are the board's.
CallSizes getHardwareInfoSizes() {
    android::Parcel request;
    request.writeInterfaceToken(IHardwareInfoService::descriptor);
    std::vector<android::String16> items;
    bool result = false;
    findService()->getHardwareInfo(&items, &result);
    android::Parcel reply;
    reply.writeInt32(0);
    reply.writeBool(result);
    reply.writeString16Vector(items);
    return {packetSize(request), packetSize(reply)};
}

// The smallest call there is: a number to the service, an empty reply, no log line.
static void callTarqd(benchmark::State& state) {
    const OneCpu cpu;
    const Daemon daemon;
    const auto service = findService();
    timeEach(state, [&] {
        if (!service->setOtaTimestamp(1).isOk()) abort();
    });
}

static void getHardwareInfo(benchmark::State& state, const Daemon& /*runs*/) {
    const auto service = findService();
    timeEach(state, [&] {
        std::vector<android::String16> items;
        bool result = false;
        if (!service->getHardwareInfo(&items, &result).isOk() || items.size() != 11) abort();
    });
}

static void hwinfoTarqd(benchmark::State& state) {
    const OneCpu cpu;
    getHardwareInfo(state, Daemon());
}

// What is left without the twelve log entries, each a write.
static void hwinfoUnlogged(benchmark::State& state) {
    const OneCpu cpu;
    getHardwareInfo(state, Daemon(false));
}

static void callFloor(benchmark::State& state) {
    const OneCpu cpu;
    const CallSizes sizes = setOtaTimestampSizes();
    PingPong pingPong(sizes.request, sizes.reply);
    timeEach(state, [&] { pingPong.roundTrip(); });
}

static CallSizes sizesOfBoard() {
    const Daemon daemon;
    return getHardwareInfoSizes();
}

static void hwinfoFloor(benchmark::State& state) {
    const OneCpu cpu;
    const CallSizes sizes = sizesOfBoard();
    initHardwareInfo();
    const LogLines lines([] {
        std::vector<android::String16> items;
        _getHardwareInfo(&items);
    });
    PingPong pingPong(sizes.request, sizes.reply);
    timeEach(state, [&] {
        pingPong.roundTrip();
        lines.write();
    });
}

BENCHMARK(callTarqd)->Name("call/tarqd")->Iterations(10000);
BENCHMARK(callFloor)->Name("call/floor")->Iterations(10000);
BENCHMARK(hwinfoTarqd)->Name("hwinfo/tarqd")->Iterations(3000);
BENCHMARK(hwinfoUnlogged)->Name("hwinfo/log to null")->Iterations(3000);
BENCHMARK(hwinfoFloor)->Name("hwinfo/floor")->Iterations(3000);

}  // namespace bench
