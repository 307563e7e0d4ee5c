// The commands of the tool.
#pragma once

#include <functional>
#include <vector>

#include "tools/tarqctl/session.h"

namespace CLI {
class App;
}

namespace tarq::tools {

// Does what was asked and returns the exit code, or throws a Failure.
using Run = std::function<int(Session&)>;

struct Command {
    const char* group;  // the help's title above it
    const char* name;
    const char* sentence;  // what it does, for the help
    const char* example;   // a command line that works while a board runs
    // Declares the command's own arguments; what it returns is run once they have been read.
    Run (*declare)(CLI::App& app);
};

// In the order of the help.
const std::vector<Command>& commands();

// The title of the commands below a command.
constexpr char kSubcommands[] = "commands";

// Declares them below the app, one of which has to be given, and returns the run of that one.
Run declareOneOf(const std::vector<Command>& commands, CLI::App& app);

}  // namespace tarq::tools
