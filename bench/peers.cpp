// The same small call over sd-bus: between the two processes themselves, and through dbus-daemon,
// as services of a desktop are called. Beside the floor of "call" they tell what a caller of
// another system would pay.
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "bench/bench.h"

namespace bench {

static constexpr char kName[] = "com.tarq.bench";
static constexpr char kPath[] = "/com/tarq/bench";

static void check(int result) {
    if (result < 0) abort();
}

static int answer(sd_bus_message* call, void* /*data*/, sd_bus_error* /*error*/) {
    int64_t number = 0;
    check(sd_bus_message_read(call, "x", &number));
    return sd_bus_reply_method_return(call, "");
}

static const sd_bus_vtable kMethods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("SetNumber", "x", "", answer, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
};

[[noreturn]] static void serve(sd_bus* bus) {
    check(sd_bus_add_object_vtable(bus, nullptr, kPath, kName, kMethods, nullptr));
    while (sd_bus_process(bus, nullptr) >= 0 && sd_bus_wait(bus, UINT64_MAX) >= 0) continue;
    _exit(0);
}

// A process of its own, which ends with this one.
template <typename Open>
static pid_t startServer(Open open) {
    const pid_t server = fork();
    if (server != 0) return server;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    serve(open());
}

static void call(benchmark::State& state, sd_bus* bus, const char* destination) {
    const auto setNumber = [&] {
        return sd_bus_call_method(bus, destination, kPath, kName, "SetNumber", nullptr, nullptr,
                                  "x", int64_t{1});
    };
    while (setNumber() < 0) usleep(1000);  // until it serves
    timeEach(state, [&] { check(setNumber()); });
    sd_bus_flush_close_unref(bus);
}

static sd_bus* openPeer(int fd, bool isServer) {
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus));
    check(sd_bus_set_fd(bus, fd, fd));
    if (isServer) check(sd_bus_set_server(bus, 1, SD_ID128_ALLF));
    check(sd_bus_set_anonymous(bus, 1));
    check(sd_bus_start(bus));
    return bus;
}

static void peerToPeer(benchmark::State& state) {
    const OneCpu cpu;
    int ends[2];
    check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
    const pid_t server = startServer([&] {
        close(ends[0]);
        return openPeer(ends[1], true);
    });
    close(ends[1]);
    call(state, openPeer(ends[0], false), nullptr);
    stop(server);
}

static sd_bus* openBus(const std::string& address) {
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus));
    check(sd_bus_set_address(bus, address.c_str()));
    check(sd_bus_set_bus_client(bus, 1));
    check(sd_bus_start(bus));
    return bus;
}

static void throughDaemon(benchmark::State& state) {
    const OneCpu cpu;
    const std::string address = std::string("unix:path=") + getenv("TARQ_BOARD") + "/run/bus";
    int output = -1;
    const pid_t daemon = spawn({"/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address",
                                "--address=" + address},
                               &output);
    char ready[128];
    if (read(output, ready, sizeof(ready)) <= 0) abort();
    const pid_t server = startServer([&] {
        sd_bus* const bus = openBus(address);
        check(sd_bus_request_name(bus, kName, 0));
        return bus;
    });
    call(state, openBus(address), kName);
    stop(server);
    stop(daemon);
    close(output);
}

BENCHMARK(peerToPeer)->Name("call/sd-bus, peer to peer")->Iterations(3000);
BENCHMARK(throughDaemon)->Name("call/sd-bus, through dbus-daemon")->Iterations(1000);

}  // namespace bench
