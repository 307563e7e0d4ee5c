// The plain files of a board: those below root/vendor and root/data, and without FUSE all others.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/board/hardware/node.h"
#include "host/run/board.h"

namespace tarq::board {

// What has been adopted is played by the hardware meanwhile: its place has a link, and the file
// waits beside it, so that it is not lost when the board is killed. For one thread.
class PlainFiles {
  public:
    // Gives back what a killed board had adopted; so does the destructor.
    explicit PlainFiles(const host::Board& board);
    ~PlainFiles();
    PlainFiles(const PlainFiles&) = delete;
    PlainFiles& operator=(const PlainFiles&) = delete;

    // True for a path below /vendor or /data, whether the file is there or not.
    static bool holds(const std::string& path);

    // path: the device's. They throw std::exception when there is no such file, or no way to it. A
    // reader sees the old content or the new one, and one that has the file open keeps the old one.
    void write(const std::string& path, const std::string& content);  // also makes a new one
    std::unique_ptr<Node> adopt(const std::string& path);
    // What somebody has put in the place of the link meanwhile stays, and what waited aside is gone
    // then.
    void giveBack(const std::string& path);

  private:
    std::filesystem::path next() const;  // what is to be moved into its place
    std::filesystem::path aside(const std::string& path) const;
    void giveAllBack();

    const host::Board mBoard;
};

}  // namespace tarq::board
