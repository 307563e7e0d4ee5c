// ash [FILE]: the frames of a serial line to a Zigbee co-processor that are given in hexadecimal.
#include <CLI/App.hpp>
#include <ostream>
#include <stdexcept>

#include "host/board/coprocessor/ash_reader.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/user_input.h"
#include "tools/tarqctl/view/frame_text.h"

namespace tarq::tools {

static board::ash::Bytes bytesIn(const Session& session, const std::string& file) {
    std::string text;
    readLines(session, file, [&text](const std::string& line) { text += line + "\n"; });
    try {
        return bytesFromText(text);
    } catch (const std::invalid_argument& wrong) {
        throw session.failure("bad_hex", file + ":" + wrong.what(), "tarqctl ash --help");
    }
}

static int print(const Session& session, const std::string& file) {
    board::ash::Reader reader;
    FrameCounts counts;
    std::vector<board::ash::Frame> frames = reader.read(bytesIn(session, file));
    for (board::ash::Frame& rest : reader.finish()) frames.push_back(std::move(rest));
    for (const board::ash::Frame& frame : frames) {
        counts.add(frame);
        printFrame(session, frame, {});
    }
    if (!session.json) session.out << textOf(counts) + "\n" << std::flush;
    return kDone;
}

Run declareAsh(CLI::App& app) {
    const auto file = std::make_shared<std::string>("-");
    app.add_option("FILE", *file,
                   "bytes of two digits, with or without 0x, blanks and commas;\n"
                   "standard input when it is - or left out");
    return [file](Session& session) { return print(session, *file); };
}

}  // namespace tarq::tools
