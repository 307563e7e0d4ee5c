// What the stand-in for libradiokey and the virtual board's receiver tell each other. Host only.
//
// The board listens on a SOCK_SEQPACKET socket, and each program that uses the library holds one
// connection to it; its end switches the receiver off for that program. A packet is one
// ReceiverPacket, and the order in which they come is the order in which things happened.
#pragma once

#include <stdint.h>

namespace tarq::host {

// Below the board's directory.
inline constexpr char kReceiverSocket[] = "run/radio.sock";

struct ReceiverPacket {
    enum Kind : int32_t {
        // Library to board.
        kTune,  // values: the frequency
        kOff,
        // Board to library, at once after the connection and after every change.
        kState,  // values: chip status, signal strength in dBm
        // Board to library, as long as it is tuned.
        kReception,  // values: the three of the reception, signal strength in dBm
    };
    int32_t kind;
    int32_t values[4];  // those that the kind does not name are 0
};

}  // namespace tarq::host
