// What a hostile client may put on its connections, against a whole daemon in this process: it has
// to close a connection or answer, and to go on serving an honest client.
//
// Input: a byte that chooses the connection, then packets, each a 16-bit length and its bytes.
#include <binder/ProcessState.h>
#include <host/log_sink.h>
#include <host/process_board.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "host/platform/binder/wire.h"
#include "host/run/descriptors.h"
#include "tests/echo_service.h"

using namespace android;
using namespace android::host;

// Refuses what would hold a thread or take long.
class HarmlessEcho : public echo::EchoService {
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        if (code == echo::WAIT || code == echo::FIRE) return UNKNOWN_TRANSACTION;
        return EchoService::onTransact(code, data, reply, flags);
    }
};

static PacketHeader headerOf(PacketKind kind) {
    PacketHeader header = {};
    header.kind = kind;
    return header;
}

// For the honest: a packet is sent and answered, or the target fails.
static PacketHeader exchange(int fd, const PacketHeader& header) {
    Packet answer;
    if (sendPacket(fd, 0, header) != 0) abort();
    if (receivePacket(fd, 0, &answer) != Received::kPacket) abort();
    return answer.header;
}

// One client with a session has its event connection and one that joined it.
static int connectToDaemon() {
    return tarq::host::connectTo(tarq::host::processBoard().binderSocket());
}

struct Client {
    explicit Client(Lane lane) : event(connectToDaemon()), calls(connectToDaemon()) {
        if (event < 0 || calls < 0) abort();
        PacketHeader open = headerOf(PacketKind::kOpen);
        open.code = kWireVersion;
        PacketHeader join = exchange(event, open);
        join.kind = PacketKind::kJoin;
        join.code = static_cast<uint32_t>(lane);
        exchange(calls, join);
    }
    ~Client() {
        close(event);
        close(calls);
    }
    const int event;
    const int calls;
};

// The daemon stays for all inputs: what one of them leaves behind would show with the next.
static void startDaemon() {
    static std::string board = "/tmp/fuzz_packets.XXXXXX";
    if (mkdtemp(board.data()) == nullptr || mkdir((board + "/run").c_str(), 0700) != 0) abort();
    atexit([] { std::system(("rm -rf " + board).c_str()); });
    setenv("TARQ_BOARD", board.c_str(), 1);
    tarq::host::setLogSink([](int, const char*, const std::string&) {});
    ProcessState::self()->startThreadPool();
    defaultServiceManager()->addService(echo::kName, new HarmlessEcho);
}

// A length that runs past the end takes what is left, so that every input is one.
static void sendAll(int fd, const uint8_t* data, size_t size) {
    while (size > 2) {
        size_t length = data[0] | (data[1] << 8);
        data += 2;
        size -= 2;
        if (length > size) length = size;
        if (send(fd, data, length, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) return;
        data += length;
        size -= length;
    }
}

// The hostile client says nothing more after its input and listens until the daemon closes. The
// honest one's call behind it shows that the registry is alive.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool started = (startDaemon(), true);
    static const Client honest(Lane::kRegistry);
    if (!started || size == 0) return 0;
    {
        const Client client(data[0] % 4 == 0 ? Lane::kCall : Lane::kRegistry);
        const int stranger = connectToDaemon();
        const int fd = data[0] % 4 == 3 ? stranger : data[0] % 4 == 2 ? client.event : client.calls;
        sendAll(fd, data + 1, size - 1);
        shutdown(fd, SHUT_WR);
        Packet answer;
        while (receivePacket(fd, 0, &answer) == Received::kPacket) continue;
        close(stranger);
    }
    PacketHeader ping = headerOf(PacketKind::kCall);
    ping.code = IBinder::PING_TRANSACTION;
    if (exchange(honest.calls, ping).status != OK) abort();
    return 0;
}
