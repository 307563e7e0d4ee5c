// The frame of the tool: what becomes of a command line before its command runs, and the help.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class FormatterBase;
}  // namespace CLI

namespace tarq::tools {

// The whole tool: reads the command line, without the program's name, runs the command and returns
// the exit code. coloured: out is a terminal that wants colours. May end the process itself, when
// the time is up or a followed log is left with Ctrl-C.
int runTarqctl(const std::vector<std::string>& arguments, bool coloured, std::istream& in,
               std::ostream& out, std::ostream& err);

// ---- the words of the command line, before any of them is given its meaning ----

// One command line in the three forms that are needed of it.
struct CommandLine {
    // What is left to parse. All that follows `shell` has become one word there.
    std::vector<std::string> arguments;
    // The command and its arguments without the global options, which stand on either side of it.
    std::vector<std::string> words;
    // What `up` runs, as it stands. No part of the arguments.
    std::vector<std::string> commandWords;
    bool json = false;
};

// Whether another command line follows the command, as it does `shell` and `up`.
bool takesCommandLine(const std::string& command);

// The global options are those that the app has. The app has its commands declared by then. Nothing
// is refused here: what is wrong with a command line is found by the parser.
CommandLine splitCommandLine(const CLI::App& app, const std::vector<std::string>& arguments);

// ---- the one shape of all help: usage, one sentence, arguments, options, an example ----

// "usage: tarqctl [OPTIONS] setprop NAME VALUE\n" Of the command that the app stands for, with
// those above it.
std::string usageOf(const CLI::App& app);

// What the parser is given to print the help of any command with. coloured: titles are bold.
std::shared_ptr<CLI::FormatterBase> helpFormatter(bool coloured);

}  // namespace tarq::tools
