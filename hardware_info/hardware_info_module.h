// Start-up of the hardware information module.
#pragma once

#include <stdint.h>

// Reads what the board is and registers the service, under its descriptor. A refused registration
// is ignored. Called once, on the main thread, before the binder pool starts. Returns 0, which
// nobody reads.
int32_t hardware_info_module();
