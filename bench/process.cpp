// Starts and ends what the measurements need, the board and the daemon among them; and measures
// what starting costs, and how much memory the daemon takes, both beside an empty program that
// links the same libraries.
#include <android/log.h>
#include <binder/IServiceManager.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <cutils/properties.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "bench/bench.h"
#include "host/run/board.h"

namespace bench {

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// vfork, since a copy of this process's memory would be measured with the start.
pid_t spawn(const std::vector<std::string>& command, int* output) {
    int ends[2] = {-1, -1};
    if (output != nullptr && pipe2(ends, O_CLOEXEC) != 0) abort();
    std::vector<char*> argv;
    for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    const pid_t pid = vfork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (output != nullptr) dup2(ends[1], STDOUT_FILENO);
        execv(argv[0], argv.data());
        _exit(127);
    }
    if (output != nullptr) {
        close(ends[1]);
        *output = ends[0];
    }
    return pid;
}

void stop(pid_t pid) {
    kill(pid, SIGTERM);  // lets the board unmount its hardware
    waitpid(pid, nullptr, 0);
}

// The process stops at every system call, from the first getppid on to the last.
void beginCount() {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    getppid();
}

// The last getppid is the sign to stop counting.
[[noreturn]] static void runTraced(void (*body)()) {
    body();
    getppid();
    _exit(0);
}

void countSystemCalls(benchmark::State& state, void (*body)()) {
    for (auto _ : state) {
        const pid_t child = fork();
        if (child == 0) runTraced(body);
        int status = 0;
        int stops = 0;  // two a call: before and after
        while (waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
            ++stops;
            ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        }
        // But for the stop at the start, two calls of getppid, and the first half of _exit.
        state.counters["value"] = (stops - 1 - 2 * 2 - 1) / 2;
    }
}

OneCpu::OneCpu() {
    sched_getaffinity(0, sizeof(mBefore), &mBefore);
    cpu_set_t one;
    CPU_ZERO(&one);
    for (int cpu = CPU_SETSIZE - 1; cpu >= 0 && CPU_COUNT(&one) == 0; --cpu) {
        if (CPU_ISSET(cpu, &mBefore)) CPU_SET(cpu, &one);
    }
    sched_setaffinity(0, sizeof(one), &one);
}

OneCpu::~OneCpu() {
    sched_setaffinity(0, sizeof(mBefore), &mBefore);
}

// One board for all measurements: what it costs to start one is nobody's question.
static std::string gBoard = "/tmp/tarqd-bench.XXXXXX";
static pid_t gVirtualBoard = -1;
static constexpr char kNoEffect[] = "/none";

void Daemon::prepareBoard() {
    if (mkdtemp(gBoard.data()) == nullptr) abort();
    int output = -1;
    const OneCpu cpu;  // the one on which the calls are measured that touch its hardware
    gVirtualBoard = spawn({VIRTUAL_BOARD, "serve", BOARD, gBoard}, &output);
    char ready[16];
    if (read(output, ready, sizeof(ready)) <= 0) exit(2);
    setenv("TARQ_BOARD", gBoard.c_str(), 1);
    // This process's log goes where the first line opens it, whatever a daemon is told later.
    setenv("TARQ_LOG", tarq::host::Board{gBoard}.log().c_str(), 1);
    __android_log_print(ANDROID_LOG_INFO, "bench", "begins");
    // No effect at the start: the LED driver, another process, would take most of the time.
    if (property_set("vendor.boot.led_effect", kNoEffect) != 0) abort();
}

void Daemon::removeBoard() {
    stop(gVirtualBoard);
    if (system(("rm -rf " + gBoard).c_str()) != 0) abort();
}

// Waits until it answers a call: that is when all its modules have started. The look-ups before are
// few, as they would take the time of what they wait for.
static void awaitAnswer() {
    using com::tarq::hardwareInfo::IHardwareInfoService;
    constexpr useconds_t pause = 100;
    const auto manager = android::defaultServiceManager();
    android::sp<android::IBinder> service;
    while (service == nullptr) {
        usleep(pause);
        service = manager->checkService(IHardwareInfoService::descriptor);
    }
    if (service->pingBinder() != android::OK) abort();
}

Daemon::Daemon(bool logs) {
    setenv("TARQ_LOG", logs ? tarq::host::Board{gBoard}.log().c_str() : "/dev/null", 1);
    mPid = spawn({TARQD});
    awaitAnswer();
}

Daemon::Daemon(std::vector<std::string> command, int* output) {
    command.emplace_back(TARQD);
    mPid = spawn(command, output);
    awaitAnswer();
}

Daemon::~Daemon() {
    stop(mPid);
}

// Counts from the start of the program until a call is answered.
static void startTarqd(benchmark::State& state) {
    std::vector<double> micros;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        const Daemon daemon;
        micros.push_back(microsSince(start));
    }
    state.counters["value"] = median(std::move(micros));
}

// With the effect that the board shows at its start, which the LED driver takes record by record.
static void boot(benchmark::State& state) {
    property_set("vendor.boot.led_effect", "");
    startTarqd(state);
    property_set("vendor.boot.led_effect", kNoEffect);
}

static void startFloor(benchmark::State& state) {
    timeEach(state, [] { waitpid(spawn({EMPTY}), nullptr, 0); });
}

// Gives VmRSS of proc(5), in kB; 0 when there is no such process.
static double residentSize(pid_t pid) {
    const std::string path = "/proc/" + std::to_string(pid) + "/status";
    FILE* const file = fopen(path.c_str(), "re");
    char line[256];
    double size = 0;
    while (file != nullptr && fgets(line, sizeof(line), file) != nullptr) {
        if (sscanf(line, "VmRSS: %lf", &size) == 1) break;
    }
    if (file != nullptr) fclose(file);
    return size;
}

static void rssTarqd(benchmark::State& state) {
    const Daemon daemon;
    for (auto _ : state) state.counters["value"] = residentSize(daemon.pid());
}

static void rssFloor(benchmark::State& state) {
    const pid_t empty = spawn({EMPTY, "stay"});
    for (auto _ : state) {
        double before = -1;
        double size = 0;
        // It is there when it has stopped growing.
        while (size != before || size < 1000) {
            before = size;
            usleep(5000);
            size = residentSize(empty);
        }
        state.counters["value"] = size;
    }
    stop(empty);
}

BENCHMARK(startTarqd)->Name("start/tarqd")->Iterations(20);
BENCHMARK(boot)->Name("start/with the effect at the start")->Iterations(5);
BENCHMARK(startFloor)->Name("start/floor")->Iterations(20);
BENCHMARK(rssTarqd)->Name("rss/tarqd")->Iterations(1);
BENCHMARK(rssFloor)->Name("rss/floor")->Iterations(1);

}  // namespace bench
