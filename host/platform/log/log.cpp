// An entry becomes lines as "logcat -v threadtime" prints them, and goes out in one write, so that
// those of several threads and processes never mix within a line. The first entry settles where
// they go: a file to append to, or standard error, with colours on a terminal. A sink takes
// them before they are formatted.
#include <android/log.h>
#include <errno.h>
#include <fcntl.h>
#include <host/log_sink.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>

#include "host/run/descriptors.h"

namespace {

constexpr size_t kTextSize = 1024;   // with its terminator; the device's liblog has the same
constexpr size_t kPrefixSize = 128;  // likewise; a longer tag is cut together with what follows it

struct Destination {
    int fd;
    bool coloured;
};

struct Style {
    char letter;
    const char* colour;  // an ANSI escape; empty for the terminal's own colour
};

std::mutex sinkMutex;
std::atomic<bool> hasSink{false};  // a process without one, such as the daemon, logs unlocked

// It is never destroyed, as threads log while the process ends.
tarq::host::LogSink& sink() {
    static tarq::host::LogSink& instance = *new tarq::host::LogSink();
    return instance;
}

// NO_COLOR as at no-color.org: set to anything but nothing it means none.
Destination openDestination() {
    const char* path = getenv("TARQ_LOG");
    if (path != nullptr && *path != '\0') {
        const int fd = tarq::host::aboveStandard(
                open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
        if (fd >= 0) return {fd, false};
        dprintf(STDERR_FILENO, "log: cannot append to %s (%s), logging here\n", path,
                strerror(errno));
    }
    const char* noColor = getenv("NO_COLOR");
    const bool refused = noColor != nullptr && *noColor != '\0';
    return {STDERR_FILENO, !refused && isatty(STDERR_FILENO) == 1};
}

Style styleOf(int priority) {
    switch (priority) {
        case ANDROID_LOG_VERBOSE:
            return {'V', ""};
        case ANDROID_LOG_DEBUG:
            return {'D', "\x1b[34m"};
        case ANDROID_LOG_INFO:
            return {'I', "\x1b[32m"};
        case ANDROID_LOG_WARN:
            return {'W', "\x1b[33m"};
        case ANDROID_LOG_ERROR:
            return {'E', "\x1b[31m"};
        case ANDROID_LOG_FATAL:
            return {'F', "\x1b[1;31m"};
        case ANDROID_LOG_SILENT:
            return {'S', ""};
        default:
            return {'?', ""};
    }
}

// What the prefix of a thread's entries keeps for a while, the local time for a second; asking each
// time would cost more than all the rest of an entry but its write.
struct ThreadState {
    pid_t pid;
    pid_t tid;
    time_t second;
    tm local;
};

// A child of a fork has other ids, and asks anew.
ThreadState& threadState() {
    static thread_local ThreadState state = {};
    static const int forgetInChild = pthread_atfork(nullptr, nullptr, [] { state = {}; });
    if (state.tid == 0 || forgetInChild != 0) state = {getpid(), gettid(), 0, {}};
    return state;
}

// Gives "MM-DD HH:MM:SS.mmm PID TID LETTER TAG: ", in local time.
std::string threadtimePrefix(char letter, const char* tag) {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    ThreadState& state = threadState();
    const tm& local = state.local;
    if (now.tv_sec != state.second) {
        localtime_r(&now.tv_sec, &state.local);
        state.second = now.tv_sec;
    }
    char prefix[kPrefixSize];
    snprintf(prefix, sizeof(prefix),
             "%02d-%02d %02d:%02d:%02d.%03ld %5d %5d %c %-8s: ", local.tm_mon + 1, local.tm_mday,
             local.tm_hour, local.tm_min, local.tm_sec, now.tv_nsec / 1000000, state.pid, state.tid,
             letter, tag);
    return prefix;
}

// Every line of the text with the prefix before it; one newline at the very end adds no line.
std::string threadtimeLines(int priority, const char* tag, const char* text, bool coloured) {
    const Style style = styleOf(priority);
    const bool dressed = coloured && *style.colour != '\0';
    const std::string prefix = threadtimePrefix(style.letter, tag);
    std::string lines;
    do {
        const char* end = strchrnul(text, '\n');
        if (dressed) lines += style.colour;
        lines += prefix;
        lines.append(text, end);
        if (dressed) lines += "\x1b[0m";
        lines += '\n';
        text = *end == '\n' ? end + 1 : end;
    } while (*text != '\0');
    return lines;
}

// False when there is none. The lock is held while it runs, so that it is called once at a time.
bool giveToSink(int priority, const char* tag, const char* text) {
    if (!hasSink.load(std::memory_order_acquire)) return false;
    const std::lock_guard<std::mutex> lock(sinkMutex);
    if (!sink()) return false;
    sink()(priority, tag, text);
    return true;
}

}  // namespace

namespace tarq::host {

void setLogSink(LogSink newSink) {
    const std::lock_guard<std::mutex> lock(sinkMutex);
    sink() = std::move(newSink);
    hasSink.store(static_cast<bool>(sink()), std::memory_order_release);
}

}  // namespace tarq::host

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    char text[kTextSize];
    va_list args;
    va_start(args, fmt);
    if (vsnprintf(text, sizeof(text), fmt, args) < 0) text[0] = '\0';
    va_end(args);

    const char* shownTag = tag != nullptr ? tag : "";
    if (!giveToSink(prio, tag, text)) {
        static const Destination destination = openDestination();
        const std::string lines = threadtimeLines(prio, shownTag, text, destination.coloured);
        // One write an entry: entries of several threads and processes never mix within a line.
        if (write(destination.fd, lines.data(), lines.size()) < 0) return -errno;
    }
    // What the entry takes up: a priority byte and both texts with their terminators.
    return static_cast<int>(1 + strlen(shownTag) + 1 + strlen(text) + 1);
}
