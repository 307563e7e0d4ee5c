// Files that only tell something.
#pragma once

#include <stdint.h>

#include <string>
#include <utility>

#include "host/board/node.h"

namespace tarq::board {

// How a user types bytes and numbers, and reads them. Throw std::invalid_argument.
std::string unescaped(const std::string& text);  // with \n \r \t \\ \xHH
std::string escaped(const std::string& bytes);   // back again
std::string fromHex(const std::string& digits);  // "00000003"
int32_t toInt32(const std::string& text);        // "-60", and nothing else around it

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

}  // namespace tarq::board
