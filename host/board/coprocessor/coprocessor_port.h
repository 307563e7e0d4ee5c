// The serial port behind which the co-processor is: a pseudo-terminal, and who answers on it.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/board/coprocessor/coprocessor.h"
#include "host/board/hardware/hardware.h"
#include "host/board/part.h"
#include "host/run/growing_file.h"

namespace tarq::board {

class SerialLine;

// open(), perform() and the destructor are for one thread at a time, the rest for any.
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
