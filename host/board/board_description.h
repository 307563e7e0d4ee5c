// board.xml: what is fitted to a board.
#pragma once

#include <filesystem>

#include "host/board/coprocessor/coprocessor_port.h"
#include "host/board/hardware/hardware.h"
#include "host/board/leds/led_nodes.h"
#include "host/board/receiver/receiver.h"

namespace tarq::board {

// What is fitted beside the files, yet to be opened. Null where there is none. The nodes that a
// part shows are in the hardware already, and share what is theirs with it.
struct Fitted {
    std::shared_ptr<LedTrace> ledTrace;
    std::shared_ptr<Receiver> receiver;
    std::shared_ptr<CoprocessorPort> coprocessor;
};

// Adds the nodes of all parts that the file names; none without a file. Throws std::runtime_error,
// "FILE:LINE: what is wrong", for anything in it that is not understood. Nothing is opened yet, so
// a board that may not run here leaves nothing behind. A line number is that of the element,
// counted from 1.
Fitted fit(const std::filesystem::path& file, Hardware& hardware);

}  // namespace tarq::board
