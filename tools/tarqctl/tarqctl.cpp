// One call of the tool: the command line is split, so that global options may stand anywhere, the
// commands declare their arguments, the parser reads them, and the chosen command runs. Whatever
// cannot go on throws a Failure, which is printed here and nowhere else.
#include "tools/tarqctl/tarqctl.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "tools/tarqctl/command_line.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/help.h"

namespace tarq::tools {

namespace {

// Written so that "nan" fails, which is neither less nor greater.
std::string checkTimeout(const std::string& text) {
    double value = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, value);
    if (isNumber && value >= 0.001 && value <= kMaxTimeout) return "";
    return "\"" + text + "\" is no number of seconds from 0.001 to 86400";
}

void declareGlobals(CLI::App& app, Session& session, double* timeout) {
    app.add_option("--board", session.board.directory,
                   "the board's directory; TARQ_BOARD, else the one board that you run")
            ->type_name("DIR")
            ->envname("TARQ_BOARD");
    app.add_flag("--json", session.json, "print JSON, errors too");
    app.add_option("--timeout", *timeout, "how long the daemon may take, in seconds; 10")
            ->type_name("S")
            ->check(checkTimeout);
}

Run declare(CLI::App& app, Session& session, double* timeout) {
    app.formatter(std::make_shared<HelpFormatter>());
    app.set_help_flag("-h,--help", "this text");
    app.footer("tarqctl services");
    // Global options are understood behind the command as well.
    app.fallthrough();
    declareGlobals(app, session, timeout);
    return declareOneOf(commands(), app);
}

std::string commandNames(const CLI::App& app) {
    std::string names;
    for (const CLI::App* command : app.get_subcommands({})) names += " " + command->get_name();
    return names;
}

const CLI::App* commandBelow(const CLI::App& app, const std::string& name) {
    for (const CLI::App* command : app.get_subcommands({})) {
        if (command->get_name() == name) return command;
    }
    return nullptr;
}

// The parser's word on the command's arguments is kept. It knows no good one for a command that is
// missing or misspelt.
Failure wrongUsage(const CLI::App& all, const CommandLine& line, const Session& session,
                   const CLI::ParseError& error) {
    const CLI::App* app = &all;
    std::string path = "tarqctl";
    auto word = line.words.begin();
    for (; word != line.words.end() && !app->get_subcommands({}).empty(); ++word) {
        const CLI::App* below = commandBelow(*app, *word);
        if (below == nullptr) break;
        app = below;
        path += " " + *word;
    }
    std::string why = error.what();
    if (const std::string names = commandNames(*app); names.empty()) {
        // one of its arguments
    } else if (word != line.words.end() && (*word)[0] != '-') {
        why = "there is no such command, only" + names;
    } else if (error.get_name() == "RequiredError") {
        why = "no command is given; there are" + names;
    }
    Failure failure = session.failure("usage", why, path + " --help");
    failure.usage = usageOf(*app);
    return failure;
}

std::string quoted(const std::vector<std::string>& words) {
    std::vector<std::string> result;
    for (const std::string& word : words) result.push_back(shellQuoted(word));
    return joined(result);
}

int runCommand(const std::vector<std::string>& arguments, Session& session) {
    CLI::App app{"Talks to the device daemon of a virtual board, and to the board."};
    double timeout = session.timeout.count();
    const Run run = declare(app, session, &timeout);
    const CommandLine line = splitCommandLine(app, arguments);
    session.json = line.json;  // until the parser has come to it: its errors are printed so too
    session.commandWords = line.commandWords;
    session.line = line.words.empty() ? "command line" : quoted(line.words);
    try {
        app.parse(std::vector<std::string>(line.arguments.rbegin(), line.arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        session.out << app.help() << std::flush;
        return kDone;
    } catch (const CLI::ParseError& error) {
        throw wrongUsage(app, line, session, error);
    }
    session.timeout = std::chrono::duration<double>(timeout);
    return run(session);
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
