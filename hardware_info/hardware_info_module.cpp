#include "hardware_info/hardware_info_module.h"

#include <binder/IServiceManager.h>

#include "hardware_info/HardwareInfoService.h"
#include "hardware_info/board_identity.h"

using android::IBinder;
using android::IServiceManager;
using android::sp;
using com::tarq::hardwareInfo::HardwareInfoService;

int32_t hardware_info_module() {
    initHardwareInfo();  // before the name appears: callers read the table without a lock
    const sp<IServiceManager> manager = android::defaultServiceManager();
    const sp<IBinder> service = new HardwareInfoService();
    manager->addService(HardwareInfoService::descriptor, service, false,
                        IServiceManager::DUMP_FLAG_PRIORITY_DEFAULT);
    return 0;
}
