// A command through the shell service beside popen, read and pclose: the shell that both start
// takes nearly all of the time, and the rest is a call.
#include <binder/IServiceManager.h>
#include <com/tarq/shell/IShellService.h>
#include <stdio.h>
#include <stdlib.h>

#include "bench/bench.h"

namespace bench {

using com::tarq::shell::IShellService;

static void shellTarqd(benchmark::State& state) {
    const OneCpu cpu;
    const Daemon daemon;
    const auto service = android::interface_cast<IShellService>(
            android::defaultServiceManager()->getService(IShellService::descriptor));
    timeEach(state, [&] {
        std::vector<android::String16> output;
        int32_t unused = 0;
        if (!service->executeCommand(android::String16("true"), &output, &unused).isOk()) abort();
    });
}

static void shellFloor(benchmark::State& state) {
    const OneCpu cpu;
    timeEach(state, [] {
        FILE* const stream = popen("true", "r");
        char buffer[1024];
        if (stream == nullptr || fread(buffer, 1, sizeof(buffer), stream) != 0) abort();
        pclose(stream);
    });
}

BENCHMARK(shellTarqd)->Name("shell/tarqd")->Iterations(150);
BENCHMARK(shellFloor)->Name("shell/floor")->Iterations(150);

}  // namespace bench
