// The virtual board, which only plays until it is told to end; what is done to it meanwhile, and
// what it has recorded, is asked of it by tarqctl. It is switched on in this order: the directory
// is taken and made anew, the hardware of board.xml is mounted into it, the parts with commands of
// their own are opened, and only then commands are taken and "ready" is said. It is switched off in
// the opposite order by what the destructors do.
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "host/board/board_description.h"
#include "host/board/board_directory.h"
#include "host/board/commands.h"
#include "host/board/hardware/file_system.h"
#include "host/run/descriptors.h"
#include "host/run/file_systems.h"
#include "host/run/nearest.h"

namespace tarq::board {

namespace fs = std::filesystem;

struct ServeOptions {
    bool isShared = false;      // other users may talk to the daemon, and look at the files
    bool requiresFuse = false;  // without it the board does not start
};

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
// reason why nothing is mounted, or "". Another user may look into a mount only where the system
// allows it (user_allow_other), so a shared board is tried with that first and then without.
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

// Plays the board that the folder describes, in the directory, until SIGTERM, SIGINT or SIGHUP
// comes, or whoever started this process ends. Prints "ready" once programs can be started on it.
// To be called while there is no other thread, since what it does to signals is for all that come.
// Throws std::exception when the board cannot be started.
static void serve(const fs::path& folder, const fs::path& path, const ServeOptions& options) {
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

static constexpr int kCouldNot = 2;  // play the board, or understand the command line

// Whichever file it was that had no room, none has. The system's own words name one of many files,
// and not the disk that they are on.
static int serveBoard(const std::string& folder, const std::string& directory,
                      const tarq::board::ServeOptions& options) {
    try {
        tarq::board::serve(folder, directory, options);
        return 0;
    } catch (const std::system_error& error) {
        const int code = error.code().value();
        if (code != ENOSPC && code != EDQUOT) throw;
        fprintf(stderr, "virtual_board: %s\nhint: df -h\n",
                tarq::host::cannotBeWritten({directory}, code).c_str());
    }
    return kCouldNot;
}

static int run(int argc, char** argv) {
    CLI::App app{"Plays the hardware of a device on a plain Linux machine.", "virtual_board"};
    app.footer("What is done to a running board is a command of tarqctl.");
    app.require_subcommand(1);
    std::string folder;
    std::string directory;
    tarq::board::ServeOptions options;
    CLI::App* serve = app.add_subcommand(
            "serve",
            "Plays a board until it is told to end; prints \"ready\" when programs can be started "
            "with TARQ_BOARD=DIR");
    serve->add_option("BOARD", folder, "the folder that describes it")->required();
    serve->add_option("DIR", directory, "where it runs")->required();
    serve->add_flag("--shared", options.isShared,
                    "lets other users of this machine talk to the board's daemon");
    app.set_version_flag("--version", "virtual_board " TARQ_VERSION, "Print the version and exit");
    serve->add_flag("--require-fuse", options.requiresFuse,
                    "does not start without FUSE, where else plain files stand for the hardware");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        fputs(app.help().c_str(), stdout);
        return 0;
    } catch (const CLI::CallForVersion& version) {
        puts(version.what());
        return 0;
    } catch (const CLI::ParseError& error) {
        const bool isWord = argc > 1 && argv[1][0] != '-';
        const CLI::App& asked = app.got_subcommand(serve) ? *serve : app;
        std::string why = tarq::host::noSuchOption(asked, {argv + 1, argv + argc});
        if (why.empty()) why = error.what();
        if (argc == 1) why = "no command is given; there is serve";
        if (isWord && !app.got_subcommand(serve)) {
            why = "'" + std::string(argv[1]) +
                  "': " + tarq::host::noSuchCommand(argv[1], {"serve"});
        }
        fprintf(stderr,
                "virtual_board: %s\nhint: virtual_board --help\n"
                "usage: virtual_board serve [OPTIONS] BOARD DIR\n",
                why.c_str());
        return kCouldNot;
    }
    return serveBoard(folder, directory, options);
}

// Exit codes: 0 ended as told, else kCouldNot.
int main(int argc, char** argv) {
    tarq::host::openStandardDescriptors();
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        fprintf(stderr, "virtual_board: %s\n", error.what());
    }
    return kCouldNot;
}
