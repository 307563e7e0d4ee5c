// The words of the command line, before any of them is given its meaning.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tarq::tools {

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

// The global options are those that the app has.
CommandLine splitCommandLine(const CLI::App& app, const std::vector<std::string>& arguments);

std::string joined(const std::vector<std::string>& words);

}  // namespace tarq::tools
