// Finds out, once at start-up, which board this is.
#pragma once

#include <stdint.h>

// Reads the board's index and overlay id from the system properties and its parts from the
// description file, into peripheralTable and boardIdentity, and logs them all. What is missing or
// malformed is logged and left at "null" or -1; nothing here keeps the daemon from starting.
//
// Called once, on the main thread, before any other thread looks at the table. What it returns
// means nothing.
int32_t initHardwareInfo();
