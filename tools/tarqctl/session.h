// What a command works with, and how it says that it did not do what it was asked to. A Session is
// made once for each command line, and handed along; nothing of it is global.
#pragma once

#include <chrono>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/run/board.h"

namespace tarq::tools {

// They mean one thing in every command but `up`, which ends with that of its own command.
enum ExitCode {
    kDone = 0,           // or yes
    kServiceSaidNo = 1,  // asked and refused, or no
    kCouldNotAsk = 2,    // or wrong usage
};

// Thrown by whatever cannot go on. All of it is for people but the code, and may hold any bytes: it
// is escaped where it is printed, the hint excepted, which has to be typed as it is.
struct Failure {
    std::string code;  // for programs: one word that stays, such as "no_daemon"
    std::string what;  // what was tried, on what
    std::string why;
    std::string hint;  // the command line to try next
    int exitCode = kCouldNotAsk;
    std::string usage = {};  // of the command, after wrong usage
};

// "tarqctl: WHAT: WHY" and "hint: HINT" on err, or one object on out. Its last line is the hint,
// but for wrong usage, which is followed by the usage.
void printFailure(const Failure& failure, bool json, std::ostream& out, std::ostream& err);

// It is a day, which is as good as for ever.
constexpr double kMaxTimeout = 86400;  // seconds

// The global options, what to read and where to print. Text is printed a line or more at a time and
// flushed, so that a reader on a pipe sees it at once. in, out and err are the process's own
// streams but in tests, which hand over others. A time limit reads it on another thread, so nothing
// of it changes while there is one.
struct Session {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool coloured = false;  // out is a terminal that wants colours
    bool json = false;
    std::chrono::duration<double> timeout{10};
    host::Board board = {};        // as given; never none once openBoard() has returned
    std::string line = {};         // the command with its arguments, quoted for a shell
    std::string path = "tarqctl";  // of the command: "tarqctl led play"
    std::vector<std::string> commandWords = {};  // of the command that `up` runs

    Failure failure(const std::string& code, const std::string& why, const std::string& hint,
                    int exitCode = kCouldNotAsk) const {
        return {code, line, why, hint, exitCode};
    }
    // Tells on err what the user should know of a command that goes on, with or without --json.
    // What it prints is no result: it goes to err so that out can be read by programs.
    void notice(const std::string& text) const;

    // ---- what to type next, for a hint ----

    // "tarqctl --board DIR COMMAND", to be tried next on the same board.
    std::string next(const std::string& command) const;
    // "tarqctl led play --help": of the command that runs.
    std::string help() const { return path + " --help"; }
    // The same command for root: "sudo /DIR/tarqctl --board DIR COMMAND". sudo has a PATH of its
    // own, on which a tool that somebody has built is not.
    std::string asRoot() const;
};

// ---- output for programs: with --json, in place of the text ----

// Keeps its members in the order in which they were added.
using Json = nlohmann::ordered_json;

// null for what is empty, and for no number. So a member is there always, and a program need not
// ask for it first.
Json orNull(const std::string& text);
Json orNull(const std::optional<std::string>& text);
Json orNull(int number);

// One line, flushed. Bytes that are not UTF-8 become U+FFFD.
void printJson(std::ostream& out, const Json& json);

// What a command has to say in the end: the object with --json, else the text as a line of its own.
// Returns kDone, as the next one does.
int printResult(const Session& session, const Json& object, const std::string& text);

// For a command that has nothing to say but that it is done.
int printDone(const Session& session);

// ---- words ----

// A yes in green or a no in red where out wants colours, else as it is. Not for JSON.
std::string painted(const Session& session, const std::string& verdict, bool isYes);

// With a blank between two.
std::string joined(const std::vector<std::string>& words);

// The word as it is typed in a shell: as it is, or between single quotes.
std::string shellQuoted(const std::string& word);

}  // namespace tarq::tools
