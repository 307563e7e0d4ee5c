// A board is switched on in this order: the directory is taken and made anew, the hardware of
// board.xml is mounted into it, the parts with commands of their own are opened, and only then
// commands are taken and "ready" is said. It is switched off in the opposite order by what the
// destructors do, when a signal tells it to or whoever started it ends.
#include "host/board/serve.h"

#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <optional>
#include <stdexcept>

#include "host/board/board_description.h"
#include "host/board/board_directory.h"
#include "host/board/commands.h"
#include "host/board/control_server.h"
#include "host/board/hardware/file_system.h"
#include "host/run/disk.h"

namespace tarq::board {

namespace fs = std::filesystem;

// From now on they are waited for and do nothing else, in all threads that are started later.
static sigset_t blockEndings() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

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
static std::string mount(Hardware& hardware, const fs::path& mountPoint,
                         const ServeOptions& options, std::optional<FileSystem>* mounted) {
    std::string why;
    for (const bool forAll : {true, false}) {
        if (forAll && !options.isShared) continue;
        try {
            mounted->emplace(hardware, mountPoint, forAll);
            if (options.isShared && !forAll) say("other users have no way to the hardware", why);
            return "";
        } catch (const std::runtime_error& refusal) {
            why = refusal.what();
        }
    }
    if (options.requiresFuse) {
        throw std::runtime_error("no FUSE: " + why +
                                 "; without --require-fuse there are plain files");
    }
    say("no FUSE, so there are plain files only, no GPIO, camera, fault, hold or trace of LEDs",
        why);
    return why;
}

// Opens what is fitted beside the files. Where no file system shows the serial port, a link does.
static std::vector<std::shared_ptr<Part>> openParts(const Fitted& fitted, const host::Board& board,
                                                    bool isMounted) {
    std::vector<std::shared_ptr<Part>> parts;
    if (isMounted && fitted.ledTrace) fitted.ledTrace->open(board.ledRecords());
    if (fitted.receiver) {
        fitted.receiver->open(board);
        parts.push_back(fitted.receiver);
    }
    if (fitted.coprocessor) {
        fitted.coprocessor->open(board.serialRecords(),
                                 isMounted ? "" : board.device("/dev/ttyS3"));
        parts.push_back(fitted.coprocessor);
    }
    return parts;
}

void serve(const fs::path& folder, const fs::path& path, const ServeOptions& options) {
    const sigset_t endings = blockEndings();
    dieWithParent();
    Hardware hardware;
    const Fitted fitted = fit(folder / "board.xml", hardware);
    BoardDirectory directory(path, options.isShared);
    const host::Board& board = directory.board();
    PlainFiles files(board);
    try {
        directory.boot(folder);
    } catch (const fs::filesystem_error&) {
        host::requireRoom(board);  // to the library a full disk may be an input/output error
        throw;
    }
    if (!fs::exists(folder / "board.xml")) {
        say((folder / "board.xml").c_str(), "there is no such file, so no hardware is fitted");
    }
    std::optional<FileSystem> mounted;
    const std::string withoutFuse = mount(hardware, board.hardware(), options, &mounted);
    if (mounted) directory.linkHardware();
    host::requireRoom(board);
    Commands commands(hardware, files, openParts(fitted, board, mounted.has_value()), withoutFuse);
    const ControlServer control(
            board, [&](const std::vector<std::string>& words) { return commands.perform(words); });
    puts("ready");
    fflush(stdout);
    int received = 0;
    sigwait(&endings, &received);
}

}  // namespace tarq::board
