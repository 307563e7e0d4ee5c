// The serial port behind which the co-processor is: a pseudo-terminal, and who answers on it. The
// thread of the line, that of the commands and those of the file system meet here.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/board/coprocessor/ash_frame.h"
#include "host/board/coprocessor/coprocessor.h"
#include "host/board/hardware/hardware.h"
#include "host/board/part.h"
#include "host/run/growing_file.h"

namespace tarq::board {

// Raw from the start. Whoever has the terminal open when this ends finds it hung up. A speed that a
// program sets is taken and means nothing.
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

// open(), perform() and the destructor are for one thread at a time, the rest for any. The line
// comes and goes with the fault "absent"; what the co-processor is stays.
class CoprocessorPort : public Part {
  public:
    explicit CoprocessorPort(const Coprocessor& coprocessor);
    ~CoprocessorPort() override;
    CoprocessorPort(const CoprocessorPort&) = delete;
    CoprocessorPort& operator=(const CoprocessorPort&) = delete;

    // Adds /dev/ttyS3, a link to the terminal, as "coprocessor".
    static void addNode(Hardware& hardware, std::shared_ptr<CoprocessorPort> port);

    // Opens the terminal and begins the record of the line. Where no file system shows the node,
    // link is to be a link to the terminal; else it is empty. Throws std::system_error.
    void open(const std::filesystem::path& record, const std::filesystem::path& link);

    std::vector<std::string> names(const std::string& command) const override;
    // Also with the port's path. "serial" asks whether there is one.
    bool perform(const std::vector<std::string>& words) override;
    // Also without FUSE the port is there: by a link.
    void tell(std::vector<host::NodeState>* nodes) const override;

    // Of the terminal: "/dev/pts/5"; "" while there is none.
    std::string terminal() const;

  private:
    void setPresent(bool isPresent);
    void setFault(const std::string& name);

    mutable std::mutex mMutex;  // of the next two
    Coprocessor mCoprocessor;
    std::string mTerminal;

    host::RecordFile mRecord{"virtual_board: the record of the serial line"};
    std::filesystem::path mLink;
    std::unique_ptr<SerialLine> mLine;
};

}  // namespace tarq::board
