#include "hardware_info/HardwareInfoService.h"

#include <android/log.h>

#include "hardware_info/log_tag.h"
#include "hardware_info/ota_timestamp.h"
#include "hardware_info/peripheral_list.h"

namespace com::tarq::hardwareInfo {

using android::String16;
using android::binder::Status;

Status HardwareInfoService::getHardwareInfo(std::vector<String16>* peripherals, bool* result) {
    *result = _getHardwareInfo(peripherals);
    return Status::ok();
}

Status HardwareInfoService::isMatchHardwareInfo(const std::vector<String16>& /*peripherals*/,
                                                bool* result) {
    // No package is let through that was not compared with the board.
    __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                        "isMatchHardwareInfo: this build cannot compare packages, answering false");
    *result = false;
    return Status::ok();
}

Status HardwareInfoService::setOtaTimestamp(int64_t timestamp) {
    _setOtaTimestamp(timestamp);
    return Status::ok();
}

}  // namespace com::tarq::hardwareInfo
