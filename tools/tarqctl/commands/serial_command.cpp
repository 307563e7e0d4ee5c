// serial [-f]: the frames on the board's line to the Zigbee co-processor. The record of the line
// has chunks as they were read or written; each direction has a reader that puts the frames
// together.
#include <CLI/App.hpp>
#include <ostream>

#include "host/board/coprocessor/ash_reader.h"
#include "host/run/records.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/view/frame_text.h"
#include "tools/tarqctl/view/print_file.h"

namespace tarq::tools {

namespace {

class SerialPrinter {
  public:
    explicit SerialPrinter(const Session& session) : mSession(session) {}

    void take(const std::string& line) {
        host::SerialChunk chunk;
        if (!host::parseSerialLine(line, &chunk)) return;
        mLast = chunk.ms;
        print(chunk.isFromHost, of(chunk.isFromHost).reader.read(chunk.bytes));
    }

    void finish() {
        for (const bool isHost : {true, false}) print(isHost, of(isHost).reader.finish());
        if (mSession.json) return;
        for (const bool isHost : {true, false}) {
            mSession.out << host::senderName(isHost) << ": " + textOf(of(isHost).counts) + "\n"
                         << std::flush;
        }
    }

  private:
    struct Direction {
        board::ash::Reader reader = {};
        FrameCounts counts = {};
    };

    Direction& of(bool isHost) { return isHost ? mHost : mCoprocessor; }

    void print(bool isHost, const std::vector<board::ash::Frame>& frames) {
        for (const board::ash::Frame& frame : frames) {
            of(isHost).counts.add(frame);
            printFrame(mSession, frame, FrameOrigin{mLast, isHost});
        }
    }

    const Session& mSession;
    int64_t mLast = 0;  // time of the chunk that was taken last
    Direction mHost;
    Direction mCoprocessor;
};

}  // namespace

Run declareSerial(CLI::App& app) {
    const auto follows = std::make_shared<bool>(false);
    app.add_flag("-f", *follows,
                 "go on with what is added, until Ctrl-C or the board's end,\n"
                 "which is exit code 2");
    return [follows](Session& session) -> int {
        openBoard(session);
        SerialPrinter printer(session);
        printRecord(session, session.board.serialRecords(), "serial", *follows,
                    [&printer](const std::string& line) { printer.take(line); });
        printer.finish();
        return printed(session, *follows);
    };
}

}  // namespace tarq::tools
