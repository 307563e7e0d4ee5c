// What `up` starts and ends. They are started one by one and ended in the opposite order, whatever
// happens in between.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/tarqctl/session.h"
#include "tools/tarqctl/up/child.h"
#include "tools/tarqctl/up/signals.h"
#include "tools/tarqctl/up/up.h"
#include "tools/tarqctl/up/users_boards.h"

namespace tarq::tools {

// Thrown where there is nothing more to be said: after a signal, or what a part has said itself.
struct Ended {
    int status;             // that `up` ends with
    bool isUrgent = false;  // it was asked for twice
};

// For one thread. Throws a Failure or Ended wherever it does not get on.
class Parts {
  public:
    Parts(const Session& session, const UpOptions& options)
        : mSession(session), mOptions(options) {}

    // A directory, the board in it, and the daemon on the board, until it serves.
    void start();
    // One more process, ended before those that were started earlier.
    Child& add(Program program);
    // All of them, the last one first, and the directory. isUrgent: at once.
    void end(bool isUrgent);

    // The words that start this program for this board.
    std::vector<std::string> tarqctl(const std::vector<std::string>& words) const;
    const host::Board& directory() const { return mDirectory->board(); }
    // How a part ended, and how to start anew.
    Failure partEnded(const std::string& who, const Child& part) const;

    // Waits a moment, for signals too. Throws Interrupted for a signal that is to end everything.
    // readable: a descriptor of which anything to read ends the wait, too.
    void pause(int readable = -1) const;
    // It goes to standard error at once, with the name of the command in front.
    void say(const std::string& text) const;

    const std::filesystem::path programs =
            std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const Guard guard;  // is there before the signals are taken, which it leaves alone
    const Signals signals;
    Child* board = nullptr;
    Child* daemon = nullptr;

  private:
    void makeDirectory(const std::string& folder);
    void startBoard(const std::string& folder);
    [[noreturn]] void boardRefused() const;
    void startDaemon();
    void requireRoom() const;
    void sayLastLines() const;
    std::string again() const;

    const Session& mSession;
    const UpOptions& mOptions;
    std::optional<BoardDirectory> mDirectory;
    std::vector<std::unique_ptr<Child>> mChildren;  // in the order of their start
};

}  // namespace tarq::tools
