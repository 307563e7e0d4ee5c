// A process that speaks to the daemon's socket itself, and wrongly: bytes, half packets, packets at
// the wrong time, objects that it does not have, calls whose replies nobody takes, connections that
// say nothing. The daemon closes them or not; all that counts is what becomes of the others.
#include <binder/IBinder.h>
#include <binder/IServiceManager.h>
#include <host/process_board.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <vector>

#include "bench/soak/soak.h"
#include "host/platform/binder/wire.h"
#include "host/run/descriptors.h"

namespace soak {

using android::host::Lane;
using android::host::PacketHeader;
using android::host::PacketKind;
using android::host::PacketObject;

namespace {

class Connection {
  public:
    Connection() : mFd(tarq::host::connectTo(tarq::host::processBoard().binderSocket())) {
        ++shared->rogue;
    }
    ~Connection() {
        if (mFd >= 0) close(mFd);
    }
    Connection(Connection&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}

    void sendBytes(const std::string& bytes) const {
        send(mFd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }
    bool sendPacket(const PacketHeader& header, const std::vector<PacketObject>& objects = {},
                    const std::string& data = "") const {
        return android::host::sendPacket(mFd, MSG_DONTWAIT, header, objects,
                                         reinterpret_cast<const uint8_t*>(data.data()),
                                         data.size()) == 0;
    }
    // OPEN or JOIN; the answer is what tells the session. All zeros when there is none.
    PacketHeader introduce(const PacketHeader& header) const {
        android::host::Packet answer = {};
        if (mFd < 0 || !sendPacket(header)) return {};
        return receivePacket(mFd, 0, &answer) == android::host::Received::kPacket ? answer.header
                                                                                  : PacketHeader{};
    }

  private:
    int mFd;
};

PacketHeader packet(PacketKind kind, uint32_t code = 0, uint64_t first = 0, uint64_t second = 0) {
    PacketHeader header = {};
    header.kind = kind;
    header.code = code;
    header.session = first;
    header.token = second;
    return header;
}

// Bytes, or a header with some of them changed, and cut off somewhere.
void sendGarbage(Random& random) {
    const Connection connection;
    if (random.oneIn(2)) connection.introduce(packet(PacketKind::kOpen));
    for (int count = random.number(1, 5); count > 0; --count) {
        PacketHeader header = packet(static_cast<PacketKind>(random.number(0, 6)));
        header.objectCount = static_cast<uint32_t>(random.number(0, 2));
        header.dataSize = static_cast<uint32_t>(random.number(0, 40));
        std::string bytes(reinterpret_cast<const char*>(&header), sizeof(header));
        bytes += random.bytes(random.number(0, 100));
        if (random.oneIn(2)) bytes[static_cast<size_t>(random.number(0, 39))] ^= 0x80;
        if (random.oneIn(2)) bytes.resize(static_cast<size_t>(random.number(0, 39)));
        connection.sendBytes(bytes);
    }
}

// Calls and releases of what the session was never given, each on its right connection.
void nameWhatIsNotThere(Random& random) {
    const Connection events;
    const PacketHeader session = events.introduce(packet(PacketKind::kOpen));
    const Connection calls;
    calls.introduce(packet(PacketKind::kJoin, static_cast<uint32_t>(Lane::kCall), session.session,
                           session.token ^ (random.oneIn(4) ? 1 : 0)));
    for (int count = random.number(1, 50); count > 0; --count) {
        const auto target = static_cast<uint64_t>(random.number(0, 3));
        calls.sendPacket(packet(PacketKind::kCall, 1, target));
        PacketHeader oneWay = packet(PacketKind::kCall, 1, target);
        oneWay.flags = android::IBinder::FLAG_ONEWAY;
        events.sendPacket(oneWay, {}, random.bytes(random.number(0, 4000)));
    }
    events.sendPacket(packet(PacketKind::kRelease, 0, 1, static_cast<uint64_t>(1) << 40));
}

// Look-ups full of objects, of which no reply is taken: all that must go with the session.
void floodRegistry(Random& random) {
    const Connection events;
    const PacketHeader session = events.introduce(packet(PacketKind::kOpen));
    const Connection registry;
    registry.introduce(packet(PacketKind::kJoin, static_cast<uint32_t>(Lane::kRegistry),
                              session.session, session.token));
    std::vector<PacketObject> objects;
    for (uint32_t i = 0; i < static_cast<uint32_t>(random.number(0, 256)); ++i) {
        objects.push_back({i * 24, android::host::Home::kSender, i + 1});
    }
    const std::string data(objects.size() * 24, '\0');
    for (int count = random.number(1, 300); count > 0; --count) {
        const auto code = static_cast<uint32_t>(random.number(0, 5));
        if (!registry.sendPacket(packet(PacketKind::kCall, code), objects, data)) break;
    }
}

void saySilently(Random& random) {
    std::vector<Connection> silent(static_cast<size_t>(random.oneIn(10) ? 200 : 5));
    pauseMs(random.number(0, 100));
}

}  // namespace

int runRogue(Random random) {
    using Action = void (*)(Random&);
    while (!isOver()) {
        random.oneOf<Action>({sendGarbage, nameWhatIsNotThere, floodRegistry, saySilently})(random);
        pauseMs(random.number(5, 50));
    }
    return 0;
}

}  // namespace soak
