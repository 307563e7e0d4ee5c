// The Zigbee co-processor of the virtual board, without its line and without a clock. It answers
// RST, the EZSP command version and the query for its manufacturer and version; the host's
// acknowledgements need no answer.
#pragma once

#include <stdint.h>

#include <chrono>
#include <string>
#include <vector>

#include "host/board/coprocessor/ash_frame.h"
#include "host/board/coprocessor/ezsp.h"
#include "host/run/faults.h"

namespace tarq::board {

// For one thread at a time. What it is and what goes wrong with it holds for the next question;
// answers that wait on the line already stay as they are.
class Coprocessor {
  public:
    // "1002", "6.10.3": of the query's answer. Throw std::invalid_argument.
    void setManufacturer(const std::string& hex);
    void setVersion(const std::string& text);
    void setFault(host::CoprocessorFault fault) { mFault = fault; }
    host::CoprocessorFault fault() const { return mFault; }

    // One write to the line, that long after the question.
    struct Sending {
        std::chrono::milliseconds after{0};
        ash::Bytes bytes = {};
    };
    // All that a frame of the host brings about. In the order in which they are to be written; none
    // for a question that is damaged, unknown, or needs no answer.
    std::vector<Sending> answer(const ash::Frame& question);

  private:
    ash::Frame answerToData(const ash::Frame& question);
    std::vector<Sending> disturbed(const ash::Frame& answer) const;

    uint16_t mManufacturer = 0;
    uint16_t mVersion = 0;  // major and minor in four bits each, patch in eight
    host::CoprocessorFault mFault = host::CoprocessorFault::kNone;
    uint8_t mNumber = 0;  // of the next DATA frame
};

}  // namespace tarq::board
