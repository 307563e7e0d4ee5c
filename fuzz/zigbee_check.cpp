// What a co-processor may answer: for each pause of the check a length and as many bytes. The
// answers arrive while the check sleeps, so nothing here takes time, and an input that is used up
// ends the check.
#include <fcntl.h>
#include <host/log_sink.h>
#include <setjmp.h>
#include <unistd.h>

#include <algorithm>

#include "common/pause.h"
#include "fuzz/board_files.h"
#include "zigbee/serial_port.h"
#include "zigbee/zigbee_check_module.h"

static int line;  // the other end of the port
static const uint8_t* next;
static const uint8_t* end;
static jmp_buf over;

// Too long an answer ends the daemon, and this conversation. The module holds nothing but its port.
extern "C" [[noreturn]] void __wrap_abort() {
    longjmp(over, 1);
}

// In place of the module's own: the answer is on the line when the check looks, and what the check
// has sent is taken off it, so that the line never fills up.
void pauseFor(std::chrono::milliseconds time) {
    if (time < std::chrono::seconds(1)) return;
    if (next == end) longjmp(over, 1);
    const auto size = std::min<ptrdiff_t>(*next, end - next - 1);
    const ssize_t written = write(line, next + 1, static_cast<size_t>(size));
    next += 1 + std::max<ssize_t>(written, 0);
    uint8_t sent[64];
    while (read(line, sent, sizeof(sent)) > 0) {
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static BoardFiles board;
    static const bool prepared = [] {
        tarq::host::setLogSink([](int, const char*, const std::string&) {});
        board.setProperty("ro.vendor.zigbee_check_enable", "true");
        line = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        if (grantpt(line) != 0 || unlockpt(line) != 0) return false;
        board.link(ptsname(line), "/dev/ttyS3");
        return true;
    }();
    next = data;
    end = data + size;
    if (prepared && setjmp(over) == 0) zigbee_check_module();
    if (serialPort >= 0) close(serialPort);
    return 0;
}
