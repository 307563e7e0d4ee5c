// The bytes of a serial line: taken apart, whole and in two parts, and put into words. Where a read
// ends is chance, so it must make no difference; and no byte may be lost or told twice, damaged or
// not.
#include <stddef.h>
#include <stdint.h>

#include "host/board/coprocessor/ash_frame.h"
#include "tools/tarqctl/view/frames.h"

using namespace tarq::board::ash;
using tarq::tools::textOf;

// Each byte is in one frame; a good frame that is written again is read as the same.
static std::string read(const uint8_t* data, size_t size, size_t part) {
    Reader reader;
    std::vector<Frame> frames = reader.read(data, part);
    for (Frame& frame : reader.read(data + part, size - part)) frames.push_back(frame);
    for (Frame& frame : reader.finish()) frames.push_back(frame);
    std::string text;
    size_t bytes = 0;
    for (const Frame& frame : frames) {
        const std::string line = textOf(frame);
        text += line + "\n";
        bytes += frame.bytes.size();
        if (!frame.damage.empty()) continue;
        const std::vector<Frame> again = Reader().read(encode(frame));
        if (again.size() != 1 || textOf(again[0]) != line) __builtin_trap();
    }
    if (bytes != size) __builtin_trap();
    return text;
}

// The first byte decides where the stream is cut in two.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const size_t part = size > 0 ? data[0] % size : 0;
    if (read(data, size, 0) != read(data, size, part)) __builtin_trap();
    return 0;
}
