// Finds out, once at start-up, which board this is.
#pragma once

#include <stdint.h>

// Reads the board's index and overlay id from the system properties and its parts from the
// description file, into peripheralTable and boardIdentity, and logs them all. What is missing
// stays at "null" or -1, and so does an overlay id in a property of another form; an index that is
// no number is 0. Nothing here keeps the daemon from starting.
//
// Called once, on the main thread, before any other thread looks at the table. What it returns
// means nothing.
int32_t initHardwareInfo();
