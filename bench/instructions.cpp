// The daemon's own instructions for one operation, without the kernel's and the client's. They
// repeat to a per cent where times do not. Callgrind counts those of a whole run, from the start to
// the end; so two runs are made that differ in the number of operations alone.
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/IRadioKeyService.h>
#include <com/tarq/rgbleds/IRgbLedsService.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>

#include "bench/bench.h"
#include "host/run/control.h"

namespace bench {

using android::sp;
using com::tarq::hardwareInfo::IHardwareInfoService;
using com::tarq::radiokey::BnRadioKeyCallback;
using com::tarq::radiokey::IRadioKeyService;
using com::tarq::rgbleds::IRgbLedsService;

template <typename Interface>
static sp<Interface> find(const android::String16& name = Interface::descriptor) {
    return android::interface_cast<Interface>(android::defaultServiceManager()->getService(name));
}

// Has the daemon do it so often.
using Operations = void (*)(int count);

static double instructionsOf(Operations operations, int count) {
    int output = -1;
    {
        const Daemon daemon({"/usr/bin/valgrind", "--tool=callgrind", "--log-fd=1",
                             "--callgrind-out-file=/dev/null"},
                            &output);
        operations(count);
    }
    FILE* const said = fdopen(output, "r");
    char line[256];
    double collected = 0;
    while (fgets(line, sizeof(line), said) != nullptr) {
        sscanf(line, "%*s Collected : %lf", &collected);
    }
    fclose(said);
    if (collected == 0) abort();
    return collected;
}

static void instructions(benchmark::State& state, Operations operations) {
    constexpr int kFew = 10;
    constexpr int kMany = 210;
    for (auto _ : state) {
        const double more = instructionsOf(operations, kMany) - instructionsOf(operations, kFew);
        state.counters["value"] = more / (kMany - kFew);
    }
}

static void getHardwareInfo(int count) {
    const auto service = find<IHardwareInfoService>();
    std::vector<android::String16> items;
    bool result = false;
    while (count-- > 0) service->getHardwareInfo(&items, &result);
}

static void match(int count) {
    const auto service = find<IHardwareInfoService>();
    std::vector<android::String16> items;
    bool result = false;
    service->getHardwareInfo(&items, &result);
    while (count-- > 0) service->isMatchHardwareInfo(items, &result);
}

static void setColour(int count) {
    const auto service = find<IRgbLedsService>();
    bool done = false;
    while (count-- > 0) service->setRgbColor(3, 0xff8000, &done);
}

class Counting : public BnRadioKeyCallback {
  public:
    android::binder::Status onClick(int32_t /*value1*/, int32_t /*value2*/, int32_t /*value3*/,
                                    int32_t /*rssiDBm*/) override {
        ++heard;
        return android::binder::Status::ok();
    }
    std::atomic<int> heard{0};
};

static void callback(int count) {
    android::ProcessState::self()->startThreadPool();
    const sp<Counting> callback = new Counting;
    const auto service = find<IRadioKeyService>(IRadioKeyService::SERVICE_NAME());
    service->registerRadioKeyCallback(callback);
    const tarq::host::Board board{getenv("TARQ_BOARD")};
    int32_t status = 0;
    while (service->getChipStatus(&status).isOk() && status != 1) usleep(1000);
    for (int i = 1; i <= count; ++i) {
        tarq::host::askBoard(board, {"key", "1", "2", "3", "433"});
        while (callback->heard < i) usleep(100);
    }
}

BENCHMARK_CAPTURE(instructions, hwinfo, getHardwareInfo)
        ->Name("instructions of getHardwareInfo")
        ->Iterations(1)
        ->Repetitions(1);
BENCHMARK_CAPTURE(instructions, match, match)
        ->Name("instructions of a match")
        ->Iterations(1)
        ->Repetitions(1);
BENCHMARK_CAPTURE(instructions, led, setColour)
        ->Name("instructions of an LED write")
        ->Iterations(1)
        ->Repetitions(1);
BENCHMARK_CAPTURE(instructions, callback, callback)
        ->Name("instructions of a callback")
        ->Iterations(1)
        ->Repetitions(1);

}  // namespace bench
