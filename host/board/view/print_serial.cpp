#include <errno.h>
#include <host/growing_file.h>
#include <stdio.h>

#include <optional>
#include <stdexcept>
#include <system_error>

#include "host/board/ash/ash_reader.h"
#include "host/board/control.h"
#include "host/board/endings.h"
#include "host/board/serial_record.h"
#include "host/board/view/ash_lines.h"
#include "host/board/view/serial_views.h"

namespace tarq::board {

namespace fs = std::filesystem;

namespace {

// One direction.
struct Direction {
    ash::Reader reader = {};
    FrameCounts counts = {};
};

class SerialPrinter {
  public:
    explicit SerialPrinter(bool asJson) : mAsJson(asJson) {}

    void take(const std::string& line) {
        const SerialChunk chunk = parseSerialLine(line);
        mLast = chunk.ms;
        print(chunk.isFromHost, directionOf(chunk.isFromHost).reader.read(chunk.bytes));
    }

    void finish() {
        for (const bool isHost : {true, false}) print(isHost, directionOf(isHost).reader.finish());
        if (mAsJson) return;
        for (const bool isHost : {true, false}) {
            printf("%s: %s\n", senderName(isHost), textOf(directionOf(isHost).counts).c_str());
        }
    }

  private:
    Direction& directionOf(bool isHost) { return isHost ? mHost : mCoprocessor; }

    void print(bool isHost, const std::vector<ash::Frame>& frames) {
        for (const ash::Frame& frame : frames) {
            directionOf(isHost).counts.add(frame);
            const FrameOrigin origin = {mLast, isHost};
            puts((mAsJson ? jsonOf(frame, origin) : lineOf(frame, origin)).c_str());
        }
    }

    const bool mAsJson;
    int64_t mLast = 0;  // time of the chunk that was taken last
    Direction mHost;
    Direction mCoprocessor;
};

fs::path requireRecord(const fs::path& board) {
    fs::path record = recordOfSerial(board);
    if (fs::exists(record)) return record;
    std::string reason;
    const bool shouldBe = ask(board, {"serial"}, &reason);
    throw std::runtime_error(record.string() + ": " + (shouldBe ? "is not there" : reason));
}

void flush() {
    if (fflush(stdout) != 0) throw std::system_error(errno, std::system_category(), "output");
}

}  // namespace

void printSerial(const fs::path& board, bool follows, bool asJson) {
    host::GrowingFile record(requireRecord(board));
    std::optional<Endings> endings;
    if (follows) endings.emplace();
    SerialPrinter printer(asJson);
    do {
        record.read([&printer](const std::string& line) { printer.take(line); });
        flush();
    } while (follows && !endings->comeWithin(std::chrono::milliseconds(20)));
    if (!follows) printer.finish();
    flush();
}

}  // namespace tarq::board
