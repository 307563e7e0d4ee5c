// Start-up of the RGB LED module.
#pragma once

#include <stdint.h>

// Hands the boot effect, the file that the property vendor.boot.led_effect names, to the LED driver
// and registers the service. Called once, on the main thread, before the binder pool starts.
// Returns 0, which nobody reads.
int32_t rgb_led_module();
