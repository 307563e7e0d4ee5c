#include "host/board/serve.h"

#include <signal.h>
#include <stdio.h>

#include <optional>
#include <stdexcept>

#include "host/board/board_description.h"
#include "host/board/commands.h"
#include "host/board/control.h"
#include "host/board/file_system.h"
#include "host/board/running_board.h"

namespace tarq::board {

namespace fs = std::filesystem;

static sigset_t endings() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
    return signals;
}

void blockEndings() {
    const sigset_t signals = endings();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
}

// Mounts the hardware. Where this system refuses, the board goes on with less, and says so.
// Returns the reason, or "".
static std::string mount(Hardware& hardware, const fs::path& mountPoint, bool shared,
                         std::optional<FileSystem>* mounted) {
    std::string why;
    if (shared) {
        try {
            mounted->emplace(hardware, mountPoint, true);
            return "";
        } catch (const std::runtime_error& refusal) {
            why = refusal.what();
        }
    }
    try {
        mounted->emplace(hardware, mountPoint, false);
        if (shared) {
            fprintf(stderr, "virtual_board: other users have no way to the hardware: %s\n",
                    why.c_str());
        }
        return "";
    } catch (const std::runtime_error& refusal) {
        fprintf(stderr,
                "virtual_board: no FUSE, so there are plain files only, no GPIO, camera, fault or "
                "hold: %s\n",
                refusal.what());
        return refusal.what();
    }
}

void serve(const fs::path& folder, const fs::path& directory, bool shared) {
    Hardware hardware;
    fit(folder / "board.xml", hardware);
    RunningBoard board(directory, shared);
    PlainFiles files(board.directory());
    board.boot(folder);
    std::optional<FileSystem> mounted;
    const std::string withoutFuse = mount(hardware, board.directory() / "hw", shared, &mounted);
    if (mounted) board.linkHardware();
    Commands commands(hardware, files, withoutFuse);
    const ControlServer control(board.directory(), [&](const std::vector<std::string>& words) {
        commands.perform(words);
    });
    puts("ready");
    fflush(stdout);
    const sigset_t signals = endings();
    int received = 0;
    sigwait(&signals, &received);
}

}  // namespace tarq::board
