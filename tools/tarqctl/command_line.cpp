// The parser takes every word that begins with a dash for an option of its own. Two commands are
// followed by another command line, so their words are parted from ours before it sees any; and an
// error names the command as it was typed, without the global options around it.
#include <CLI/App.hpp>
#include <algorithm>

#include "tools/tarqctl/session.h"
#include "tools/tarqctl/tarqctl.h"

namespace tarq::tools {

// The commands that take another command line, with options of its own.
static const char kShell[] = "shell";
static const char kUp[] = "up";

bool takesCommandLine(const std::string& command) {
    return command == kShell || command == kUp;
}

// How many arguments the global option takes up with its value; 0 when it is no such option.
static std::ptrdiff_t globalLength(const CLI::App& app, const std::string& argument) {
    if (argument.empty() || argument[0] != '-') return 0;
    const size_t equals = argument.find('=');
    const CLI::Option* option = app.get_option_no_throw(argument.substr(0, equals));
    if (option == nullptr) return 0;
    return option->get_items_expected_min() == 0 || equals != std::string::npos ? 1 : 2;
}

// Behind "--" the parser takes the one word as it is, whatever it looks like. The user's own "--"
// in front of a command line is dropped.
static void addCommandLine(std::vector<std::string> rest, CommandLine* line) {
    if (rest.empty()) return;
    const bool asksForHelp = rest[0] == "--help" || rest[0] == "-h";
    if (rest[0] == "--") rest.erase(rest.begin());
    const std::string text = joined(rest);
    if (!asksForHelp) line->arguments.emplace_back("--");
    line->arguments.push_back(text);
    line->words.push_back(text);
}

// The options of `up` stand in front of its command, the words of which are no business of ours.
static void addUp(const CLI::App& app, const std::vector<std::string>& rest, CommandLine* line) {
    const CLI::App& up = *app.get_subcommand(kUp);
    auto next = rest.begin();
    while (next != rest.end() && next->size() > 1 && (*next)[0] == '-' && *next != "--") {
        const auto length =
                std::max<std::ptrdiff_t>({globalLength(up, *next), globalLength(app, *next), 1});
        const auto end = next + std::min(length, rest.end() - next);
        if (*next == "--json") line->json = true;
        line->arguments.insert(line->arguments.end(), next, end);
        next = end;
    }
    if (next != rest.end() && *next == "--") ++next;
    line->commandWords.assign(next, rest.end());
}

// The first word that is no option is the command; from there on only the words of two commands are
// special.
CommandLine splitCommandLine(const CLI::App& app, const std::vector<std::string>& arguments) {
    CommandLine line;
    for (auto next = arguments.begin(); next != arguments.end();) {
        const std::ptrdiff_t length = std::min(globalLength(app, *next), arguments.end() - next);
        if (*next == "--json") line.json = true;
        if (length == 0) line.words.push_back(*next);
        const auto end = next + std::max<std::ptrdiff_t>(length, 1);
        line.arguments.insert(line.arguments.end(), next, end);
        next = end;
        if (line.words == std::vector<std::string>{kShell}) {
            addCommandLine({next, arguments.end()}, &line);
            break;
        }
        if (line.words == std::vector<std::string>{kUp}) {
            addUp(app, {next, arguments.end()}, &line);
            break;
        }
    }
    return line;
}

}  // namespace tarq::tools
