// Files that only tell something.
#pragma once

#include <filesystem>
#include <string>

#include "host/board/node.h"

namespace tarq::board {

// "type:x\nid:1\n" as a user types it -> the bytes; \n \r \t \\ \xHH are understood. Throws
// std::invalid_argument for any other escape.
std::string unescaped(const std::string& text);

// "00000003" -> the bytes. Throws std::invalid_argument.
std::string fromHex(const std::string& digits);

// A text that a driver makes up, such as the touch panel's.
class TextAttribute : public Node {
  public:
    explicit TextAttribute(std::string text) : Node(0444), mText(std::move(text)) {}
    int read(std::string* content) override;
    void set(const std::string& value) override { mText = unescaped(value); }
    bool isPlain() const override { return true; }

  private:
    std::string mText;
};

// A property of the device tree: cells or any other bytes, set as hexadecimal digits.
class Cells : public Node {
  public:
    explicit Cells(std::string bytes) : Node(0444), mBytes(std::move(bytes)) {}
    off_t size() const override { return static_cast<off_t>(mBytes.size()); }
    int read(std::string* content) override;
    void set(const std::string& value) override { mBytes = fromHex(value); }
    bool isPlain() const override { return true; }

  private:
    std::string mBytes;
};

}  // namespace tarq::board
