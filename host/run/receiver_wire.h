// How the stand-in for libradiokey and the receiver of a virtual board find each other and speak.
// They meet in run/rf/ of the board, which the board makes for its own user alone:
//
//   receiver  The board's socket. There is a receiver as long as the board has it open.
//   state     The board's file: the chip's status and the signal strength in dBm, "1 -100". The
//             board moves a new one into its place.
//   000001b1  The socket of the program that was tuned to 433 last. It receives a key of that
//             frequency as one Reception, and nothing else. When it is tuned anew it is moved, so
//             what it listens to and whether it does cannot contradict each other.
//   off       The socket of a program that is not tuned.
//
// All are datagram sockets. One whose process was killed stays there, and refuses connections. A
// frequency has one listener, since a board has one daemon: who comes later takes its place.
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "host/run/descriptors.h"

namespace tarq::host {

// Below the board's directory. None is longer than run/binder.sock, so that each has an address
// wherever that has one (kMaxBoardPath).
constexpr char kRadio[] = "/run/rf";
constexpr char kReceiverSocket[] = "/run/rf/receiver";
constexpr char kReceiverState[] = "/run/rf/state";
constexpr char kUntunedSocket[] = "/run/rf/off";

// The path of the socket of a program that listens at the frequency, which is in the receiver's own
// unit and may be any number, below 0 too.
inline std::string tunedSocket(int32_t frequency) {
    char path[sizeof(kRadio) + sizeof("/000001b1")];
    snprintf(path, sizeof(path), "%s/%08x", kRadio, static_cast<uint32_t>(frequency));
    return path;
}

// What a program receives of a key, in the byte order of the machine: both ends run on it.
struct Reception {
    int32_t value1;
    int32_t value2;
    int32_t value3;
    int32_t rssiDBm;
};

// Whether a process has the socket at the path open.
inline bool isSocketOpen(const std::string& path) {
    const int fd = connectTo(path, SOCK_DGRAM);
    if (fd >= 0) close(fd);
    return fd >= 0;
}

}  // namespace tarq::host
