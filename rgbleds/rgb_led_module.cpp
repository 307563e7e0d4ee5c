#include "rgbleds/rgb_led_module.h"

#include <android/log.h>
#include <binder/IServiceManager.h>
#include <cutils/properties.h>

#include "rgbleds/effect_loader.h"
#include "rgbleds/led_attributes.h"
#include "rgbleds/rgbLedsService.h"

using android::IBinder;
using android::IServiceManager;
using android::sp;
using com::tarq::rgbleds::rgbLedsService;

int32_t rgb_led_module() {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "RgbLedsSevice begin\n");
    // A file that is missing or wrong is in the log, and the service starts without an effect.
    char path[PROPERTY_VALUE_MAX] = {};
    property_get("vendor.boot.led_effect", path, "/vendor/etc/leds/wave_fast.xml");
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "startBootXml:%s", path);
    parseXmlFile(path);
    const sp<IServiceManager> manager = android::defaultServiceManager();
    const sp<IBinder> service = new rgbLedsService();
    manager->addService(rgbLedsService::descriptor, service, false,
                        IServiceManager::DUMP_FLAG_PRIORITY_DEFAULT);
    return 0;
}
