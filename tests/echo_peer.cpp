// A client process of the echo service, for the tests that need one to be killed, stopped, another
// user or forked. Says on standard output how far it is.
#include <binder/ProcessState.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "tests/echo_service.h"

using namespace android;

// Prints what it is called with.
class Printer : public BBinder {
  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        if (code != 1) return BBinder::onTransact(code, data, reply, flags);
        printf("fired %d\n", data.readInt32());
        return OK;
    }
};

static void printCaller(const sp<IBinder>& service) {
    Parcel data;
    Parcel reply;
    service->transact(echo::WHO, data, &reply);
    const int32_t uid = reply.readInt32();
    const bool ownPid = reply.readInt32() == getpid();
    printf("uid %d, %s pid\n", uid, ownPid ? "own" : "foreign");
}

// A child of fork shares the connections: it is refused, and the parent is served on.
static int forkAndCall(const sp<IBinder>& service) {
    printCaller(service);
    const pid_t child = fork();
    if (child == 0) _exit(echo::call(service, echo::WHO) == INVALID_OPERATION ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    puts(status == 0 ? "child refused" : "child served");
    printCaller(service);
    return 0;
}

// Linked in the place of recv, so that a call can end with its process while it waits.
static thread_local int receptionsLeft = -1;
extern "C" ssize_t __real_recv(int fd, void* buffer, size_t size, int flags);
extern "C" ssize_t __wrap_recv(int fd, void* buffer, size_t size, int flags) {
    if (--receptionsLeft == 0) raise(SIGKILL);
    return __real_recv(fd, buffer, size, flags);
}

int main(int argc, char** argv) {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    const std::string mode = argc > 1 ? argv[1] : "";
    const sp<IBinder> service = echo::find();
    if (service == nullptr) return 3;
    if (mode == "fork") return forkAndCall(service);
    if (mode == "who") {
        printCaller(service);
        if (argc > 2 && seteuid(static_cast<uid_t>(atoi(argv[2]))) == 0) printCaller(service);
    } else if (mode == "keep") {
        ProcessState::self()->startThreadPool();
        echo::keep(service, new Printer);
        puts("kept");
        for (;;) pause();
    } else if (mode == "unheard") {  // without a pool
        for (int i = 0; i < 1000; ++i) {
            echo::keep(service, new echo::Living);
            echo::call(service, echo::FORGET);
        }
        echo::call(service, echo::WHO);
        printf("%d of 1000 live\n", echo::Living::count().load());
    } else if (mode == "wait") {
        echo::call(service, echo::WAIT);
    } else if (mode == "live") {  // as the user; gone as soon as the call is sent
        const sp<IBinder> living = defaultServiceManager()->getService(echo::kLiving);
        if (argc > 3 && setuid(static_cast<uid_t>(atoi(argv[3]))) != 0) return 4;
        const std::string kind = argc > 2 ? argv[2] : "";
        const bool isOneWay = kind == "oneway" || kind == "unread";
        if (kind == "unread") {  // events that this process does not take
            echo::keep(service, new BBinder);
            echo::call(service, echo::FIRE, {3, 1});
        }
        Parcel data;
        data.writeInt32(0);
        receptionsLeft = 2;  // the connection's welcome, and then the reply
        living->transact(1, data, nullptr, isOneWay ? echo::kOneWay : 0);
        _exit(0);
    }
    return 0;
}
