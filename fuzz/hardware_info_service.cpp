// Requests to the hardware information service of a board with an overlay id and some parts, whose
// touch panel and display answer: so a match gets into all comparisons.
#include <host/log_sink.h>
#include <string.h>

#include "fuzz/board_files.h"
#include "fuzz/transact.h"
#include "hardware_info/HardwareInfoService.h"
#include "hardware_info/peripheral_table.h"

static void describe(PeripheralType type, const char* value) {
    strcpy(peripheralTable[static_cast<size_t>(type)].value, value);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const BoardFiles board;
    static const android::sp<com::tarq::hardwareInfo::HardwareInfoService> service = [] {
        tarq::host::setLogSink([](int, const char*, const std::string&) {});
        boardIdentity.overlayId = 5;
        describe(PeripheralType::CODEC, "es8316*rt5640");
        describe(PeripheralType::TP, "gt9xx");
        describe(PeripheralType::LCD, "ili9881c-3,jd9365-4");
        return new com::tarq::hardwareInfo::HardwareInfoService;
    }();
    transact(service, data, size);
    return 0;
}
