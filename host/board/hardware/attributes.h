// Files that only tell something.
#pragma once

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

class Camera : public Node {
  public:
    // Throws std::invalid_argument for a name that does not fit into the answer.
    explicit Camera(const std::string& sensor) : Node(0660) { Camera::set(sensor); }
    int ioctl(unsigned request, void* argument) override;
    void set(const std::string& value) override;

  private:
    std::string mSensor;
};

}  // namespace tarq::board
