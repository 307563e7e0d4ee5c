// GPIO lines with the sysfs files of the kernel's GPIO class.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/board/hardware/node.h"

namespace tarq::board {

struct GpioLine {
    bool level = false;   // what is on the line from outside
    bool output = false;  // the boot loader may have left it so
    bool driven = false;  // what an output drives
    unsigned exports = 0;
    bool exported = false;
};

// By number. Shared by the nodes of the class.
using GpioLines = std::map<long, GpioLine>;

// "/sys/class/gpio/export", or "unexport": a number written makes the files of that line appear,
// or vanish.
class GpioExport : public Node {
  public:
    GpioExport(std::shared_ptr<GpioLines> lines, bool exports)
        : Node(0200), mLines(std::move(lines)), mExports(exports) {}
    int write(const std::string& record) override;

  private:
    const std::shared_ptr<GpioLines> mLines;
    const bool mExports;
};

// What the two files of an exported line have in common.
class GpioFile : public Node {
  public:
    GpioFile(std::shared_ptr<GpioLines> lines, long number)
        : Node(0644), mLines(std::move(lines)), mLine((*mLines)[number]) {}
    unsigned life() const override { return mLine.exported ? mLine.exports : 0; }

  private:
    const std::shared_ptr<GpioLines> mLines;

  protected:
    GpioLine& mLine;
};

class GpioDirection : public GpioFile {
  public:
    using GpioFile::GpioFile;
    int read(std::string* content) override;
    int write(const std::string& record) override;
};

// Set is the level from outside, "0" or "1", also while the line is not exported.
class GpioValue : public GpioFile {
  public:
    using GpioFile::GpioFile;
    int read(std::string* content) override;
    int write(const std::string& record) override;
    void set(const std::string& value) override;
};

}  // namespace tarq::board
