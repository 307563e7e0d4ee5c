// What processes have, and what is said of it when they have too much.
#include <host/process_board.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

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

static int entriesOf(const std::string& directory) {
    std::error_code error;
    int count = 0;
    for (std::filesystem::directory_iterator entry(directory, error), end; entry != end;
         entry.increment(error)) {
        ++count;
    }
    return count;
}

Holdings holdingsOf(pid_t process) {
    const std::string files = "/proc/" + std::to_string(process);
    return {entriesOf(files + "/fd"), entriesOf(files + "/task")};
}

// Threads that come or go in between do not count.
double Starvation::of(std::initializer_list<pid_t> processes) {
    std::map<std::string, Times> threads;
    int64_t ran = 1;
    int64_t waited = 0;
    for (const pid_t process : processes) {
        const std::string tasks = "/proc/" + std::to_string(process) + "/task";
        std::error_code error;
        for (std::filesystem::directory_iterator task(tasks, error), end; task != end;
             task.increment(error)) {
            Times now = {};
            if (!(std::ifstream(task->path() / "schedstat") >> now.ranNs >> now.waitedNs)) continue;
            threads[task->path()] = now;
            const auto before = mThreads.find(task->path());
            if (before == mThreads.end()) continue;
            ran += now.ranNs - before->second.ranNs;
            waited += now.waitedNs - before->second.waitedNs;
        }
    }
    mThreads.swap(threads);
    return static_cast<double>(waited) / static_cast<double>(ran + waited);
}

size_t daemonHeap() {
    size_t bytes = 0;
    std::ifstream(tarq::host::processBoard().directory + "/heap") >> bytes;
    return bytes;
}

}  // namespace soak
