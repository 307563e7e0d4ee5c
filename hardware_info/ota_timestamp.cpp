#include "hardware_info/ota_timestamp.h"

std::atomic<int64_t> otaTimestamp{0};

void _setOtaTimestamp(int64_t timestamp) {
    otaTimestamp.store(timestamp, std::memory_order_relaxed);
}
