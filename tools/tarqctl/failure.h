// How the tool says that it did not do what it was asked to.
#pragma once

#include <iosfwd>
#include <string>

namespace tarq::tools {

// They mean one thing in every command.
enum ExitCode {
    kDone = 0,           // or yes
    kServiceSaidNo = 1,  // asked and refused, or no
    kCouldNotAsk = 2,    // or wrong usage
};

// Thrown by whatever cannot go on.
struct Failure {
    std::string code;  // for programs: one word that stays, such as "no_daemon"
    std::string what;  // what was tried, on what
    std::string why;
    std::string hint;  // the command line to try next
    int exitCode = kCouldNotAsk;
    std::string usage = {};  // of the command, after wrong usage
};

// "tarqctl: WHAT: WHY" and "hint: HINT" on err, or one object on out.
void printFailure(const Failure& failure, bool json, std::ostream& out, std::ostream& err);

}  // namespace tarq::tools
