// The hardware information service as other processes call it. All state is that of the module:
// peripheralTable, boardIdentity and otaTimestamp.
#pragma once

#include <vector>

#include <com/tarq/hardwareInfo/BnHardwareInfoService.h>

namespace com::tarq::hardwareInfo {

// Methods run on any binder thread, several at once. Each returns an ok status; a "no" is told by
// *result.
class HardwareInfoService : public BnHardwareInfoService {
  public:
    android::binder::Status getHardwareInfo(std::vector<android::String16>* peripherals,
                                            bool* result) override;
    android::binder::Status isMatchHardwareInfo(const std::vector<android::String16>& peripherals,
                                                bool* result) override;
    android::binder::Status setOtaTimestamp(int64_t timestamp) override;
};

}  // namespace com::tarq::hardwareInfo
