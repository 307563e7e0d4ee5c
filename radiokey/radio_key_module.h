// Start-up of the radio key module.
#pragma once

#include <stdint.h>

// Where the property ro.vendor.433_check_enable is "true", builds the service, which starts the
// receiver, and registers it as "radiokey_service". Elsewhere that name is never found. Called
// once, on the main thread, before the binder pool starts. Returns 0, which nobody reads.
int32_t radio_key_module();
