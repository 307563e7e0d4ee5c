// The Zigbee co-processor of the virtual board, without its line and without a clock. It answers
// RST, the EZSP command version and the query for its manufacturer and version; the host's
// acknowledgements need no answer.
#pragma once

#include <stdint.h>

#include <chrono>
#include <string>
#include <vector>

#include "host/board/ash/ash_frame.h"
#include "host/board/ash/ezsp.h"

namespace tarq::board {

// For one thread at a time.
class Coprocessor {
  public:
    // What can be wrong with its answers.
    enum class Fault {
        none,
        silent,              // there are none
        silent_after_reset,  // none but to RST
        late,                // 1.5 s after the question
        pieces,              // 3 bytes every 20 ms
        merged,              // twice in one write, the second time as transmitted again
        garbage,             // bytes of no frame right before
        too_long,            // again and again, more than 128 bytes in one write
        acknowledged,        // an acknowledgement of 4 bytes in front, in one write
        too_short,           // that acknowledgement and a flag, nothing else
        absent,              // there is no port
    };
    // Throws std::invalid_argument, with all that there are.
    static Fault faultNamed(const std::string& name);

    // "1002", "6.10.3": of the query's answer. Throw std::invalid_argument.
    void setManufacturer(const std::string& hex);
    void setVersion(const std::string& text);
    void setFault(Fault fault) { mFault = fault; }
    Fault fault() const { return mFault; }

    // One write to the line, that long after the question.
    struct Sending {
        std::chrono::milliseconds after{0};
        ash::Bytes bytes = {};
    };
    // All that a frame of the host brings about.
    std::vector<Sending> answer(const ash::Frame& question);

  private:
    ash::Frame answerToData(const ash::Frame& question);
    std::vector<Sending> disturbed(const ash::Frame& answer) const;

    uint16_t mManufacturer = 0;
    uint16_t mVersion = 0;  // major and minor in four bits each, patch in eight
    Fault mFault = Fault::none;
    uint8_t mNumber = 0;  // of the next DATA frame
};

}  // namespace tarq::board
