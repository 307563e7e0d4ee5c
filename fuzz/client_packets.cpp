// What a client makes of a daemon that answers with anything. The first byte tells how many of the
// packets are events; each of the others is the reply to one call. The client must see a failure,
// or its daemon gone, and go on with the next one.
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <host/log_sink.h>
#include <host/process_board.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "host/platform/binder/wire.h"
#include "host/run/descriptors.h"

using namespace android;
using namespace android::host;

using Bytes = std::vector<uint8_t>;

// Each packet has its length in front; one that runs past the end takes what is left.
static std::vector<Bytes> packetsOf(const uint8_t* data, size_t size) {
    std::vector<Bytes> packets;
    while (size >= 2) {
        size_t length = data[0] | (data[1] << 8);
        data += 2;
        size -= 2;
        if (length > size) length = size;
        packets.emplace_back(data, data + length);
        data += length;
        size -= length;
    }
    return packets;
}

static int gListener = -1;

static bool startListening() {
    static std::string board = "/tmp/fuzz_client.XXXXXX";
    if (mkdtemp(board.data()) == nullptr || mkdir((board + "/run").c_str(), 0700) != 0) abort();
    atexit([] { std::system(("rm -rf " + board).c_str()); });
    tarq::host::setProcessBoard({board});
    tarq::host::setLogSink([](int, const char*, const std::string&) {});
    gListener = tarq::host::listenAt(tarq::host::Board{board}.binderSocket(), 0600);
    return gListener >= 0;
}

// One daemon's life: it greets as it should, sends its events behind the greeting, and answers each
// call with the next packet. When there is none left it is gone, and takes nobody any more.
class Daemon {
  public:
    Daemon(const std::vector<Bytes>& packets, size_t events)
        : mPackets(packets), mEvents(events), mNext(events) {
        if (pipe(mEnd) != 0) abort();
        mThread = std::thread([this] { run(); });
    }
    ~Daemon() {
        close(mEnd[1]);
        mThread.join();
        close(mEnd[0]);
    }

  private:
    void run() {
        std::vector<pollfd> watched = {{mEnd[0], POLLIN, 0}, {gListener, POLLIN, 0}};
        while (poll(watched.data(), watched.size(), -1) > 0 && watched[0].revents == 0) {
            bool isGone = false;
            for (size_t i = 2; i < watched.size(); ++i) {
                isGone |= watched[i].revents != 0 && !answer(watched[i].fd);
            }
            // With one connection all of them end, as when a process dies: a client that still has
            // another would wait a while to see which of both it is.
            while (isGone && watched.size() > 2) {
                close(watched.back().fd);
                watched.pop_back();
            }
            if (watched[1].revents != 0)
                watched.push_back({accept(gListener, nullptr, nullptr), POLLIN, 0});
        }
        for (size_t i = 2; i < watched.size(); ++i) close(watched[i].fd);
    }

    // False when the connection ends.
    bool answer(int fd) {
        Packet packet;
        if (receivePacket(fd, MSG_DONTWAIT, &packet) != Received::kPacket) return false;
        if (mNext > mPackets.size()) return false;
        const bool isOpen = packet.header.kind == PacketKind::kOpen;
        if (isOpen || packet.header.kind == PacketKind::kJoin) {
            PacketHeader welcome = {};
            welcome.kind = PacketKind::kWelcome;
            welcome.code = kWireVersion;
            sendPacket(fd, MSG_DONTWAIT, welcome);
            for (size_t i = 0; isOpen && i < mEvents; ++i) send(fd, i);
        } else if (packet.header.kind == PacketKind::kCall && mNext++ < mPackets.size()) {
            send(fd, mNext - 1);
        }
        return mNext <= mPackets.size();
    }

    void send(int fd, size_t i) {
        ::send(fd, mPackets[i].data(), mPackets[i].size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    const std::vector<Bytes>& mPackets;
    const size_t mEvents;
    size_t mNext;
    int mEnd[2];
    std::thread mThread;
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool isListening = startListening();
    if (!isListening || size == 0) return 0;
    const std::vector<Bytes> packets = packetsOf(data + 1, size - 1);
    const size_t events = std::min<size_t>(data[0] % 8, packets.size());
    const Daemon daemon(packets, events);
    // As many calls as there are replies, and one that finds the daemon gone.
    const sp<IServiceManager> manager = defaultServiceManager();
    std::vector<sp<IBinder>> kept;
    for (size_t i = events; i <= packets.size(); ++i) {
        const sp<IBinder> object = manager->checkService(String16("name"));
        if (object == nullptr) continue;
        kept.push_back(object);
        Parcel call;
        Parcel reply;
        call.writeStrongBinder(new BBinder);
        object->transact(1, call, &reply);
        while (reply.dataAvail() > 0 && reply.readInt32() != 0) continue;
    }
    return 0;
}
