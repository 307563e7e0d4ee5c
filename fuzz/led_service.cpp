// Requests to the LED service. Plain files are the driver; two effect files are there to be loaded,
// /data/good.xml and /data/bad.xml. A path that the fuzzer makes up is opened as well, and read
// only.
#include <host/log_sink.h>

#include "fuzz/board_files.h"
#include "fuzz/transact.h"
#include "rgbleds/rgbLedsService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static BoardFiles board;
    static const android::sp<com::tarq::rgbleds::rgbLedsService> service = [] {
        tarq::host::setLogSink([](int, const char*, const std::string&) {});
        board.write("/sys/class/rgbled/set_color", "");
        board.write(
                "/data/good.xml",
                "<e loop='1' interval='20' duration='9'><led id='1'><eff s='1'>ff</eff></led></e>");
        board.write("/data/bad.xml", "<e><led><eff/></led></e>");
        return new com::tarq::rgbleds::rgbLedsService;
    }();
    transact(service, data, size);
    return 0;
}
