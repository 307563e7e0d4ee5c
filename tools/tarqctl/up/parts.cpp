// Each part is waited for before the next one is started: a directory of its own, the board in it,
// the daemon on the board. There is one place where this program waits, and whatever comes
// meanwhile, a signal or the end of a part, is thrown from there.
#include "tools/tarqctl/up/parts.h"

#include <errno.h>
#include <fcntl.h>
#include <host/process_board.h>
#include <string.h>
#include <unistd.h>

#include <deque>
#include <functional>

#include "host/run/file_systems.h"
#include "host/run/growing_file.h"
#include "tools/tarqctl/ask/known_services.h"
#include "tools/tarqctl/up/folder.h"

namespace tarq::tools {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

static constexpr seconds kBoardPatience{60};

namespace {

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

}  // namespace

// Files that the daemon will read are looked at between the two starts: by then the board has laid
// them out.
void Parts::start() {
    const std::string folder = boardFolder(mOptions.board);
    makeDirectory(folder);
    host::setProcessBoard(directory());
    startBoard(folder);
    tellBrokenFiles([this](const std::string& text) { say(text); });
    startDaemon();
}

// The directory goes last, when nobody writes to it any more.
void Parts::end(bool isUrgent) {
    const auto tell = [this](const std::string& text) { say(text); };
    // A command's own processes are left to it, but not by who asks for the end twice.
    if (endAll(mChildren, signals, isUrgent, tell)) killOrphans(guard.pid());
    mDirectory.reset();
}

void Parts::say(const std::string& text) const {
    mSession.err << "tarqctl: up: " + text + "\n";
}

void Parts::pause(int readable) const {
    const int signal = signals.wait(milliseconds(20), readable);
    if (signal != 0) throw Ended{128 + signal};
}

Child& Parts::add(Program program) {
    mChildren.push_back(std::make_unique<Child>(std::move(program), signals, guard));
    return *mChildren.back();
}

// This program, about this board.
std::vector<std::string> Parts::tarqctl(const std::vector<std::string>& words) const {
    std::vector<std::string> all = {"/proc/self/exe", "--board", directory().directory};
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

// It is named for the board, so that it can be told from those of other boards.
void Parts::makeDirectory(const std::string& folder) {
    Waiting waiting([this] { say("waiting for another start of yours, one begins at a time"); });
    mDirectory.emplace(fs::canonical(folder).filename(), mOptions.isShared, [&] {
        waiting.goOn();
        pause();
    });
}

// Once more, for the same board.
std::string Parts::again() const {
    const bool isUsual = mOptions.board == UpOptions().board;
    return "tarqctl up" + (isUsual ? "" : " --board " + shellQuoted(mOptions.board));
}

Failure Parts::partEnded(const std::string& who, const Child& part) const {
    return {"part_ended", "up", who + " " + part.howItEnded(), again()};
}

// The board says "ready" in a line on a pipe that is its standard output. When it ends before that
// the pipe ends as well, but the child tells how.
void Parts::startBoard(const std::string& folder) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw Failure{"no_pipe", "up", strerror(errno), "ulimit -n"};
    }
    std::vector<std::string> words = {programs / "virtual_board", "serve", folder,
                                      directory().directory};
    if (mOptions.isShared) words.emplace_back("--shared");
    if (mOptions.requiresFuse) words.emplace_back("--require-fuse");
    board = &add({"the board", words, true, -1, ends[1]});
    close(ends[1]);
    Waiting waiting([this] { say("waiting for the board to be ready"); });
    for (char byte = 0; byte != '\n';) {
        pause(ends[0]);
        while (byte != '\n' && read(ends[0], &byte, 1) == 1) continue;
        if (byte == '\n') break;
        if (board->hasEnded()) boardRefused();
        if (waiting.elapsed() > kBoardPatience) {
            throw Failure{"timeout", "up", "the board is not ready after 60 s", again()};
        }
        waiting.goOn();
    }
    close(ends[0]);
    mDirectory->letOthersStart();
}

// Who ends with that status has said why. JSON comes from nobody else.
void Parts::boardRefused() const {
    if (board->status() == kCouldNotAsk && !mSession.json) throw Ended{kCouldNotAsk};
    throw partEnded("the board did not start: it", *board);
}

// What cannot be written is missed by everything that comes later.
void Parts::requireRoom() const {
    const int error = host::writeError(directory());
    if (error == 0 || error == ENOENT) return;  // or the board has just ended
    throw Failure{"disk_full", "up", host::cannotBeWritten(directory(), error), "df -h"};
}

// They tell best why it did not come up, and the directory with the log is about to be removed.
void Parts::sayLastLines() const {
    std::deque<std::string> lines;
    host::GrowingFile log(directory().log());
    log.read([&](const std::string& line) {
        lines.push_back(line);
        if (lines.size() > 20) lines.pop_front();
    });
    if (!lines.empty()) say("these are the last lines of the daemon's log:");
    for (const std::string& line : lines) mSession.err << line + "\n";
}

// Whether the daemon serves is asked by another tarqctl, since a call that waits cannot be broken
// off in this process.
void Parts::startDaemon() {
    const host::Board& place = directory();
    daemon = &add({"the daemon",
                   {programs / "tarqd"},
                   true,
                   -1,
                   -1,
                   {{"TARQ_BOARD", place.directory}, {"TARQ_LOG", place.log()}}});
    Child& serves = add({"tarqctl wait", tarqctl({"--timeout", "900", "wait"})});
    Waiting waiting([this] {
        const std::string check = startupCheck();
        say("waiting for the daemon to serve" + (check.empty() ? "" : ": " + check));
    });
    while (!serves.hasEnded() && !daemon->hasEnded()) {
        pause();
        requireRoom();
        if (board->hasEnded()) throw partEnded(board->name(), *board);
        waiting.goOn();
    }
    requireRoom();
    if (serves.hasEnded() && serves.status() == 0) return;
    sayLastLines();
    if (daemon->hasEnded()) throw partEnded("the daemon did not start: it", *daemon);
    throw Failure{"no_daemon", "up", "the daemon does not serve", again()};
}

}  // namespace tarq::tools
