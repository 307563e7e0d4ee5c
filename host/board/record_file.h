// A file of JSON lines that can be followed while the board adds to it.
#pragma once

#include <filesystem>
#include <string>

namespace tarq::board {

// For one thread at a time.
class RecordFile {
  public:
    // what: of which lines are missing, should it come to that.
    explicit RecordFile(std::string what) : mWhat(std::move(what)) {}
    ~RecordFile();
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    // Begins the file. Throws std::system_error.
    void open(const std::filesystem::path& file);
    // One write, which anybody who follows the file gets whole. Before open() nothing is written.
    // That lines are missing is said once.
    void add(const std::string& line) const;

  private:
    const std::string mWhat;
    int mFd = -1;
    mutable bool mLacksLines = false;
};

}  // namespace tarq::board
