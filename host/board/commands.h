// What a user does to the board while it runs.
#pragma once

#include <string>
#include <vector>

#include "host/board/coprocessor_port.h"
#include "host/board/hardware.h"
#include "host/board/plain_files.h"

namespace tarq::board {

// For one thread.
class Commands {
  public:
    // withoutFuse: why the hardware is not played, but stood in for by plain files; else empty.
    // coprocessor: null when none is fitted.
    Commands(Hardware& hardware, PlainFiles& files, std::string withoutFuse,
             std::shared_ptr<CoprocessorPort> coprocessor);

    // words: "set NODE VALUE", "fault NODE FAULT", "hold NODE", "release NODE", NODE being a name
    // or a path of the device; "trace", which is refused when the LEDs have none; or "serial",
    // likewise of the co-processor. Throws std::exception with the reason when it was not done.
    void perform(const std::vector<std::string>& words);

  private:
    void set(const std::string& node, const std::string& value);
    void requireTrace();
    template <typename Change>
    void disturb(const std::string& node, const Change& change);

    Hardware& mHardware;
    PlainFiles& mFiles;
    const std::string mWithoutFuse;
    const std::shared_ptr<CoprocessorPort> mCoprocessor;
};

}  // namespace tarq::board
