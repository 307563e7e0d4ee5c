#include "host/board/hardware/content.h"

#include <algorithm>

namespace tarq::board {

Content garbage(off_t size) {
    static constexpr char kBytes[] = "\xff\0\x01:,-*\x80%s\r\xc3(\x7f 9";
    return {std::string(kBytes, sizeof(kBytes) - 1), size};
}

size_t copy(const Content& content, off_t offset, char* buffer, size_t size) {
    if (offset >= content.size) return 0;
    const size_t count = std::min(size, static_cast<size_t>(content.size - offset));
    size_t place = static_cast<size_t>(offset) % content.bytes.size();
    for (size_t i = 0; i < count; ++i) {
        buffer[i] = content.bytes[place];
        if (++place == content.bytes.size()) place = 0;
    }
    return count;
}

}  // namespace tarq::board
