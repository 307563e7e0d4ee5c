// One remote key told to many callbacks, beside as many bare non-blocking sends of its size; and
// how long one takes from the command that sends it. The sender is a program of its own, as it has
// to be a daemon, and measures itself: here its receivers are started and its number is read.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/IRadioKeyService.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/bench.h"
#include "bench/one_cpu_each.h"

namespace bench {

using com::tarq::radiokey::BnRadioKeyCallback;
using com::tarq::radiokey::IRadioKeyService;

// One event to 1,000 callbacks is 100 packets to each: their sockets hold more than two of those.
static constexpr int kProcesses = 10;

// Takes events and does nothing.
class Deaf : public BnRadioKeyCallback {
  public:
    android::binder::Status onClick(int32_t /*value1*/, int32_t /*value2*/, int32_t /*value3*/,
                                    int32_t /*rssiDBm*/) override {
        return android::binder::Status::ok();
    }
};

// Writes a byte for each event.
class Telling : public BnRadioKeyCallback {
  public:
    android::binder::Status onClick(int32_t /*value1*/, int32_t /*value2*/, int32_t /*value3*/,
                                    int32_t /*rssiDBm*/) override {
        if (write(STDOUT_FILENO, ".", 1) != 1) abort();
        return android::binder::Status::ok();
    }
};

// Arguments: "receiver" and how many deaf callbacks to register, or 0 for one that tells, which
// begins with a byte when keys can come. Runs until it is ended.
int runReceiver(int argc, char** argv) {
    if (argc != 3) return 2;
    const int deaf = atoi(argv[2]);
    if (deaf > 0) runAsReceiver();
    const auto service = android::interface_cast<IRadioKeyService>(
            android::defaultServiceManager()->getService(IRadioKeyService::SERVICE_NAME()));
    std::vector<android::sp<Deaf>> callbacks;
    for (int i = 0; i < deaf; ++i) {
        callbacks.push_back(new Deaf);
        service->registerRadioKeyCallback(callbacks.back());
    }
    if (deaf == 0) {
        service->registerRadioKeyCallback(new Telling);
        int32_t status = 0;
        while (service->getChipStatus(&status).isOk() && status != 1) usleep(1000);
        if (write(STDOUT_FILENO, ".", 1) != 1) abort();
    }
    android::IPCThreadState::self()->joinThreadPool();
    return 0;
}

// The one number that the sender prints, when it is done.
static double readNumber(int output) {
    char text[32] = {};
    if (read(output, text, sizeof(text) - 1) <= 0) abort();
    close(output);
    return atof(text);
}

// What: "tarqd" or "floor". The receivers of the floor are the sender's own.
static double sendTo(const char* what, int callbacks) {
    int output = -1;
    const pid_t sender =
            spawn({FANOUT, what, std::to_string(callbacks), std::to_string(kProcesses)}, &output);
    std::vector<pid_t> receivers;
    char ready[16];
    if (std::string(what) == "tarqd") {
        if (read(output, ready, sizeof(ready)) <= 0) abort();
        for (int i = 0; i < kProcesses; ++i) {
            receivers.push_back(
                    spawn({"/proc/self/exe", "receiver", std::to_string(callbacks / kProcesses)}));
        }
    }
    const double micros = readNumber(output);
    waitpid(sender, nullptr, 0);
    for (const pid_t receiver : receivers) stop(receiver);
    return micros;
}

// One repetition is one run of the sender, which takes a median of its own.
static void fanout(benchmark::State& state, const char* what, int callbacks) {
    for (auto _ : state) state.counters["value"] = sendTo(what, callbacks);
}

// A byte is one event, or the sign that keys can come.
static void awaitByte(int output) {
    char byte;
    if (read(output, &byte, 1) != 1) abort();
}

// The time covers the start of the command that plays the key: that is what a person waits for.
static void keyToCallback(benchmark::State& state) {
    const Daemon daemon;
    int output = -1;
    const pid_t receiver = spawn({"/proc/self/exe", "receiver", "0"}, &output);
    awaitByte(output);
    std::vector<double> micros;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        const pid_t key = spawn({TARQCTL, "key", "1", "2", "3"});
        awaitByte(output);
        micros.push_back(microsSince(start));
        waitpid(key, nullptr, 0);
    }
    state.counters["value"] = median(std::move(micros));
    stop(receiver);
    close(output);
}

BENCHMARK(keyToCallback)->Name("a key, from tarqctl to the callback")->Iterations(20);
BENCHMARK_CAPTURE(fanout, tarqd10, "tarqd", 10)->Name("fanout10/tarqd")->Iterations(1);
BENCHMARK_CAPTURE(fanout, floor10, "floor", 10)->Name("fanout10/floor")->Iterations(1);
BENCHMARK_CAPTURE(fanout, tarqd100, "tarqd", 100)->Name("fanout100/tarqd")->Iterations(1);
BENCHMARK_CAPTURE(fanout, floor100, "floor", 100)->Name("fanout100/floor")->Iterations(1);
BENCHMARK_CAPTURE(fanout, tarqd1000, "tarqd", 1000)->Name("fanout1000/tarqd")->Iterations(1);
BENCHMARK_CAPTURE(fanout, floor1000, "floor", 1000)->Name("fanout1000/floor")->Iterations(1);

}  // namespace bench
