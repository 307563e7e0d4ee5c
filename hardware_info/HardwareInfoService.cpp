#include "hardware_info/HardwareInfoService.h"

#include "hardware_info/peripheral_list.h"
#include "hardware_info/peripheral_matching.h"
#include "hardware_info/timestamp_check.h"

namespace com::tarq::hardwareInfo {

using android::String16;
using android::binder::Status;

Status HardwareInfoService::getHardwareInfo(std::vector<String16>* peripherals, bool* result) {
    *result = _getHardwareInfo(peripherals);
    return Status::ok();
}

Status HardwareInfoService::isMatchHardwareInfo(const std::vector<String16>& peripherals,
                                                bool* result) {
    *result = _isMatchHardwareInfo(peripherals);
    return Status::ok();
}

Status HardwareInfoService::setOtaTimestamp(int64_t timestamp) {
    _setOtaTimestamp(timestamp);
    return Status::ok();
}

}  // namespace com::tarq::hardwareInfo
