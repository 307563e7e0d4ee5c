// One packet is one send and one receive: the kernel keeps its limits, so there is no stream to
// take apart. Whoever is at the other end may write anything, so what comes in is checked here,
// once and for all; what it means is checked by those who take the packet.
#include "host/platform/binder/wire.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <memory>

#include "host/platform/binder/parcel_access.h"

namespace android::host {

// One for each thread that receives. Taken from the heap as it is: pages that no packet reaches are
// never touched.
struct ReceiveBuffer {
    alignas(PacketHeader) uint8_t bytes[kMaxPacket];
};

static uint8_t* receiveBuffer() {
    static thread_local const std::unique_ptr<ReceiveBuffer> buffer(new ReceiveBuffer);
    return buffer->bytes;
}

// Objects stand in ascending order, within the data, and do not overlap.
static bool objectsFit(const Packet& packet) {
    uint64_t free = 0;
    for (uint32_t i = 0; i < packet.header.objectCount; ++i) {
        const PacketObject& object = packet.objects[i];
        if (object.home != Home::kSender && object.home != Home::kReceiver) return false;
        if (object.offset < free || object.offset % 4 != 0) return false;
        free = uint64_t{object.offset} + kObjectSize;
        if (free > packet.header.dataSize) return false;
    }
    return true;
}

// The sizes are small enough by then that none of the sums can overflow.
static bool parse(const uint8_t* bytes, size_t size, Packet* packet) {
    PacketHeader& header = packet->header;
    if (size < sizeof(header)) return false;
    memcpy(&header, bytes, sizeof(header));
    if (header.kind > PacketKind::kRelease || header.objectCount > kMaxObjects) return false;
    const size_t objectBytes = header.objectCount * sizeof(PacketObject);
    if (size != sizeof(header) + objectBytes + header.dataSize) return false;
    packet->objects = reinterpret_cast<const PacketObject*>(bytes + sizeof(header));
    packet->data = bytes + sizeof(header) + objectBytes;
    return objectsFit(*packet);
}

// Space for the one ancillary message that a packet has.
union Credentials {
    cmsghdr header;
    char bytes[CMSG_SPACE(sizeof(ucred))];
};

// recv(), which also tells who sent.
static ssize_t receiveFrom(int fd, uint8_t* buffer, int flags, uid_t* sender) {
    iovec part = {buffer, kMaxPacket};
    Credentials control = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = &control;
    message.msg_controllen = sizeof(control);
    const ssize_t size = recvmsg(fd, &message, flags | MSG_CMSG_CLOEXEC);
    const cmsghdr* told = CMSG_FIRSTHDR(&message);
    if (size > 0 && told != nullptr && told->cmsg_type == SCM_CREDENTIALS) {
        ucred credentials;
        memcpy(&credentials, CMSG_DATA(told), sizeof(credentials));
        *sender = credentials.uid;
    }
    return size;
}

// An error of the socket is told as its end: there is nothing else to do with it. But a peer that
// closes with something unread leaves one ECONNRESET in front of what it has sent before.
Received receivePacket(int fd, int flags, Packet* packet, uid_t* sender) {
    uint8_t* const buffer = receiveBuffer();
    ssize_t size;
    do {
        // With MSG_TRUNC the result is the packet's own size, also where the buffer was too small.
        size = sender != nullptr ? receiveFrom(fd, buffer, flags | MSG_TRUNC, sender)
                                 : recv(fd, buffer, kMaxPacket, flags | MSG_TRUNC);
    } while (size < 0 && (errno == EINTR || errno == ECONNRESET));
    if (size < 0) {
        return errno == EAGAIN || errno == EWOULDBLOCK ? Received::kNothing : Received::kClosed;
    }
    if (size == 0) return Received::kClosed;
    if (static_cast<size_t>(size) > kMaxPacket) return Received::kMalformed;
    return parse(buffer, static_cast<size_t>(size), packet) ? Received::kPacket
                                                            : Received::kMalformed;
}

// MSG_NOSIGNAL: a peer that is gone must not end this process.
static int sendAll(int fd, int flags, const iovec* parts, size_t count, bool asUser = false) {
    msghdr message = {};
    message.msg_iov = const_cast<iovec*>(parts);
    message.msg_iovlen = count;
    Credentials control = {};
    if (asUser) {  // the kernel refuses what this process could not be
        const ucred own = {getpid(), geteuid(), getegid()};
        control.header = {CMSG_LEN(sizeof(own)), SOL_SOCKET, SCM_CREDENTIALS};
        memcpy(CMSG_DATA(&control.header), &own, sizeof(own));
        message.msg_control = &control;
        message.msg_controllen = sizeof(control);
    }
    ssize_t sent;
    do {
        sent = sendmsg(fd, &message, flags | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent < 0 ? -errno : 0;
}

int sendPacket(int fd, int flags, const PacketHeader& header) {
    const iovec part = {const_cast<PacketHeader*>(&header), sizeof(header)};
    return sendAll(fd, flags, &part, 1);
}

int sendPacket(int fd, int flags, PacketHeader header, const std::vector<PacketObject>& objects,
               const uint8_t* data, size_t dataSize, bool asUser) {
    header.objectCount = static_cast<uint32_t>(objects.size());
    header.dataSize = static_cast<uint32_t>(dataSize);
    const iovec parts[] = {
            {&header, sizeof(header)},
            {const_cast<PacketObject*>(objects.data()), objects.size() * sizeof(PacketObject)},
            {const_cast<uint8_t*>(data), dataSize},
    };
    return sendAll(fd, flags, parts, 3, asUser);
}

}  // namespace android::host
