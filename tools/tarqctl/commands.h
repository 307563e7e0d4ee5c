// The commands of the tool. What a command declares and what it does are two steps: all commands
// declare theirs before the command line is read, and only the one that was chosen runs.
#pragma once

#include <functional>
#include <vector>

#include "tools/tarqctl/session.h"

namespace CLI {
class App;
}

namespace tarq::tools {

// Does what was asked and returns the exit code, or throws a Failure. The session outlives it; what
// the command has declared is kept alive by what the run has captured.
using Run = std::function<int(Session&)>;

struct Command {
    const char* group;  // the help's title above it
    const char* name;
    const char* sentence;  // what it does, for the help
    const char* example;   // a command line that works while a board runs
    // Declares the command's own arguments; what it returns is run once they have been read. It
    // must not look at the board, since the command may not be the one that was chosen.
    Run (*declare)(CLI::App& app);
};

// In the order of the help. Made once, and never destroyed.
const std::vector<Command>& commands();

// The title of the commands below a command.
constexpr char kSubcommands[] = "commands";

// Declares them below the app, one of which has to be given, and returns the run of that one. The
// app has to outlive it. A command may have commands of its own in the same way, as led and radio
// have.
Run declareOneOf(const std::vector<Command>& commands, CLI::App& app);

}  // namespace tarq::tools
