// One command at a time, from the question who calls until the command has ended: the lock is held
// for all of it, refusals included. The system shell runs the line, and the first part of its
// output is the answer. What a command writes beyond that meets a closed pipe, and it is waited for
// all the same.
#include "shell/ShellService.h"

#include <android/log.h>
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <utils/String8.h>

namespace com::tarq::shell {

using android::IBinder;
using android::IPCThreadState;
using android::IServiceManager;
using android::sp;
using android::String16;
using android::String8;
using android::binder::Status;

static constexpr char kTag[] = "ShellService";

// They are AID_ROOT and AID_SYSTEM of the platform's android_filesystem_config.h.
static constexpr uid_t kRootUid = 0;
static constexpr uid_t kSystemUid = 1000;

// How much of a command's output is read at most, in bytes. The answer has one less.
static constexpr size_t kOutputSize = 1024;

// The whole uid counts: the system uid of a secondary user (101000) is somebody else.
static bool callerMayExecute() {
    const uid_t uid = IPCThreadState::self()->getCallingUid();
    return uid == kRootUid || uid == kSystemUid;
}

// Fills the buffer until it is full, the output ends or a read fails.
static void readOutput(FILE* stream, char* position, size_t room) {
    while (room >= 1) {
        const size_t count = fread(position, 1, room, stream);
        if (count < 1) {
            if (feof(stream) == 0 && ferror(stream) != 0) {
                __android_log_print(ANDROID_LOG_ERROR, kTag, "execute command ferror\n");
            }
            break;
        }
        position += count;
        room -= count;
    }
}

ShellService::ShellService() {
    pthread_mutex_init(&mLock, nullptr);
}

ShellService::~ShellService() {
    pthread_mutex_destroy(&mLock);
}

void ShellService::instantiate() {
    __android_log_print(ANDROID_LOG_INFO, kTag, "instantiate.....\n");
    const sp<IServiceManager> manager = android::defaultServiceManager();
    const sp<IBinder> service = new ShellService();
    manager->addService(descriptor, service, false, IServiceManager::DUMP_FLAG_PRIORITY_DEFAULT);
}

Status ShellService::executeCommand(const String16& command, std::vector<String16>* output,
                                    int32_t* result) {
    *result = 0;
    pthread_mutex_lock(&mLock);
    const Status status = executeLocked(command, output);
    pthread_mutex_unlock(&mLock);
    return status;
}

// Every refusal is the same -1 to the caller; the log tells which it was.
Status ShellService::executeLocked(const String16& command, std::vector<String16>* output) {
    if (!callerMayExecute()) {
        __android_log_print(ANDROID_LOG_ERROR, kTag, "execute command permission denied\n");
        return Status::fromStatusT(-1);
    }
    const String8 line(command);
    if (line.string() == nullptr) {  // a text without storage; an empty one has some and is run
        __android_log_print(ANDROID_LOG_ERROR, kTag, "cmd is null");
        return Status::fromStatusT(-1);
    }
    // Close-on-exec: whatever else this process starts must not keep the pipe open.
    FILE* stream = popen(line.string(), "re");
    if (stream == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kTag, "execute command failed:%s\n",
                            strerror(errno));
        return Status::fromStatusT(-1);
    }
    // Zeroed, so that the output ends where the command's did; in a full buffer the last byte read
    // gives way to the terminator.
    char text[kOutputSize] = {};
    readOutput(stream, text, sizeof(text));
    text[sizeof(text) - 1] = '\0';
    output->push_back(String16(text));
    pclose(stream);
    return Status::ok();
}

}  // namespace com::tarq::shell
