// libradiokey, the closed library that drives the receiver of remote keys: what is used of it, and
// what the service needs of each function. On a host a receiver of the virtual board stands in for
// it.
//
// All functions may be called at any time and from several threads at once: a poll runs while
// another thread initialises or resets the receiver or asks for its status. What the three values
// of a reception, the chip's status and the frequency's unit mean is the library's own affair.
#pragma once

#include <stdint.h>

extern "C" {

// Starts the receiver at the frequency. The result tells nothing that the service acts on.
int32_t radiokey_init(int32_t frequency);

// Starts it anew at another frequency.
int32_t radiokey_reset(int32_t frequency);

// Releases the receiver.
int32_t radiokey_uninit();

// The chip's status.
int32_t radiokey_detect_chip();

// The signal strength in dBm; right after a reception was polled, that of the reception.
int32_t radiokey_get_rssi_dbm();

// Waits for the next reception, but not for ever: the service polls again at once, without a pause
// of its own. Returns 0 with the reception's three values, or anything else for none this time.
int32_t radiokey_recv_poll(int32_t* value1, int32_t* value2, int32_t* value3);
}
