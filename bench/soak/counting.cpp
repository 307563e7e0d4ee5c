// What processes have, and what is said of it when they have too much.
#include <host/process_board.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "bench/soak/soak.h"

namespace soak {

Shared* shared = nullptr;

// One write a line, so that those of several processes do not mix.
void finding(const char* who, const char* format, ...) {
    constexpr int kPrinted = 10;
    static std::atomic<int> told{0};
    ++shared->findings;
    if (++told > kPrinted) return;
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    dprintf(STDOUT_FILENO, "%s: %s\n", who, text);
}

int64_t nowMs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

void pauseMs(int ms) {
    usleep(static_cast<useconds_t>(ms) * 1000);
}

static std::vector<std::string> entriesOf(const std::string& directory) {
    std::error_code error;
    std::vector<std::string> paths;
    for (std::filesystem::directory_iterator entry(directory, error), end; entry != end;
         entry.increment(error)) {
        paths.push_back(entry->path());
    }
    return paths;
}

Holdings holdingsOf(pid_t process) {
    const std::string files = "/proc/" + std::to_string(process);
    return {entriesOf(files + "/fd").size(), entriesOf(files + "/task").size()};
}

// A thread that comes or goes in between does not count.
int64_t Starvation::waitedUs(pid_t process) {
    std::map<std::string, int64_t> threads;
    int64_t most = 0;
    for (const std::string& thread : entriesOf("/proc/" + std::to_string(process) + "/task")) {
        int64_t ranNs = 0;
        int64_t waitedNs = 0;
        if (!(std::ifstream(thread + "/schedstat") >> ranNs >> waitedNs)) continue;
        threads[thread] = waitedNs;
        const auto before = mWaitedNs.find(thread);
        if (before != mWaitedNs.end()) most = std::max(most, waitedNs - before->second);
    }
    mWaitedNs.swap(threads);
    return most / 1000;
}

size_t daemonHeap() {
    size_t bytes = 0;
    std::ifstream(tarq::host::processBoard().directory + "/heap") >> bytes;
    return bytes;
}

}  // namespace soak
