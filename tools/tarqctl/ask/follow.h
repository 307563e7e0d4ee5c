// Printing a file of the board line by line. It is what log -f, trace -f and serial -f have in
// common.
#pragma once

#include "host/run/growing_file.h"
#include "tools/tarqctl/session.h"

namespace CLI {
class App;
}

namespace tarq::tools {

// Declares -f. The flag has to live as long as the app.
void addFollow(CLI::App& app, bool* follows);

// Hands over every line, and if so wished what is added afterwards: until Ctrl-C, which ends the
// process as done, until the board ends, or until nothing can be printed any more. An errno when
// there is no such file. All that was written up to the board's end is handed over, a last line
// without its newline too.
int printFile(const Session& session, const std::string& path, bool follows,
              const host::GrowingFile::TakeLine& print);

// False once nobody can take what is printed: the reader of a pipe has gone, or standard output is
// closed, which the stream tells then, too. To be asked by what prints seldom and would not end.
bool hasReader(const Session& session);

// The same for a record that the board keeps of a part, after it was found out to be there: "trace"
// and "serial" ask for it. Throws a Failure with the board's reason when there is none. A board
// that answers has a reason of its own, such as that no LEDs are fitted; else it is the system's.
void requireRecord(const Session& session, const std::string& path, const std::string& question);
void printRecord(const Session& session, const std::string& path, const std::string& question,
                 bool follows, const host::GrowingFile::TakeLine& print);

// The end of a command that printed so. Throws a Failure when it had followed: what comes next the
// user has asked for, and cannot get.
int printed(const Session& session, bool follows);

}  // namespace tarq::tools
