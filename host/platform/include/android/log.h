// The Android log on a Linux host: `logcat -v threadtime` lines on standard error, or appended to
// the file that the environment variable TARQ_LOG names.
#pragma once

// They rise from unimportant to fatal. A line shows the first letter.
typedef enum android_LogPriority {
    ANDROID_LOG_UNKNOWN = 0,
    ANDROID_LOG_DEFAULT,
    ANDROID_LOG_VERBOSE,
    ANDROID_LOG_DEBUG,
    ANDROID_LOG_INFO,
    ANDROID_LOG_WARN,
    ANDROID_LOG_ERROR,
    ANDROID_LOG_FATAL,
    ANDROID_LOG_SILENT,
} android_LogPriority;

extern "C" {

// Writes one entry with one write(2), cut at 1023 bytes as on the device; every line of it gets the
// prefix. A null tag counts as an empty one. A fatal entry does not abort: who logs one does that
// itself. Returns the bytes that the entry would take up on the device, or -errno when it could not
// be written. May be called from any thread.
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
        __attribute__((__format__(printf, 3, 4)));
}
