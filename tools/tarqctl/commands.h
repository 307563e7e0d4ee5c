// The commands. A new one is a file of its own, a row in commands.cpp and its name here.
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
    const char* name;
    const char* sentence;  // what it does, for the help
    const char* example;   // a command line that works while a board runs
    // Declares the command's own arguments; what it returns is run once they have been read.
    Run (*declare)(CLI::App& app);
};

// In the order of the help.
const std::vector<Command>& commands();

// Declares them below the app, one of which has to be given, and returns the run of that one.
Run declareOneOf(const std::vector<Command>& commands, CLI::App& app);

Run declareServices(CLI::App& app);
Run declareWait(CLI::App& app);
Run declareLog(CLI::App& app);
Run declareHwinfo(CLI::App& app);
Run declareMatch(CLI::App& app);
Run declareExplainLog(CLI::App& app);
Run declareOtaTime(CLI::App& app);
Run declareLed(CLI::App& app);
Run declareRadio(CLI::App& app);
Run declareShell(CLI::App& app);
Run declareGetprop(CLI::App& app);
Run declareSetprop(CLI::App& app);

}  // namespace tarq::tools
