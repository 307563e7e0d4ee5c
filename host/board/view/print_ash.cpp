#include <errno.h>
#include <stdio.h>

#include <memory>
#include <stdexcept>
#include <system_error>

#include "host/board/ash/ash_reader.h"
#include "host/board/ash/hex_text.h"
#include "host/board/view/ash_lines.h"
#include "host/board/view/serial_views.h"

namespace tarq::board {

static std::string contentOf(const std::string& name) {
    const bool isStandard = name == "-";
    const std::unique_ptr<FILE, int (*)(FILE*)> opened(
            isStandard ? nullptr : fopen(name.c_str(), "re"), fclose);
    FILE* const in = isStandard ? stdin : opened.get();
    std::string text;
    char chunk[4096];
    for (size_t size; in != nullptr && (size = fread(chunk, 1, sizeof(chunk), in)) > 0;) {
        text.append(chunk, size);
    }
    if (in == nullptr || ferror(in)) throw std::system_error(errno, std::system_category(), name);
    return text;
}

static ash::Bytes bytesOf(const std::string& file) {
    const std::string text = contentOf(file);
    try {
        return ash::bytesFromText(text);
    } catch (const std::invalid_argument& wrong) {
        throw std::runtime_error(file + ":" + wrong.what());
    }
}

void printAsh(const std::string& file, bool asJson) {
    ash::Reader reader;
    FrameCounts counts;
    std::vector<ash::Frame> frames = reader.read(bytesOf(file));
    for (ash::Frame& rest : reader.finish()) frames.push_back(std::move(rest));
    for (const ash::Frame& frame : frames) {
        counts.add(frame);
        puts((asJson ? jsonOf(frame, {}) : lineOf(frame, {})).c_str());
    }
    if (!asJson) puts(textOf(counts).c_str());
    if (fflush(stdout) != 0) throw std::system_error(errno, std::system_category(), "output");
}

}  // namespace tarq::board
