// A match that asks all three probes, beside the bare operations on the files that it cannot avoid:
// the touch panel's text, the two files of the display, the camera's request. The board plays them
// all, so its time is in the match as in the floor.
#include <binder/IServiceManager.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "bench/bench.h"
#include "hardware_info/board_identity.h"
#include "hardware_info/peripheral_list.h"
#include "hardware_info/peripheral_matching.h"

namespace bench {

using com::tarq::hardwareInfo::IHardwareInfoService;

// The board's own list fits the board.
static void match(benchmark::State& state, const Daemon& /*runs*/) {
    const auto service = android::interface_cast<IHardwareInfoService>(
            android::defaultServiceManager()->getService(IHardwareInfoService::descriptor));
    std::vector<android::String16> items;
    bool result = false;
    service->getHardwareInfo(&items, &result);
    timeEach(state, [&] {
        if (!service->isMatchHardwareInfo(items, &result).isOk() || !result) abort();
    });
}

static void matchTarqd(benchmark::State& state) {
    const OneCpu cpu;
    match(state, Daemon());
}

static void matchUnlogged(benchmark::State& state) {
    const OneCpu cpu;
    match(state, Daemon(false));
}

// In one piece if it is small, as a driver shows it, and one read more to see its end.
static void readFile(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    char content[4096];
    while (read(fd, content, sizeof(content)) > 0) continue;
    close(fd);
}

// Touches what the probes of the demo board touch; the order makes no difference.
static void matchFloor(benchmark::State& state) {
    const OneCpu cpu;
    const std::string root = std::string(getenv("TARQ_BOARD")) + "/root";
    const std::string panel = root + "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/";
    timeEach(state, [&] {
        readFile(root + "/sys/class/tpinfo/tpinfo_ic_info");
        if (open((panel + "id").c_str(), O_RDONLY | O_CLOEXEC) >= 0) abort();  // another way's
        readFile(panel + "hwid-flag");
        const int camera = open((root + "/dev/v4l-subdev0").c_str(), O_RDWR | O_CLOEXEC);
        char information[3766] = {};
        if (ioctl(camera, _IOC(_IOC_READ, 'V', 192, sizeof(information)), information) != 0) {
            abort();
        }
        close(camera);
    });
}

// Without the daemon: its system calls for the call itself would be counted as well.
static void matchTraced() {
    setenv("TARQ_LOG", "/dev/null", 1);
    initHardwareInfo();
    std::vector<android::String16> items;
    _getHardwareInfo(&items);
    beginCount();
    _isMatchHardwareInfo(items);
}

static void listTraced() {
    setenv("TARQ_LOG", "/dev/null", 1);
    initHardwareInfo();
    std::vector<android::String16> items;
    beginCount();
    _getHardwareInfo(&items);
}

static void listSystemCalls(benchmark::State& state) {
    countSystemCalls(state, listTraced);
}

static void matchSystemCalls(benchmark::State& state) {
    countSystemCalls(state, matchTraced);
}

BENCHMARK(matchTarqd)->Name("match/tarqd")->Iterations(300);
BENCHMARK(matchUnlogged)->Name("match/log to null")->Iterations(300);
BENCHMARK(matchFloor)->Name("match/floor")->Iterations(300);
BENCHMARK(listSystemCalls)->Name("system calls of getHardwareInfo")->Iterations(1);
BENCHMARK(matchSystemCalls)->Name("system calls of a match")->Iterations(1);

}  // namespace bench
