// tarqd: starts the modules one after the other, then serves until it is killed.
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <stdint.h>

#include "hardware_info/hardware_info_module.h"
#include "radiokey/radio_key_module.h"
#include "rgbleds/rgb_led_module.h"
#include "shell/shell_module.h"
#include "zigbee/zigbee_check_module.h"

// They start in the order in which their services appear to clients. Until the last has returned no
// call is served, so a slow module holds up the ones behind it and every client. Nobody reads the
// results: a module that fails says so in the log, and the others start all the same.
static int32_t (*const kModules[])() = {
        hardware_info_module, rgb_led_module, shell_module, zigbee_check_module, radio_key_module,
};

int main() {
    // Opens the binder before any service object is built.
    const android::sp<android::ProcessState> process = android::ProcessState::self();
    for (const auto& startModule : kModules) startModule();
    android::ProcessState::self()->startThreadPool();
    android::IPCThreadState::self()->joinThreadPool(true);
    return 0;
}
