// An entry becomes lines as "logcat -v threadtime" prints them, and goes out in one write. Where
// the destination has no room it is lost, as on the device, and a warning says so as soon as there
// is room again. A sink takes entries before they are formatted.
#include <android/log.h>
#include <errno.h>
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

#include "host/platform/log/destination.h"

namespace {

constexpr size_t kTextSize = 1024;   // with its terminator; the device's liblog has the same
constexpr size_t kPrefixSize = 128;  // likewise; a longer tag is cut together with what follows it

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

int writeEntry(int priority, const char* tag, const char* text) {
    tarq::host::LogDestination& destination = tarq::host::LogDestination::self();
    const auto notice = [&](unsigned count) {
        const std::string told = std::to_string(count) + " log line" + (count > 1 ? "s" : "");
        return threadtimeLines(ANDROID_LOG_WARN, "tarq-host", (told + " lost").c_str(),
                               destination.isColoured());
    };
    const std::string lines = threadtimeLines(priority, tag, text, destination.isColoured());
    return destination.put(lines, notice);
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
        const int error = writeEntry(prio, shownTag, text);
        if (error != 0) return error;
    }
    // What the entry takes up: a priority byte and both texts with their terminators.
    return static_cast<int>(1 + strlen(shownTag) + 1 + strlen(text) + 1);
}
