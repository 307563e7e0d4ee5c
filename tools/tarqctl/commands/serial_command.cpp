// serial [-f]: the frames on the board's line to the Zigbee co-processor. The record of the line
// has chunks as they were read or written. Frames are put together anew from these, by direction,
// and what is left over at the end is told as damaged.
#include <CLI/App.hpp>

#include "host/run/records.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/follow.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/view/frames.h"

namespace tarq::tools {

static void print(FramePrinter* printer, const std::string& line) {
    host::SerialChunk chunk;
    if (!host::parseSerialLine(line, &chunk)) return;
    const FrameOrigin origin = {host::senderName(chunk.isFromHost), chunk.ms,
                                host::logTime(chunk.ms)};
    printer->take(origin, chunk.bytes);
}

Run declareSerial(CLI::App& app) {
    const auto follows = std::make_shared<bool>(false);
    addFollow(app, follows.get());
    return [follows](Session& session) -> int {
        openBoard(session);
        FramePrinter printer(session, {host::senderName(true), host::senderName(false)});
        printRecord(session, session.board.serialRecords(), "serial", *follows,
                    [&printer](const std::string& line) { print(&printer, line); });
        printer.finish();
        return printed(session, *follows);
    };
}

}  // namespace tarq::tools
