// What a user does to the board while it runs, and the socket by which it comes.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/board/hardware/hardware.h"
#include "host/board/hardware/plain_files.h"
#include "host/board/part.h"
#include "host/run/board.h"

namespace tarq::board {

// For one thread. It owns none of what it is about, which has to outlive it.
class Commands {
  public:
    // withoutFuse: why the hardware is not played, but stood in for by plain files; else empty.
    // Without FUSE it also writes the plain files that stand in.
    Commands(Hardware& hardware, PlainFiles& files, std::vector<std::shared_ptr<Part>> parts,
             std::string withoutFuse);

    // words: "set NODE VALUE", "fault NODE FAULT", "hold NODE", "release NODE", NODE being a name
    // or a path of the device; "trace", which is refused when the LEDs have none; or what is for
    // one of the parts. "board" tells the state of all of it. Returns what there is to tell, else
    // "". Throws std::exception with the reason when it was not done.
    std::string perform(const std::vector<std::string>& words);

  private:
    void carryOut(const std::vector<std::string>& words);
    std::string state() const;
    void requireKnown(const std::string& command, const std::string& node) const;
    void set(const std::string& node, const std::string& value);
    void requireTrace();
    template <typename Change>
    void disturb(const std::string& node, const Change& change);

    Hardware& mHardware;
    PlainFiles& mFiles;
    const std::vector<std::shared_ptr<Part>> mParts;
    const std::string mWithoutFuse;
};

// Performs the commands one after the other, in a thread of its own, as long as it exists. A
// command that takes its time, such as a key that nobody hears, keeps those behind it waiting. To
// be made last of all: from then on the board can be told something.
class ControlServer {
  public:
    // perform returns what there is to tell, and throws std::exception with the reason when it does
    // not do what it was told. Throws std::runtime_error when there can be no socket in the board's
    // directory.
    using Perform = std::function<std::string(const std::vector<std::string>& words)>;
    ControlServer(const host::Board& board, Perform perform);
    // Waits for the command that is being carried out.
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

  private:
    void serve() const;
    void answer(int connection) const;

    const Perform mPerform;
    const int mListener;
    std::thread mThread;
};

}  // namespace tarq::board
