#include "host/board/serve.h"

#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <optional>
#include <stdexcept>

#include "host/board/board_description.h"
#include "host/board/commands.h"
#include "host/board/control.h"
#include "host/board/endings.h"
#include "host/board/file_system.h"
#include "host/board/running_board.h"
#include "host/board/serial_record.h"

namespace tarq::board {

namespace fs = std::filesystem;

// The board ends with who started it, however that ends.
static void dieWithParent() {
    const pid_t parent = getppid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) raise(SIGTERM);
}

static void say(const char* what, const std::string& why) {
    fprintf(stderr, "virtual_board: %s: %s\n", what, why.c_str());
}

// Mounts the hardware; where this system refuses, the board goes on with less, and says so. The
// reason why nothing is mounted, or "".
static std::string mount(Hardware& hardware, const fs::path& mountPoint, bool shared,
                         std::optional<FileSystem>* mounted) {
    std::string why;
    for (const bool forAll : {true, false}) {
        if (forAll && !shared) continue;
        try {
            mounted->emplace(hardware, mountPoint, forAll);
            if (shared && !forAll) say("other users have no way to the hardware", why);
            return "";
        } catch (const std::runtime_error& refusal) {
            why = refusal.what();
        }
    }
    say("no FUSE, so there are plain files only, no GPIO, camera, fault, hold or trace of LEDs",
        why);
    return why;
}

void serve(const fs::path& folder, const fs::path& directory, bool shared) {
    const Endings endings;
    dieWithParent();
    Hardware hardware;
    Fitted fitted = fit(folder / "board.xml", hardware);
    RunningBoard board(directory, shared);
    PlainFiles files(board.directory());
    board.boot(folder);
    std::optional<FileSystem> mounted;
    const std::string withoutFuse = mount(hardware, board.directory() / "hw", shared, &mounted);
    if (mounted) board.linkHardware();
    if (mounted && fitted.ledTrace) fitted.ledTrace->open(traceOfLeds(board.directory()));
    std::vector<std::shared_ptr<Part>> parts;
    if (fitted.receiver) {
        fitted.receiver->open(board.directory());
        parts.push_back(std::move(fitted.receiver));
    }
    if (fitted.coprocessor) {
        fitted.coprocessor->open(recordOfSerial(board.directory()),
                                 mounted ? "" : board.directory() / "root/dev/ttyS3");
        parts.push_back(fitted.coprocessor);
    }
    Commands commands(hardware, files, parts, withoutFuse);
    const ControlServer control(board.directory(), [&](const std::vector<std::string>& words) {
        commands.perform(words);
    });
    puts("ready");
    fflush(stdout);
    endings.wait();
}

}  // namespace tarq::board
