// Start-up of the RGB LED module.
#pragma once

#include <stdint.h>

// Hands the boot effect to the LED driver and registers the service. The property
// vendor.boot.led_effect names the effect's file, by default /vendor/etc/leds/wave_fast.xml. Called
// once, on the main thread, before the binder pool starts. Returns 0, which nobody reads.
int32_t rgb_led_module();
