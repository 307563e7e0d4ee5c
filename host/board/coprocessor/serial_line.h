// A pseudo-terminal whose other end is answered by a thread.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "host/board/coprocessor/ash_reader.h"
#include "host/board/coprocessor/coprocessor.h"
#include "host/run/growing_file.h"

namespace tarq::board {

// Raw from the start. Whoever has the terminal open when this ends finds it hung up.
class SerialLine {
  public:
    using Answer = std::function<std::vector<Coprocessor::Sending>(const ash::Frame& question)>;

    // answer: called by the thread. record: outlives this. Throws std::system_error.
    SerialLine(Answer answer, const host::RecordFile& record);
    ~SerialLine();
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    // "/dev/pts/5"
    const std::string& terminal() const { return mTerminal; }

  private:
    struct Due {
        std::chrono::steady_clock::time_point time;
        ash::Bytes bytes;
    };

    void closeAll() const;
    void run();
    void receive();
    void send(const ash::Bytes& bytes) const;
    int untilNext() const;
    void sendWhatIsDue();

    const Answer mAnswer;
    const host::RecordFile& mRecord;
    int mMaster = -1;
    int mSlave = -1;  // held, so that the master never reads a hang-up between two users
    int mEnd = -1;    // readable when the thread is to end
    std::string mTerminal;
    ash::Reader mReader;
    std::vector<Due> mDue;  // in the order of their times
    std::thread mThread;
};

}  // namespace tarq::board
