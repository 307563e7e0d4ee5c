// Start-up of the shell module.
#pragma once

#include <stdint.h>

// Registers the shell service. Called once, on the main thread, before the binder pool starts.
// Returns 0, which nobody reads.
int32_t shell_module();
