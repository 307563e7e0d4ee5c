// What can go wrong with the parts of a board, by the names that people give it: the board plays
// them, the tools list them.
#pragma once

#include <stddef.h>

#include <string>

namespace tarq::host {

template <typename Fault>
struct FaultName {
    const char* name;
    Fault fault;
};

// A file of the hardware.
enum class NodeFault {
    kNone,
    kAbsent,      // not there
    kEmpty,       // nothing to read, no answer
    kGarbage,     // bytes that are no text: zeros, 0xff, no newline
    kHuge,        // 100 MB of them
    kDirectory,   // looks like one
    kUnreadable,  // refuses to be opened for reading, also by root
    kUnwritable,  // refuses to be opened for writing, also by root
    kSlow,        // takes a second for each call
};
inline constexpr FaultName<NodeFault> kNodeFaults[] = {
        {"absent", NodeFault::kAbsent},
        {"empty", NodeFault::kEmpty},
        {"garbage", NodeFault::kGarbage},
        {"huge", NodeFault::kHuge},
        {"directory", NodeFault::kDirectory},
        {"unreadable", NodeFault::kUnreadable},
        {"unwritable", NodeFault::kUnwritable},
        {"slow", NodeFault::kSlow},
        {"none", NodeFault::kNone},
};

// The receiver of remote keys.
enum class ReceiverFault {
    kNone,
    kMute,    // hears nothing
    kAbsent,  // is not there
};
inline constexpr FaultName<ReceiverFault> kReceiverFaults[] = {
        {"mute", ReceiverFault::kMute},
        {"absent", ReceiverFault::kAbsent},
        {"none", ReceiverFault::kNone},
};

// The answers of the Zigbee co-processor.
enum class CoprocessorFault {
    kNone,
    kSilent,            // there are none
    kSilentAfterReset,  // none but to RST
    kLate,              // 1.5 s after the question
    kPieces,            // 3 bytes every 20 ms
    kMerged,            // twice in one write, the second time as transmitted again
    kGarbage,           // bytes of no frame right before
    kTooLong,           // again and again, more than 128 bytes in one write
    kAcknowledged,      // an acknowledgement of 4 bytes in front, in one write
    kTooShort,          // that acknowledgement and a flag, nothing else
    kAbsent,            // there is no port
};
inline constexpr FaultName<CoprocessorFault> kCoprocessorFaults[] = {
        {"silent", CoprocessorFault::kSilent},
        {"silent_after_reset", CoprocessorFault::kSilentAfterReset},
        {"late", CoprocessorFault::kLate},
        {"pieces", CoprocessorFault::kPieces},
        {"merged", CoprocessorFault::kMerged},
        {"garbage", CoprocessorFault::kGarbage},
        {"too_long", CoprocessorFault::kTooLong},
        {"acknowledged", CoprocessorFault::kAcknowledged},
        {"too_short", CoprocessorFault::kTooShort},
        {"absent", CoprocessorFault::kAbsent},
        {"none", CoprocessorFault::kNone},
};

// The parts with commands of their own, by the names that they have in board.xml as well.
constexpr char kReceiver[] = "receiver";
constexpr char kCoprocessor[] = "coprocessor";

// "absent, empty, none"
template <typename Fault, size_t N>
std::string namesOf(const FaultName<Fault> (&table)[N]) {
    std::string names;
    for (const FaultName<Fault>& row : table) {
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    return names;
}

template <typename Fault, size_t N>
const char* nameOf(const FaultName<Fault> (&table)[N], Fault fault) {
    for (const FaultName<Fault>& row : table) {
        if (row.fault == fault) return row.name;
    }
    return "none";
}

// "" when the fault is known, else what is wrong.
template <typename Fault, size_t N>
std::string findFault(const FaultName<Fault> (&table)[N], const std::string& name, Fault* fault) {
    for (const FaultName<Fault>& row : table) {
        if (name != row.name) continue;
        *fault = row.fault;
        return "";
    }
    return "there is no fault \"" + name + "\" of it; there are: " + namesOf(table);
}

}  // namespace tarq::host
