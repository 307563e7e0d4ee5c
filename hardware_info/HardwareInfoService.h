// The hardware information service as other processes call it. The object itself is empty: all
// state is that of the module, in peripheralTable, boardIdentity and otaTimestamp.
#pragma once

#include <vector>

#include <com/tarq/hardwareInfo/BnHardwareInfoService.h>

namespace com::tarq::hardwareInfo {

// Methods run on any binder thread, several at once. Each returns an ok status; a "no" is told by
// *result.
class HardwareInfoService : public BnHardwareInfoService {
  public:
    // The board's parts as eleven texts "name:value", which a match request takes as they are.
    // *result is always true.
    android::binder::Status getHardwareInfo(std::vector<android::String16>* peripherals,
                                            bool* result) override;
    // Whether a package that was built for these parts fits the board. It asks the drivers, so it
    // takes as long as they do; the reasons are in the log alone.
    android::binder::Status isMatchHardwareInfo(const std::vector<android::String16>& peripherals,
                                                bool* result) override;
    // The package's time, in the updater's unit, for the match requests that follow, whoever makes
    // them. Any number is taken.
    android::binder::Status setOtaTimestamp(int64_t timestamp) override;
};

}  // namespace com::tarq::hardwareInfo
