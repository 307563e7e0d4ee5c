// A camera's sub-device node, which tells about the module through a request of the driver's own.
#pragma once

#include <string>

#include "host/board/hardware/node.h"

namespace tarq::board {

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
