// A part of the board that has commands of its own.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/run/control.h"

namespace tarq::board {

// Nothing is wrong, or why says what is: then throws it as std::invalid_argument.
inline void require(const std::string& why) {
    if (!why.empty()) throw std::invalid_argument(why);
}

// The receiver and the co-processor are such: what is set of them is not the content of a file. All
// is called by the one thread that takes commands.
class Part {
  public:
    virtual ~Part() = default;

    // What the command can be about: "receiver_rssi" for "set", "receiver" for "fault". Told to a
    // user who has named something that is not there.
    virtual std::vector<std::string> names(const std::string& command) const = 0;

    // Does it when the words are for this part: a command of its own, or "set NAME VALUE" and
    // "fault NAME FAULT" with one of its names. False when they are not. Throws std::exception with
    // the reason when it was not done.
    virtual bool perform(const std::vector<std::string>& words) = 0;

    // Adds how it is, or corrects what the files tell of it.
    virtual void tell(std::vector<host::NodeState>* nodes) const = 0;
};

}  // namespace tarq::board
