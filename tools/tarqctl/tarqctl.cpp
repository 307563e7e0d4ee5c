// One call of the tool: the command line is split, so that global options may stand anywhere, the
// commands declare their arguments, the parser reads them, and the chosen command runs. Whatever
// cannot go on throws a Failure, which is printed here and nowhere else.
#include "tools/tarqctl/tarqctl.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <ostream>

#include "host/run/nearest.h"
#include "host/run/text.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/session.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

void declareGlobals(CLI::App& app, Session& session, double* timeout) {
    app.add_option("--board", session.board.directory,
                   "the board's directory; TARQ_BOARD, else the one board that you run")
            ->type_name("DIR")
            ->envname("TARQ_BOARD");
    app.add_flag("--json", session.json, "print JSON, errors too");
    addSeconds(app, "--timeout", "how long the daemon may take, in seconds; 10", timeout);
}

// An option of a command that is called like a global one, as --board of up is, stands for it
// there.
Run declare(CLI::App& app, Session& session, double* timeout) {
    app.formatter(helpFormatter(session.coloured));
    app.set_help_flag("-h,--help", "this text");
    app.set_version_flag("--version", TARQ_VERSION, "print the version");
    app.footer("tarqctl services");
    // Global options are understood behind the command as well.
    app.fallthrough();
    declareGlobals(app, session, timeout);
    return declareOneOf(commands(), app);
}

// The commands on the command line as far as there are such.
struct Named {
    const CLI::App* app;
    std::string path = "tarqctl";
    std::optional<std::string> unknown = {};  // the word that is none, which may be an empty one
};

// They are found by the words alone, since the parser may have failed.
Named namedOn(const CLI::App& all, const CommandLine& line) {
    Named named = {&all};
    for (const std::string& word : line.words) {
        const auto below = named.app->get_subcommands(
                [&word](const CLI::App* command) { return command->get_name() == word; });
        if (below.empty()) {
            const bool isCommand = !named.app->get_subcommands({}).empty() && word[0] != '-';
            if (isCommand) named.unknown = word;
            break;
        }
        named.app = below.front();
        named.path += " " + word;
    }
    return named;
}

std::string quoted(const std::vector<std::string>& words) {
    std::vector<std::string> result;
    for (const std::string& word : words) result.push_back(shellQuoted(word));
    return joined(result);
}

// The parser's word on the command's arguments is kept. It knows no good one for what is missing or
// misspelt.
std::string whyWrong(const CLI::App& app, const Named& named, const std::vector<std::string>& names,
                     const CommandLine& line, const CLI::ParseError& error) {
    if (named.unknown) return host::noSuchCommand(*named.unknown, names);
    const std::string why = host::noSuchOption(*named.app, line.words);
    if (!why.empty()) return why;
    if (!names.empty() && error.get_name() == "RequiredError") {
        return "no command is given; there are " + joined(names);
    }
    const bool areTooMany = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
    const std::string left = host::noSuchOption(*named.app, app.remaining(true));
    if (areTooMany && !left.empty()) return left;
    return areTooMany ? "too many words: " + quoted(app.remaining(true)) : error.what();
}

Failure wrongUsage(const CLI::App& app, const Session& session, const CommandLine& line,
                   const CLI::ParseError& error) {
    const Named named = namedOn(app, line);
    std::vector<std::string> names;
    for (const CLI::App* command : named.app->get_subcommands({})) {
        names.push_back(command->get_name());
    }
    const std::string why = whyWrong(app, named, names, line, error);
    const std::string meant = named.unknown ? host::nearestName(*named.unknown, names) : "";
    Failure failure = session.failure("usage", why,
                                      named.path + (meant.empty() ? "" : " " + meant) + " --help");
    failure.usage = usageOf(*named.app);
    return failure;
}

// "help led color" is "led color --help".
CommandLine understood(const CLI::App& app, const std::vector<std::string>& arguments) {
    CommandLine line = splitCommandLine(app, arguments);
    if (line.words.empty() || line.words[0] != "help") return line;
    std::vector<std::string> asked(line.words.begin() + 1, line.words.end());
    if (!asked.empty() && asked[0] == "help") asked.clear();
    if (!asked.empty() && takesCommandLine(asked[0])) asked.resize(1);
    asked.emplace_back("--help");
    if (line.json) asked.emplace_back("--json");
    return splitCommandLine(app, asked);
}

// Whether JSON is wanted is known before anything can fail, so that every failure is printed in the
// form that was asked for.
int runCommand(const std::vector<std::string>& arguments, Session& session) {
    CLI::App app{
            "Talks to the device daemon of a virtual board, and to the board.\n"
            "tarqctl help COMMAND explains a command."};
    double timeout = session.timeout.count();
    const Run run = declare(app, session, &timeout);
    const CommandLine line = understood(app, arguments);
    session.json = line.json;  // until the parser has come to it: its errors are printed so too
    session.commandWords = line.commandWords;
    session.line = line.words.empty() ? "command line" : quoted(line.words);
    session.path = namedOn(app, line).path;
    try {
        app.parse(std::vector<std::string>(line.arguments.rbegin(), line.arguments.rend()));
    } catch (const CLI::CallForHelp& help) {
        if (namedOn(app, line).unknown) throw wrongUsage(app, session, line, help);
        session.out << app.help() << std::flush;
        return kDone;
    } catch (const CLI::CallForVersion&) {
        return printResult(session, {{"version", TARQ_VERSION}}, "tarqctl " TARQ_VERSION);
    } catch (const CLI::ParseError& error) {
        throw wrongUsage(app, session, line, error);
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
    } catch (const std::exception& error) {
        // The system's refusals have no hint of their own, such as a working directory that is
        // gone.
        printFailure(session.failure("system", host::escaped(error.what()), session.help()),
                     session.json, out, err);
        return kCouldNotAsk;
    }
}

}  // namespace tarq::tools
