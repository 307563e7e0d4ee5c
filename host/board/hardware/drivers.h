// The kinds of files that drivers make of their hardware: those that only tell something, a camera,
// and the lines of the kernel's GPIO class in sysfs.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "host/board/hardware/node.h"

namespace tarq::board {

// A text that a driver makes up, such as the touch panel's; or a property of the device tree, cells
// or other bytes, which is set in hexadecimal.
class Attribute : public Node {
  public:
    enum Kind { kText, kProperty };
    Attribute(Kind kind, std::string bytes) : Node(0444), mKind(kind), mBytes(std::move(bytes)) {}

    off_t size() const override;
    int read(std::string* content) override;
    void set(const std::string& value) override;
    bool isPlain() const override { return true; }

  private:
    const Kind mKind;
    std::string mBytes;
};

// A video sub-device: nothing can be read from it, and one request tells which sensor it has. 192
// is the first number that V4L2 leaves to drivers (BASE_VIDIOC_PRIVATE), and the size is that of
// the module information of the camera drivers, in which the name comes first.
class Camera : public Node {
  public:
    // Throws std::invalid_argument for a name that does not fit into the answer.
    explicit Camera(const std::string& sensor) : Node(0660) { Camera::set(sensor); }
    int ioctl(unsigned request, void* argument) override;
    void set(const std::string& value) override;

  private:
    std::string mSensor;
};

// One line, whether its files are there or not. An input shows the level, an output what it drives;
// exports counts how often it was exported, which tells the lives of its files apart.
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

// in, out, or low and high, which are an output that drives this at once. A line that is told to be
// an output drives 0, as in the kernel.
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
