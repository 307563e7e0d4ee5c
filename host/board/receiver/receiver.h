// The receiver of remote keys. Programs reach it through their libradiokey, as
// host/run/receiver_wire.h says. It has no thread: all that it does is done by whoever sends it a
// command.
#pragma once

#include <stdint.h>

#include <optional>

#include "host/board/part.h"
#include "host/run/board.h"
#include "host/run/faults.h"

namespace tarq::board {

// For one thread at a time.
class Receiver : public Part {
  public:
    // status: of the chip, whatever that means to its users. rssiDBm: what it hears without a key.
    Receiver(int32_t status, int32_t rssiDBm) : mStatus(status), mRssiDBm(rssiDBm) {}
    ~Receiver() override;
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    // Switches it on. Throws std::exception. From then on programs find it, also those that were
    // started earlier.
    void open(const host::Board& board);

    std::vector<std::string> names(const std::string& command) const override;
    // Also "key VALUE1 VALUE2 VALUE3 FREQUENCY [RSSI]", one reception, which is refused when no
    // program hears it. Waits half a second for a program that listens, and a second for one that
    // takes none.
    bool perform(const std::vector<std::string>& words) override;
    void tell(std::vector<host::NodeState>* nodes) const override;

  private:
    void tellState() const;
    void receive(const std::vector<int32_t>& key);
    int connectToListener(int32_t frequency) const;
    std::optional<int32_t> tunedFrequency() const;
    std::string whyNobodyListens(int32_t frequency) const;

    host::Board mBoard;
    int mSocket = -1;
    int32_t mStatus;
    int32_t mRssiDBm;
    host::ReceiverFault mFault = host::ReceiverFault::kNone;
};

}  // namespace tarq::board
