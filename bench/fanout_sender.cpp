// Sends one event to many callbacks again and again, and prints the median time of it in µs. It is
// a program of its own, since the service sends as a daemon and the measurements are clients. Only
// the sending is timed: receivers run on another CPU, where there is one.
//
// Usage: bench_fanout tarqd|floor CALLBACKS PROCESSES
// With "tarqd" it prints "ready" when clients may register that many callbacks.
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <com/tarq/radiokey/IRadioKeyCallback.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <vector>

#include "bench/one_cpu_each.h"
#include "host/platform/binder/wire.h"
#include "radiokey/RadioKeyService.h"

using android::sp;
using com::tarq::radiokey::IRadioKeyCallback;
using com::tarq::radiokey::RadioKeyService;

// Knows when all receivers have registered.
class CountingService : public RadioKeyService {
  public:
    android::binder::Status registerRadioKeyCallback(
            const sp<IRadioKeyCallback>& callback) override {
        const auto status = RadioKeyService::registerRadioKeyCallback(callback);
        ++registrations;
        return status;
    }
    std::atomic<int> registrations{0};
};

// Before each event the receivers get the time to take the one before, so that the sender never
// finds a socket full and they never run beside it for long.
template <typename Body>
static void printMedian(int callbacks, Body send) {
    constexpr int kEvents = 50;
    constexpr std::chrono::microseconds kTimeToTakeOne{20};
    std::vector<double> micros;
    for (int i = 0; i < kEvents; ++i) {
        usleep(static_cast<useconds_t>(2000 + callbacks * kTimeToTakeOne.count()));
        const auto start = std::chrono::steady_clock::now();
        send();
        const std::chrono::duration<double, std::micro> took =
                std::chrono::steady_clock::now() - start;
        micros.push_back(took.count());
    }
    std::nth_element(micros.begin(), micros.begin() + kEvents / 2, micros.end());
    printf("%f\n", micros[kEvents / 2]);
    fflush(stdout);
}

// Begins when as many callbacks as expected have registered, and sends like a key of the receiver.
static void sendAsDaemon(int callbacks) {
    const sp<android::ProcessState> process = android::ProcessState::self();
    const sp<CountingService> service = new CountingService;
    android::defaultServiceManager()->addService(RadioKeyService::SERVICE_NAME(), service);
    process->startThreadPool();
    puts("ready");
    fflush(stdout);
    while (service->registrations < callbacks) usleep(1000);
    printMedian(callbacks, [&] { service->onClick(1, 2, 3, -60); });
}

// The floor's packets are as large as those of the service's events.
static size_t packetSize() {
    android::Parcel event;
    event.writeInterfaceToken(IRadioKeyCallback::descriptor);
    for (int i = 0; i < 4; ++i) event.writeInt32(0);
    return sizeof(android::host::PacketHeader) + event.dataSize();
}

// The floor's receiver takes a packet at a time and throws it away. Returns the sender's end.
static int startReceiver(size_t size) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) abort();
    if (fork() == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        bench::runAsReceiver();
        std::vector<char> packet(size);
        while (recv(ends[1], packet.data(), packet.size(), 0) > 0) continue;
        _exit(0);
    }
    close(ends[1]);
    return ends[0];
}

// As many sends as there are callbacks, on as many sockets as there are processes: the service has
// one for each as well.
static void sendBare(int callbacks, int processes) {
    const std::vector<char> packet(packetSize());
    std::vector<int> sockets;
    for (int i = 0; i < processes; ++i) sockets.push_back(startReceiver(packet.size()));
    printMedian(callbacks, [&] {
        for (int i = 0; i < callbacks; ++i) {
            const int fd = sockets[static_cast<size_t>(i % processes)];
            if (send(fd, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL) < 0) abort();
        }
    });
}

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    const int callbacks = atoi(argv[2]);
    bench::runAsSender();
    if (strcmp(argv[1], "tarqd") == 0) {
        sendAsDaemon(callbacks);
    } else {
        sendBare(callbacks, atoi(argv[3]));
    }
    _exit(0);  // the daemon's threads run on
}
