#include "radiokey/radio_key_module.h"

#include <android/log.h>
#include <binder/IServiceManager.h>
#include <cutils/properties.h>
#include <string.h>

#include "radiokey/RadioKeyService.h"

using android::IBinder;
using android::IServiceManager;
using android::sp;
using com::tarq::radiokey::RadioKeyService;

// Its two lines have no tag: people who read the log know them like that.
int32_t radio_key_module() {
    char enabled[256] = {};
    property_get("ro.vendor.433_check_enable", enabled, "false");
    if (strcmp(enabled, "true") != 0) {
        __android_log_print(ANDROID_LOG_INFO, nullptr, "%s skip check Radiokey", __func__);
        return 0;
    }
    __android_log_print(ANDROID_LOG_INFO, nullptr, "RadioKeyService begin\n");
    const sp<IServiceManager> manager = android::defaultServiceManager();
    const sp<IBinder> service = new RadioKeyService();
    manager->addService(RadioKeyService::SERVICE_NAME(), service, false,
                        IServiceManager::DUMP_FLAG_PRIORITY_DEFAULT);
    return 0;
}
