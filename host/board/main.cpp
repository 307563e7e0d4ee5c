// The virtual board: plays the hardware of a device on a plain Linux machine.
#include <host/running_boards.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "host/board/control.h"
#include "host/board/key_command.h"
#include "host/board/serve.h"
#include "host/board/view/serial_views.h"
#include "host/board/view/views.h"

namespace {

using Words = std::vector<std::string>;

enum ExitCode { kDone = 0, kRefused = 1, kCouldNotAsk = 2 };

// A command for a board that runs. Its words are the arguments in their order.
struct Command {
    const char* name;
    const char* sentence;
    std::vector<std::pair<const char*, const char*>> arguments;  // with what they are
};

const char kNode[] = "its name, such as touch_panel, or its path on the device";

const std::vector<Command> kCommands = {
        {"set",
         "Changes what is fitted, or a file below /vendor or /data",
         {{"NODE", kNode},
          {"VALUE",
           "text with \\n \\r \\t \\\\ \\xHH for the touch panel and for files; cells in "
           "hexadecimal; 0 or 1 for a GPIO line; a camera's sensor; a number for the receiver"}}},
        {"fault",
         "Makes a node go wrong, or with \"none\" right again",
         {{"NODE", kNode},
          {"FAULT",
           "absent, empty, garbage, huge, directory, unreadable, unwritable, slow, none; of the "
           "receiver: mute, absent, none; of the coprocessor: silent, silent_after_reset, late, "
           "pieces, merged, garbage, too_long, acknowledged, too_short, absent, none"}}},
        {"hold", "Makes every call on a node wait until it is released", {{"NODE", kNode}}},
        {"release", "Lets the calls go on", {{"NODE", kNode}}},
};

std::string onlyRunningBoard() {
    const std::string directory = tarq::host::usersBoards();
    const Words boards = tarq::host::runningBoards(directory);
    if (boards.size() == 1) return boards.front();
    if (boards.empty()) {
        throw std::runtime_error("no board is running below " + directory +
                                 ", and neither --board nor TARQ_BOARD names one");
    }
    std::string why = "several boards are running:";
    for (const std::string& board : boards) why += " --board " + board;
    throw std::runtime_error(why);
}

int askBoard(const std::string& board, const Words& words) {
    std::string reason;
    if (tarq::board::ask(board, words, &reason)) return kDone;
    std::string what;
    for (const std::string& word : words) what += (what.empty() ? "" : " ") + word;
    fprintf(stderr, "virtual_board: %s: %s\n", what.c_str(), reason.c_str());
    return kRefused;
}

// What the arguments ask for.
struct Request {
    std::string board;
    std::string folder;
    std::string directory;
    bool shared = false;
    Words words;  // of a command
    std::function<void(const std::string& board)> show;
    std::function<void()> showFile;  // needs no board
    bool follows = false;
    bool asJson = false;
    std::string effect;
    std::string gif;
};

void declareViews(CLI::App& app, Request& request) {
    CLI::App* trace = app.add_subcommand(
            "trace", "Prints what was written to the LED driver, a record a line");
    trace->add_flag("-f", request.follows, "go on with what is added, until Ctrl-C");
    trace->add_flag("--json", request.asJson, "as JSON Lines, with times in ms");
    trace->callback([&request] {
        request.show = [&request](const std::string& board) {
            tarq::board::printTrace(board, request.follows, request.asJson);
        };
    });
    CLI::App* leds = app.add_subcommand(
            "leds", "Shows the LEDs until Ctrl-C, as text with NO_COLOR or without a terminal");
    CLI::Option* gif = leds->add_option(
            "--gif", request.gif, "draw the effect that is played into this file, as a moving GIF");
    leds->add_option("--effect", request.effect,
                     "draw this one: a file of the device, such as /vendor/etc/leds/wave_fast.xml, "
                     "or any other")
            ->needs(gif);
    leds->callback([&request] {
        request.show = [&request](const std::string& board) {
            if (request.gif.empty()) return tarq::board::watchLeds(board);
            tarq::board::drawEffect(board, request.effect, request.gif);
        };
    });
}

void declare(CLI::App& app, Request& request) {
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--board", request.board,
                   "the running board's directory; TARQ_BOARD, else the one board that you run")
            ->type_name("DIR")
            ->envname("TARQ_BOARD");
    CLI::App* serve = app.add_subcommand(
            "serve",
            "Plays a board until it is told to end; prints \"ready\" when programs can be "
            "started with TARQ_BOARD=DIR");
    serve->add_option("BOARD", request.folder, "the folder that describes it")->required();
    serve->add_option("DIR", request.directory, "where it runs")->required();
    serve->add_flag("--shared", request.shared,
                    "lets other users of this machine talk to the board's daemon");
    for (const Command& command : kCommands) {
        CLI::App* sub = app.add_subcommand(command.name, command.sentence);
        sub->preparse_callback([&request, &command](size_t) { request.words = {command.name}; });
        for (const auto& [name, sentence] : command.arguments) {
            sub->add_option_function<std::string>(
                       name, [&request](const std::string& word) { request.words.push_back(word); },
                       sentence)
                    ->required();
        }
    }
    declareViews(app, request);
    tarq::board::declareKey(app, &request.show);
    tarq::board::declareSerialViews(app, &request.show, &request.showFile);
}

// The last first, as CLI11 wants them. What is set may look like an option: the timestamp file
// begins with "--".
Words argumentsFrom(int argc, char** argv) {
    Words words(argv + 1, argv + argc);
    const size_t count = words.size();
    const bool isSet = count >= 3 && words[count - 3] == "set" && words.back() != "--help";
    if (isSet && words.back().rfind("--", 0) == 0) words.insert(words.end() - 1, "--");
    std::reverse(words.begin(), words.end());
    return words;
}

int run(int argc, char** argv) {
    CLI::App app{"Plays the hardware of a device on a plain Linux machine.", "virtual_board"};
    Request request;
    declare(app, request);
    try {
        app.parse(argumentsFrom(argc, argv));
    } catch (const CLI::CallForHelp&) {
        fputs(app.help().c_str(), stdout);
        return kDone;
    }
    if (request.showFile) {
        request.showFile();
        return kDone;
    }
    if (request.words.empty() && !request.show) {
        tarq::board::serve(request.folder, request.directory, request.shared);
        return kDone;
    }
    const std::string board = request.board.empty() ? onlyRunningBoard() : request.board;
    if (!request.words.empty()) return askBoard(board, request.words);
    request.show(board);
    return kDone;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const CLI::ParseError& error) {
        fprintf(stderr, "virtual_board: %s; try virtual_board --help\n", error.what());
    } catch (const tarq::board::Refusal& refusal) {
        fprintf(stderr, "virtual_board: %s\n", refusal.what());
        return kRefused;
    } catch (const std::exception& error) {
        fprintf(stderr, "virtual_board: %s\n", error.what());
    }
    return kCouldNotAsk;
}
