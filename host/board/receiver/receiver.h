// The receiver of remote keys. Programs reach it through their libradiokey, as
// host/receiver_packets.h says.
#pragma once

#include <stdint.h>

#include <filesystem>
#include <mutex>
#include <optional>
#include <thread>

#include "host/board/part.h"
#include "host/run/board.h"

namespace tarq::board {

class Receiver : public Part {
  public:
    // status: of the chip, whatever that means to its users. rssiDBm: what it hears without a key.
    Receiver(int32_t status, int32_t rssiDBm);
    ~Receiver() override;
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    // Switches it on. Throws std::system_error.
    void open(const host::Board& board);

    std::vector<std::string> names() const override;
    // Also "key VALUE1 VALUE2 VALUE3 FREQUENCY [RSSI]", one reception, which is refused when no
    // program hears it. Waits up to a second for a program that takes none.
    bool perform(const std::vector<std::string>& words) override;

  private:
    enum class Fault { none, mute, absent };
    struct Listener {
        int fd;
        std::optional<int32_t> frequency;  // none: off
    };

    void serve();
    void wake() const;
    // All others with mMutex held.
    void takeWhatCame();
    bool take(Listener* listener) const;
    void listen();
    void hangUp();
    void tellState() const;
    void set(const std::string& name, int32_t value);
    void setFault(const std::string& name);
    void receive(const std::vector<int32_t>& key);

    std::mutex mMutex;
    std::filesystem::path mBoard;
    int mSocketFd = -1;  // nobody can connect
    const int mWake;     // an eventfd, for the thread
    std::vector<Listener> mListeners;
    int32_t mStatus;
    int32_t mRssiDBm;
    Fault mFault = Fault::none;
    bool mEnding = false;
    std::thread mThread;
};

}  // namespace tarq::board
