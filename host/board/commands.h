// What a user does to the board while it runs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/board/hardware/hardware.h"
#include "host/board/hardware/plain_files.h"
#include "host/board/part.h"

namespace tarq::board {

// For one thread.
class Commands {
  public:
    // withoutFuse: why the hardware is not played, but stood in for by plain files; else empty.
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

}  // namespace tarq::board
