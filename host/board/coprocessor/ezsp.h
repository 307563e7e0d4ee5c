// EZSP, the commands and answers inside of the DATA frames of ASH:
//
//     sequence | frame control | id | parameters
//     sequence | frame control | ff | 00 | id | parameters      the extended form
//
// The frame control of an answer has its highest bit set, and its sequence is that of the command.
#pragma once

#include "host/board/coprocessor/ash_frame.h"

namespace tarq::board::ash {

// The two commands of the presence check are known by name, all others by their number.
struct Ezsp {
    uint8_t sequence = 0;
    bool isAnswer = false;
    uint8_t id = 0;
    std::string name = {};  // "version" or "query"; "" for all others
    Bytes parameters = {};
};

// content: that of a DATA frame, at least 3 bytes. It never fails: what is too short for the
// extended form is read as the other one.
Ezsp parseEzsp(const Bytes& content);

// Back again, for the id and form that the name has.
Bytes encodeEzsp(const Ezsp& ezsp);

// What the parameters say: "wants 7"; of an unknown id they themselves, "" when there are none.
// What an answer to the query does not reach reads as 0, as in the presence check.
std::string meaningOf(const Ezsp& ezsp);

// "6.10.3": four bits, four bits and a byte.
std::string versionText(unsigned version);

}  // namespace tarq::board::ash
