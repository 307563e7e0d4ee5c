// board.xml: what is fitted to a board.
#pragma once

#include <filesystem>

#include "host/board/coprocessor_port.h"
#include "host/board/hardware.h"
#include "host/board/led_trace.h"
#include "host/board/receiver/receiver.h"

namespace tarq::board {

// What is fitted beside the files, yet to be opened. Null where there is none.
struct Fitted {
    std::shared_ptr<LedTraceWriter> ledTrace;
    std::shared_ptr<Receiver> receiver;
    std::shared_ptr<CoprocessorPort> coprocessor;
};

// Adds the nodes of all parts that the file names; none without a file. Throws std::runtime_error,
// "FILE:LINE: what is wrong", for anything in it that is not understood.
Fitted fit(const std::filesystem::path& file, Hardware& hardware);

}  // namespace tarq::board
