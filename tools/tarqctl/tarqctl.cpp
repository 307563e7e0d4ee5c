#include "tools/tarqctl/tarqctl.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <ostream>

#include "tools/tarqctl/command_line.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/help.h"

namespace tarq::tools {

namespace {

// The parser with all commands, and what each of them runs.
struct Parser {
    CLI::App app{"Talks to the device daemon of a virtual board."};
    std::map<std::string, Run> runs;
};

// Written so that "nan" fails, which is neither less nor greater.
std::string checkTimeout(const std::string& text) {
    double value = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, value);
    if (isNumber && value >= 0.001 && value <= kMaxTimeout) return "";
    return "\"" + text + "\" is no number of seconds from 0.001 to 86400";
}

void declareGlobals(CLI::App& app, Session& session, double* timeout) {
    app.add_option("--board", session.board,
                   "the board's directory; TARQ_BOARD, else the one board that you run")
            ->type_name("DIR")
            ->envname("TARQ_BOARD");
    app.add_flag("--json", session.json, "print JSON, errors too");
    app.add_option("--timeout", *timeout, "how long the daemon may take, in seconds; 10")
            ->type_name("S")
            ->check(checkTimeout);
}

// The footer is where the help keeps its example.
void declareCommands(Parser& parser) {
    for (const Command& command : commands()) {
        CLI::App* app = parser.app.add_subcommand(command.name, command.sentence);
        app->footer(command.example);
        parser.runs[command.name] = command.declare(*app);
    }
}

void declare(Parser& parser, Session& session, double* timeout) {
    parser.app.formatter(std::make_shared<HelpFormatter>());
    parser.app.set_help_flag("-h,--help", "this text");
    parser.app.footer("tarqctl services");
    // Global options are understood behind the command as well.
    parser.app.fallthrough();
    // Also keeps an argument that is called like a command from being taken for one.
    parser.app.require_subcommand(1);
    declareGlobals(parser.app, session, timeout);
    declareCommands(parser);
}

std::string commandNames() {
    std::string names;
    for (const Command& command : commands()) names += std::string(" ") + command.name;
    return names;
}

// The parser's word on the command's arguments is kept. It knows no good one for a command that is
// missing or misspelt.
Failure wrongUsage(const Parser& parser, const CommandLine& line, const Session& session,
                   const CLI::ParseError& error) {
    const std::string name = line.words.empty() ? "" : line.words[0];
    std::string why = error.what();
    std::string hint = "tarqctl --help";
    const CLI::App* app = &parser.app;
    if (parser.runs.count(name) != 0) {
        hint = "tarqctl " + name + " --help";
        app = parser.app.get_subcommand(name);
    } else if (!name.empty() && name[0] != '-') {
        why = "there is no such command, only" + commandNames();
    } else if (error.get_name() == "RequiredError") {
        why = "no command is given; there are" + commandNames();
    }
    Failure failure = session.failure("usage", why, hint);
    failure.usage = usageOf(*app);
    return failure;
}

std::string quoted(const std::vector<std::string>& words) {
    std::vector<std::string> result;
    for (const std::string& word : words) result.push_back(shellQuoted(word));
    return joined(result);
}

int runCommand(const std::vector<std::string>& arguments, Session& session) {
    Parser parser;
    double timeout = session.timeout.count();
    declare(parser, session, &timeout);
    const CommandLine line = splitCommandLine(parser.app, arguments);
    session.json = line.json;  // until the parser has come to it: its errors are printed so too
    session.line = line.words.empty() ? "command line" : quoted(line.words);
    try {
        parser.app.parse(std::vector<std::string>(line.arguments.rbegin(), line.arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        session.out << parser.app.help() << std::flush;
        return kDone;
    } catch (const CLI::ParseError& error) {
        throw wrongUsage(parser, line, session, error);
    }
    session.timeout = std::chrono::duration<double>(timeout);
    return parser.runs[line.words[0]](session);
}

}  // namespace

int runTarqctl(const std::vector<std::string>& arguments, bool coloured, std::istream& in,
               std::ostream& out, std::ostream& err) {
    Session session{in, out, err, coloured};
    try {
        return runCommand(arguments, session);
    } catch (const Failure& failure) {
        printFailure(failure, session.json, out, err);
        return failure.exitCode;
    }
}

}  // namespace tarq::tools
