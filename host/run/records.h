// The records that a running board keeps, each a file of JSON lines that can be followed, and the
// clock of their times: CLOCK_MONOTONIC, in ms.
//
// What is written to the LED driver:
//
//     {"leds":12}
//     {"ms":81234,"attribute":"set_color","text":"3 ff8000"}
//     {"ms":81235,"attribute":"set_color","text":"ff8000","refused":true,
//      "why":"the colour is missing"}
//
// The first line tells how many LEDs there are. Each other one is a record, on one line, in the
// order in which the driver got them. Bytes that are no UTF-8 are replaced; only a refused one has
// any.
//
// A file of which lines were lost on a full disk has none of these any more, but the sign of that,
// see growing_file.h.
//
// What goes over the serial line, one line for each chunk as it was read or written:
//
//     {"ms":81234,"from":"host","bytes":"1ac038bc7e"}
//     {"ms":81235,"from":"coprocessor","bytes":"1ac1020b0a527e"}
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace tarq::host {

// Of this moment.
int64_t nowMs();

// "01-02 03:04:05.006": that moment as the log tells it, so that the two can be laid side by side.
// In the time zone of this process, as the log is in the daemon's. A clock that was set since this
// process looked at it first is not followed.
std::string logTime(int64_t ms);

// One write to an attribute, which is told by its name without the directory.
struct LedRecord {
    int64_t ms = 0;
    std::string attribute = {};
    std::string text = {};
    std::string whyRefused = {};  // "" when the driver took it
};

// Lines of the file, without the newline.
std::string firstLedLine(size_t leds);
std::string ledLine(const LedRecord& record);

// A line again: the first one, with a number of LEDs, or one with a record. False when it is none.
// Whoever follows the file meets the first one again when the board is switched on anew.
struct LedLine {
    size_t leds = 0;
    LedRecord record = {};
};
bool parseLedLine(const std::string& line, LedLine* parsed);

// Bytes of one direction as one read or write had them: frames may begin and end within them.
struct SerialChunk {
    int64_t ms = 0;
    bool isFromHost = false;
    std::vector<uint8_t> bytes = {};
};

// "host" and "coprocessor".
const char* senderName(bool isHost);

// A line of the file, without the newline, and back again. False when it is none.
std::string serialLine(const SerialChunk& chunk);
bool parseSerialLine(const std::string& line, SerialChunk* chunk);

}  // namespace tarq::host
