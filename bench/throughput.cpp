// Calls a second of eight client processes beside as many bare round trips. All begin at one
// moment, told to them beforehand, and count for the same time: what one of them does alone is not
// counted. Each floor has a peer of its own, so it does not see what waiting for one daemon costs.
#include <binder/IServiceManager.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "bench/bench.h"

namespace bench {

using com::tarq::hardwareInfo::IHardwareInfoService;

static constexpr int kWorkers = 8;
// By then all of them should run and have called once.
static constexpr std::chrono::milliseconds kWarmUp{200};
static constexpr std::chrono::milliseconds kRun{400};

// Prints how many calls of body were made within kRun from the start on. The first, before it,
// opens what needs opening.
template <typename Body>
static void countUntil(Clock::time_point start, Body body) {
    body();
    std::this_thread::sleep_until(start);
    long count = 0;
    while (Clock::now() < start + kRun) {
        body();
        ++count;
    }
    printf("%ld\n", count);
}

// Arguments: "worker", what to do, and when to start in nanoseconds of the steady clock.
int runWorker(int argc, char** argv) {
    if (argc != 4) return 2;
    const Clock::time_point start{std::chrono::nanoseconds(atoll(argv[3]))};
    if (strcmp(argv[2], "tarqd") == 0) {
        const auto service = android::interface_cast<IHardwareInfoService>(
                android::defaultServiceManager()->getService(IHardwareInfoService::descriptor));
        countUntil(start, [&] { service->setOtaTimestamp(1); });
    } else {
        const CallSizes sizes = setOtaTimestampSizes();
        PingPong pingPong(sizes.request, sizes.reply);
        countUntil(start, [&] { pingPong.roundTrip(); });
    }
    return 0;
}

// Adds up what the workers count. One that comes too late for the start counts less.
static double callsPerSecond(const char* what) {
    const auto start = (Clock::now() + kWarmUp).time_since_epoch();
    const auto startNs = std::chrono::duration_cast<std::chrono::nanoseconds>(start).count();
    pid_t workers[kWorkers];
    int outputs[kWorkers];
    for (int i = 0; i < kWorkers; ++i) {
        workers[i] =
                spawn({"/proc/self/exe", "worker", what, std::to_string(startNs)}, &outputs[i]);
    }
    double total = 0;
    for (int i = 0; i < kWorkers; ++i) {
        char text[32] = {};
        if (read(outputs[i], text, sizeof(text) - 1) <= 0) abort();
        total += atof(text);
        close(outputs[i]);
        waitpid(workers[i], nullptr, 0);
    }
    return total / std::chrono::duration<double>(kRun).count();
}

static void call8Tarqd(benchmark::State& state) {
    const Daemon daemon;
    for (auto _ : state) state.counters["value"] = callsPerSecond("tarqd");
}

static void call8Floor(benchmark::State& state) {
    for (auto _ : state) state.counters["value"] = callsPerSecond("floor");
}

BENCHMARK(call8Tarqd)->Name("call8/tarqd")->Iterations(1);
BENCHMARK(call8Floor)->Name("call8/floor")->Iterations(1);

}  // namespace bench
