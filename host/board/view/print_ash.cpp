#include <errno.h>
#include <stdio.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "host/board/ash/ash_reader.h"
#include "host/board/ash/hex_text.h"
#include "host/board/view/ash_lines.h"
#include "host/board/view/serial_views.h"

namespace tarq::board {

static std::string contentOf(const std::string& file) {
    const auto all = [](std::istream& in) {
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    if (file == "-") return all(std::cin);
    std::ifstream in(file, std::ios::binary);
    std::string text;
    if (in) text = all(in);
    if (!in) throw std::runtime_error(file + ": cannot be read");
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
