// A daemon of the host platform with nothing but the echo service. It says "ready" when its name
// can be looked up, and with --hold starts its pool only after a line on standard input.
#include <binder/ProcessState.h>
#include <stdio.h>
#include <string.h>

#include "tests/echo_service.h"

using namespace android;

// What the service manager refuses, the daemon survives.
static bool refusesBadRegistrations() {
    const sp<IServiceManager> manager = defaultServiceManager();
    const sp<IBinder> service = new BBinder;
    const std::u16string longName(128, u'x');
    return manager->addService(String16("none"), nullptr) == -1 &&
           manager->addService(String16(""), service) == -1 &&
           manager->addService(String16(longName.c_str()), service) == -1 &&
           manager->addService(String16(longName.c_str(), 127), service) == OK;
}

int main(int argc, char** argv) {
    const sp<ProcessState> process = ProcessState::self();
    if (!refusesBadRegistrations()) return 3;
    defaultServiceManager()->addService(echo::kLiving, new echo::Living);
    defaultServiceManager()->addService(echo::kName, new echo::EchoService);
    puts("ready");
    fflush(stdout);
    if (argc > 1 && strcmp(argv[1], "--hold") == 0) getchar();
    process->startThreadPool();
    IPCThreadState::self()->joinThreadPool();
}
