// The serial line to the Zigbee co-processor. There is one at a time, and it is used by the main
// thread during start-up alone.
#pragma once

#include <stddef.h>
#include <stdint.h>

// The descriptor of the open port; -1 when none is open. Who opened it closes it.
extern int32_t serialPort;

// The most that uart_recv_hand hands back, in bytes.
constexpr size_t kMaxReceived = 128;

// Opens the port, a path of the device, as a raw non-blocking line of 8 data bits without parity,
// and reads its settings back. An earlier port is forgotten, not closed.
//   baud         600 to 230400 bits per second, the usual steps
//   stopBits     1 or 2
//   flowControl  with rtsCts by RTS and CTS, unless the line refuses that; else by XON and XOFF
// Returns 0, or -1 with the reason on standard output and the port closed.
int32_t ezspSetupSerialPort(const char* path, int32_t baud, uint8_t stopBits, bool rtsCts,
                            bool flowControl);

// Waits 1 second, takes everything that has come meanwhile, and acknowledges it to the
// co-processor. From 5 bytes on, and unless discard is true, frame (kMaxReceived bytes) gets them
// and *length their number: without a leading acknowledgement of 4 bytes, cut after kMaxReceived.
// Else both stay as they are; clear *length to see whether something came.
void uart_recv_hand(bool discard, uint8_t* frame, uint32_t* length);
