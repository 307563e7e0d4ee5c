// While the command runs, or the log is shown, board and daemon are watched. Whatever ends it, a
// signal or a part that ended, leads to the same end: all that was started is ended.
#include "tools/tarqctl/up/up.h"

#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <optional>
#include <utility>

#include "host/run/file_systems.h"
#include "tools/tarqctl/up/parts.h"

namespace tarq::tools {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

class Up {
  public:
    Up(const Session& session, const UpOptions& options)
        : mSession(session), mParts(session, options) {}

    int run(const std::vector<std::string>& command);

  private:
    int showLog();
    int runCommand(const std::vector<std::string>& words);
    void watch();
    void sayMeanwhile(const std::string& text, const std::string& hint);
    void passOn(int signal, bool isHeard, Child& command);

    const Session& mSession;
    Parts mParts;
    std::vector<std::string> mMeanwhile;  // what was said while the command ran
    bool mSaidBoard = false;              // that it ended
    bool mSaidDaemon = false;
    bool mSaidFull = false;
    bool mSaidGoesOn = false;                       // of the command, after a signal
    steady_clock::time_point mLastLook = {};        // at the disk
    std::optional<steady_clock::time_point> mTold;  // the command, to end
};

void Up::sayMeanwhile(const std::string& text, const std::string& hint) {
    mParts.say(text + "; see " + hint);
    mMeanwhile.push_back(text);
}

// What ended or is full is said once, while the command goes on.
void Up::watch() {
    const std::string& directory = mParts.directory().directory;
    for (auto [part, isSaid] :
         {std::pair(mParts.board, &mSaidBoard), {mParts.daemon, &mSaidDaemon}}) {
        if (*isSaid || !part->hasEnded()) continue;
        *isSaid = true;
        sayMeanwhile(part->name() + " " + part->howItEnded(),
                     "tarqctl --board " + shellQuoted(directory) + " log");
    }
    if (mSaidFull || mSaidBoard || steady_clock::now() - mLastLook < seconds(1)) return;
    mLastLook = steady_clock::now();
    const int error = host::writeError(mParts.directory());
    if (error == 0 || error == ENOENT) return;  // or the board is just ending
    mSaidFull = true;
    sayMeanwhile(host::cannotBeWritten(mParts.directory(), error) +
                         "; until then lines of the log and records are lost",
                 "df -h " + shellQuoted(directory));
}

int Up::showLog() {
    mParts.say("the board runs in " + mParts.directory().directory +
               ", Ctrl-C ends it; in another terminal: " + (mParts.programs / "tarqctl").string() +
               " services");
    Child& log = mParts.add(
            {"tarqctl log", mParts.tarqctl({"log", "-f"}), false, STDIN_FILENO, STDOUT_FILENO});
    // It ends with the board as well, of which nothing may be known yet.
    for (int looksAfterwards = 5; looksAfterwards > 0;) {
        if (log.hasEnded()) --looksAfterwards;
        mParts.pause();
        for (Child* part : {mParts.board, mParts.daemon}) {
            if (part->hasEnded()) throw mParts.partEnded(part->name(), *part);
        }
        watch();
    }
    return log.status();
}

// What a signal means is the command's to decide, as a debugger takes Ctrl-C for its own; but two
// within a short time are for all. One that is stopped does not hear of it, and would keep
// everybody else.
void Up::passOn(int signal, bool isHeard, Child& command) {
    const auto now = steady_clock::now();
    if (signal != 0) {
        const bool isAgain = mTold && now - *mTold > kOneWish;
        if (isAgain && !command.hasEnded()) throw Ended{128 + signal, true};
        if (!isHeard) command.signal(signal);
        if (!mTold) mTold = now;
    }
    if (!mTold) return;
    if (now - *mTold > seconds(2) && !std::exchange(mSaidGoesOn, true)) {
        mParts.say(command.name() + " goes on; Ctrl-C twice ends all at once");
    }
    if (now - *mTold < kPatience) return;
    mTold.reset();
    if (!command.isStopped()) return;
    mParts.say(command.name() + " is stopped and did not end within " +
               std::to_string(kPatience.count()) + " s, and is killed");
    command.signal(SIGKILL);
}

int Up::runCommand(const std::vector<std::string>& words) {
    const char* path = getenv("PATH");
    const std::string programs = mParts.programs.string() + (path != nullptr ? ":" : "");
    Child& command = mParts.add({words[0],
                                 words,
                                 false,
                                 STDIN_FILENO,
                                 STDOUT_FILENO,
                                 {{"TARQ_BOARD", mParts.directory().directory},
                                  {"PATH", programs + (path != nullptr ? path : "")}}});
    const bool isOnTerminal = isatty(STDIN_FILENO) == 1;
    while (!command.hasEnded()) {
        const int signal = mParts.signals.wait(milliseconds(20));
        // Ctrl-C reaches the command by itself.
        passOn(signal, signal == SIGINT && isOnTerminal, command);
        watch();
    }
    // A command that had the whole screen has taken away with it what was said there.
    if (isatty(STDERR_FILENO) == 1) {
        for (const std::string& text : mMeanwhile) mParts.say("meanwhile " + text);
    }
    return command.status();
}

// What went wrong is printed before the end, which may take its time.
int Up::run(const std::vector<std::string>& command) {
    int status = kCouldNotAsk;
    bool isUrgent = false;
    try {
        mParts.start();
        status = command.empty() ? showLog() : runCommand(command);
    } catch (const Ended& end) {
        status = end.status;
        isUrgent = end.isUrgent;
    } catch (Failure& failure) {
        // Who has come by scripts/run has no tarqctl on PATH.
        const size_t up = failure.hint.find("tarqctl up");
        if (up != std::string::npos) {
            failure.hint.replace(up, strlen("tarqctl"), shellQuoted(mParts.programs / "tarqctl"));
        }
        printFailure(failure, mSession.json, mSession.out, mSession.err);
        status = failure.exitCode;
    }
    mParts.end(isUrgent);
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
