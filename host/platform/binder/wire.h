// The packets between the daemon and its clients: one SOCK_SEQPACKET socket, run/binder.sock of the
// board. Both ends run on one machine, so numbers are in its own byte order.
//
//   connection   who sends what, in this order
//   event        client OPEN, daemon WELCOME; then both send CALL (one-way) and RELEASE: so such a
//                call is there before the release of its target. The session ends with this
//                connection.
//   call         client JOIN, daemon WELCOME; then CALL and its REPLY. Each thread of the client
//                has one for its calls. A reply and the release of what it names may cross.
//   registry     as call, but for object 0 alone, the service manager: look-ups never wait behind
//                calls.
//
// A connection that the daemon does not take is told so by a WELCOME with a negative status. Who
// sees another version than its own in OPEN or WELCOME goes no further. So these two, and the
// header, are read by every version alike.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <vector>

namespace android::host {

// Of all that stands here. A change that the other end would misread gets the next number.
constexpr uint32_t kWireVersion = 1;

// The largest arguments or results of one call, in bytes. The kernel takes SOCK_SEQPACKET packets
// up to 212,960 bytes with the default socket buffer.
constexpr size_t kMaxTransaction = size_t{192} * 1024;

// The most binder objects in them.
constexpr size_t kMaxObjects = 256;

// What a packet is, and which fields of its header count; the others are 0.
enum class PacketKind : uint32_t {
    kOpen,     // code: kWireVersion
    kJoin,     // session, token; code: Lane
    kWelcome,  // code: kWireVersion; session, token; or instead of these status: -EMFILE where the
               // user has its share of connections, -EPROTONOSUPPORT for a client of another
               // version
    kCall,     // target, code, flags, objects, data
    kReply,    // status; objects and data unless it is negative
    kRelease,  // target, count
};

// What a connection that joins a session is for.
enum class Lane : uint32_t { kCall, kRegistry };

// Opens every packet; the objects and the data follow it. The sender's process and user do not
// stand here: the kernel tells them of each connection, and the user of each one-way call.
struct PacketHeader {
    PacketKind kind;
    uint32_t code;
    uint32_t flags;  // IBinder's: FLAG_ONEWAY
    int32_t status;  // a status_t; in WELCOME 0 or -errno
    union {
        uint64_t target;  // the object's number at the receiver
        uint64_t session;
    };
    union {
        uint64_t count;  // how often the sender received the object since its last release
        uint64_t token;  // known to the session's process only
    };
    uint32_t objectCount;
    uint32_t dataSize;
};
static_assert(sizeof(PacketHeader) == 40, "no padding travels");

// Where an object lives, as the sender of the packet sees it.
enum class Home : uint32_t { kSender, kReceiver };

// A binder object within the data, by the number that the process it lives in gave it.
struct PacketObject {
    uint32_t offset;  // in bytes from the data's beginning, a multiple of 4
    Home home;
    uint64_t id;
};

// No packet is larger, so a receive buffer is as large as this.
constexpr size_t kMaxPacket =
        sizeof(PacketHeader) + kMaxObjects * sizeof(PacketObject) + kMaxTransaction;

// A received packet. It points into the thread's receive buffer, until the next receivePacket.
struct Packet {
    PacketHeader header;
    const PacketObject* objects;
    const uint8_t* data;
};

enum class Received {
    kPacket,
    kNothing,  // with MSG_DONTWAIT: none is there now
    kClosed,   // the peer has closed, or the connection is broken; an empty packet looks the same
    kMalformed,
};

// Takes the next packet. flags: MSG_DONTWAIT or 0. A packet is handed over only if its lengths,
// kind and offsets fit, so that nobody has to look at them again. Goes on after a signal. sender:
// where wanted, the kernel's word on the user who sent it, on a socket with SO_PASSCRED.
Received receivePacket(int fd, int flags, Packet* packet, uid_t* sender = nullptr);

// Sends a packet of a header alone. 0 or -errno: -EAGAIN with MSG_DONTWAIT where the socket has no
// room, -EPIPE where the peer has closed; never a signal. A packet is sent whole or not at all.
int sendPacket(int fd, int flags, const PacketHeader& header);

// The same with objects and data. Fills in the header's sizes; data holds dataSize bytes. asUser:
// the packet carries the thread's effective user, which need not be the connection's.
int sendPacket(int fd, int flags, PacketHeader header, const std::vector<PacketObject>& objects,
               const uint8_t* data, size_t dataSize, bool asUser = false);

}  // namespace android::host
