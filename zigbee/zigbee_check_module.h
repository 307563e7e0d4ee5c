// Start-up of the Zigbee module: is there a co-processor, and which one.
#pragma once

#include <stdint.h>

// Where the property ro.vendor.zigbee_check_enable is "true", asks the co-processor on /dev/ttyS3
// and publishes the outcome in the property ro.vendor.zigbee.info, in any case; once a process, on
// the main thread, before the binder pool starts.
//
// It waits: about 3 seconds where each question is answered at once, and up to 13.5 minutes where
// nothing answers. The modules behind it start after that.
//
// Returns 0 when it was not enabled or all was answered, else -1; nobody reads it.
int32_t zigbee_check_module();
