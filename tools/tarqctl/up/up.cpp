// The parts are started in order, and each is waited for: a directory of its own, the board in it,
// the daemon on the board. Then the command runs, or the log is shown, while all three are watched.
// There is one place where this program waits, and whatever ends it meanwhile, a signal or a part
// that ended, leads to the same end: all that was started is ended, the last one first.
#include "tools/tarqctl/up/up.h"

#include <fcntl.h>
#include <host/process_board.h>
#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <deque>
#include <filesystem>
#include <memory>
#include <optional>

#include "host/run/disk.h"
#include "host/run/growing_file.h"
#include "tools/tarqctl/ask/known_services.h"
#include "tools/tarqctl/up/ending.h"
#include "tools/tarqctl/up/folder.h"
#include "tools/tarqctl/up/guard.h"
#include "tools/tarqctl/up/signals.h"
#include "tools/tarqctl/up/users_boards.h"

namespace tarq::tools {

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr seconds kBoardPatience{60};

// Thrown where it is waited, but while a command runs, which decides what a signal means to it.
struct Interrupted {
    int signal;
};

// Says once, after two seconds, what is waited for.
class Waiting {
  public:
    explicit Waiting(std::function<void()> say) : mSay(std::move(say)) {}
    void goOn() {
        if (mSaid || elapsed() < seconds(2)) return;
        mSaid = true;
        mSay();
    }
    steady_clock::duration elapsed() const { return steady_clock::now() - mBegin; }

  private:
    const std::function<void()> mSay;
    const steady_clock::time_point mBegin = steady_clock::now();
    bool mSaid = false;
};

class Up {
  public:
    Up(const Session& session, const UpOptions& options) : mSession(session), mOptions(options) {}

    int run(const std::vector<std::string>& command);

  private:
    void say(const std::string& text) const { mSession.err << "tarqctl: up: " + text + "\n"; }
    void pause(int readable = -1) const;
    Child& start(Program program);
    std::string again() const;
    Failure partEnded(const std::string& who, const Child& part) const;
    std::vector<std::string> tarqctl(const std::vector<std::string>& words) const;
    int runAll(const std::vector<std::string>& command);

    void makeDirectory(const std::string& folder);
    void startBoard(const std::string& folder);
    void startDaemon();
    int showLog();
    int runCommand(const std::vector<std::string>& words);

    void requireRoom() const;
    void sayLastLines() const;
    void watch();
    void passOn(int signal, Child& command);

    const Session& mSession;
    const UpOptions& mOptions;
    const fs::path mPrograms = fs::read_symlink("/proc/self/exe").parent_path();
    const Guard mGuard;
    const Signals mSignals;
    std::optional<BoardDirectory> mDirectory;
    std::vector<std::unique_ptr<Child>> mChildren;  // in the order of their start
    Child* mBoard = nullptr;
    Child* mDaemon = nullptr;
    bool mSaidBoard = false;  // that it ended
    bool mSaidDaemon = false;
    bool mSaidFull = false;
    steady_clock::time_point mLastLook = {};        // at the disk
    std::optional<steady_clock::time_point> mTold;  // the command, to end
};

void Up::pause(int readable) const {
    const int signal = mSignals.wait(milliseconds(20), readable);
    if (signal != 0) throw Interrupted{signal};
}

Child& Up::start(Program program) {
    mChildren.push_back(std::make_unique<Child>(std::move(program), mSignals, mGuard));
    return *mChildren.back();
}

// This program, about this board.
std::vector<std::string> Up::tarqctl(const std::vector<std::string>& words) const {
    std::vector<std::string> all = {"/proc/self/exe", "--board", mDirectory->board().directory};
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

void Up::makeDirectory(const std::string& folder) {
    Waiting waiting([this] { say("waiting for another start of yours, one begins at a time"); });
    mDirectory.emplace(fs::canonical(folder).filename(), mOptions.isShared, [&] {
        waiting.goOn();
        pause();
    });
}

// Once more, for the same board.
std::string Up::again() const {
    const bool isUsual = mOptions.board == UpOptions().board;
    return "tarqctl up" + (isUsual ? "" : " --board " + shellQuoted(mOptions.board));
}

Failure Up::partEnded(const std::string& who, const Child& part) const {
    return {"part_ended", "up", who + " " + part.howItEnded(), again()};
}

void Up::startBoard(const std::string& folder) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw Failure{"no_pipe", "up", strerror(errno), "ulimit -n"};
    }
    std::vector<std::string> words = {mPrograms / "virtual_board", "serve", folder,
                                      mDirectory->board().directory};
    if (mOptions.isShared) words.emplace_back("--shared");
    if (mOptions.requiresFuse) words.emplace_back("--require-fuse");
    mBoard = &start({"the board", words, true, -1, ends[1]});
    close(ends[1]);
    Waiting waiting([this] { say("waiting for the board to be ready"); });
    for (char byte = 0; byte != '\n';) {
        pause(ends[0]);
        while (byte != '\n' && read(ends[0], &byte, 1) == 1) continue;
        if (byte == '\n') break;
        if (mBoard->hasEnded()) throw partEnded("the board did not start: it", *mBoard);
        if (waiting.elapsed() > kBoardPatience) {
            throw Failure{"timeout", "up", "the board is not ready after 60 s", again()};
        }
        waiting.goOn();
    }
    close(ends[0]);
    mDirectory->letOthersStart();
}

// What cannot be written is missed by everything that comes later.
void Up::requireRoom() const {
    const int error = host::writeError(mDirectory->board());
    if (error == 0 || error == ENOENT) return;  // or the board has just ended
    throw Failure{"disk_full", "up",
                  mDirectory->board().directory + " cannot be written: " + strerror(error),
                  "TMPDIR=DIR tarqctl up, with room in DIR"};
}

void Up::sayLastLines() const {
    std::deque<std::string> lines;
    host::GrowingFile log(mDirectory->board().log());
    log.read([&](const std::string& line) {
        lines.push_back(line);
        if (lines.size() > 20) lines.pop_front();
    });
    if (!lines.empty()) say("these are the last lines of the daemon's log:");
    for (const std::string& line : lines) mSession.err << line + "\n";
}

void Up::startDaemon() {
    const host::Board& board = mDirectory->board();
    mDaemon = &start({"the daemon",
                      {mPrograms / "tarqd"},
                      true,
                      -1,
                      -1,
                      {{"TARQ_BOARD", board.directory}, {"TARQ_LOG", board.log()}}});
    Child& serves = start({"tarqctl wait", tarqctl({"--timeout", "900", "wait"})});
    Waiting waiting([this] {
        const std::string check = startupCheck();
        say("waiting for the daemon to serve" + (check.empty() ? "" : ": " + check));
    });
    while (!serves.hasEnded() && !mDaemon->hasEnded()) {
        pause();
        requireRoom();
        if (mBoard->hasEnded()) throw partEnded(mBoard->name(), *mBoard);
        waiting.goOn();
    }
    requireRoom();
    if (serves.hasEnded() && serves.status() == 0) return;
    sayLastLines();
    if (mDaemon->hasEnded()) throw partEnded("the daemon did not start: it", *mDaemon);
    throw Failure{"no_daemon", "up", "the daemon does not serve", again()};
}

// What ended or is full is said once, while the command goes on.
void Up::watch() {
    const std::string& directory = mDirectory->board().directory;
    for (auto [part, isSaid] : {std::pair(mBoard, &mSaidBoard), {mDaemon, &mSaidDaemon}}) {
        if (*isSaid || !part->hasEnded()) continue;
        *isSaid = true;
        say(part->name() + " " + part->howItEnded() + "; see tarqctl --board " +
            shellQuoted(directory) + " log");
    }
    if (mSaidFull || mSaidBoard || steady_clock::now() - mLastLook < seconds(1)) return;
    mLastLook = steady_clock::now();
    const int error = host::writeError(mDirectory->board());
    if (error == 0 || error == ENOENT) return;  // or the board is just ending
    mSaidFull = true;
    say(directory + " cannot be written: " + strerror(error) +
        "; from now on lines of the log and records are lost; see df -h " + shellQuoted(directory));
}

int Up::showLog() {
    say("the board runs in " + mDirectory->board().directory +
        ", Ctrl-C ends it; in another terminal: " + (mPrograms / "tarqctl").string() + " services");
    Child& log = start({"tarqctl log", tarqctl({"log", "-f"}), false, STDIN_FILENO, STDOUT_FILENO});
    // It ends with the board as well, of which nothing may be known yet.
    for (int looksAfterwards = 5; looksAfterwards > 0;) {
        if (log.hasEnded()) --looksAfterwards;
        pause();
        for (Child* part : {mBoard, mDaemon}) {
            if (part->hasEnded()) throw partEnded(part->name(), *part);
        }
        watch();
    }
    return log.status();
}

// One that is stopped does not hear of it, and would keep everybody else.
void Up::passOn(int signal, Child& command) {
    if (signal != 0) {
        command.signal(signal);
        mTold = steady_clock::now();
    }
    if (!mTold || steady_clock::now() - *mTold < kPatience || !command.isStopped()) return;
    say(command.name() + " is stopped and did not end within 5 s, and is killed");
    command.signal(SIGKILL);
    mTold.reset();
}

int Up::runCommand(const std::vector<std::string>& words) {
    const char* path = getenv("PATH");
    const std::string programs = mPrograms.string() + (path != nullptr ? ":" : "");
    Child& command = start({words[0],
                            words,
                            false,
                            STDIN_FILENO,
                            STDOUT_FILENO,
                            {{"TARQ_BOARD", mDirectory->board().directory},
                             {"PATH", programs + (path != nullptr ? path : "")}}});
    const bool isOnTerminal = isatty(STDIN_FILENO) == 1;
    while (!command.hasEnded()) {
        const int signal = mSignals.wait(milliseconds(20));
        // Ctrl-C reaches the command by itself.
        passOn(signal == SIGINT && isOnTerminal ? 0 : signal, command);
        watch();
    }
    return command.status();
}

int Up::runAll(const std::vector<std::string>& command) {
    const std::string folder = boardFolder(mOptions.board);
    makeDirectory(folder);
    host::setProcessBoard(mDirectory->board());
    startBoard(folder);
    tellBrokenFiles([this](const std::string& text) { say(text); });
    startDaemon();
    return command.empty() ? showLog() : runCommand(command);
}

// What went wrong is printed before the end, which may take its time.
int Up::run(const std::vector<std::string>& command) {
    int status = kCouldNotAsk;
    try {
        status = runAll(command);
    } catch (const Interrupted& by) {
        status = 128 + by.signal;
    } catch (Failure& failure) {
        // Who has come by scripts/run has no tarqctl on PATH.
        const size_t up = failure.hint.find("tarqctl up");
        if (up != std::string::npos) {
            failure.hint.replace(up, strlen("tarqctl"), shellQuoted(mPrograms / "tarqctl"));
        }
        printFailure(failure, mSession.json, mSession.out, mSession.err);
        status = failure.exitCode;
    }
    endAll(mChildren, mSignals, [this](const std::string& text) { say(text); });
    mDirectory.reset();
    return status;
}

}  // namespace

int runUp(const Session& session, const UpOptions& options,
          const std::vector<std::string>& command) {
    // What the parts have started becomes a child of this process when they end, and not of one
    // that may never look after it.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    return Up(session, options).run(command);
}

}  // namespace tarq::tools
