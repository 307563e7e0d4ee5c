// set, fault, hold, release: what is done to the hardware of a running board. The board knows what
// each of them means; the words are handed to it as they were typed, and its refusal is printed.
#include <CLI/App.hpp>

#include "host/run/faults.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/commands.h"

namespace tarq::tools {

using Words = std::vector<std::string>;

// Has the board do what the command line says, with the command's name in front. The words reach
// the board one by one, so blanks in them need no quoting there. Nothing of them is checked here.
static int tell(Session& session, const std::string& command, const Words& arguments) {
    openBoard(session);
    Words words = {command};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const std::string refusal = askBoard(session, words);
    if (refusal.empty()) return printDone(session);
    throw session.failure("refused", refusal, session.help(), kServiceSaidNo);
}

// The words live in what is returned, and so does the name of the command. All of them are needed,
// and one that is missing is told by the parser, with the usage.
static Run declare(CLI::App& app, const std::string& command,
                   const std::vector<std::pair<const char*, std::string>>& arguments) {
    const auto words = std::make_shared<Words>(arguments.size());
    for (size_t i = 0; i < arguments.size(); ++i) {
        app.add_option(arguments[i].first, (*words)[i], arguments[i].second)->required();
    }
    return [=](Session& session) { return tell(session, command, *words); };
}

// Which nodes there are the board tells, in `board` and in its refusal.
static constexpr char kNode[] = "its name, such as touch_panel, or its path on the device";

// What a value may be depends on the node, so the help has all of it.
Run declareSet(CLI::App& app) {
    return declare(
            app, "set",
            {{"NODE", kNode},
             {"VALUE",
              "text with \\n \\r \\t \\\\ \\xHH for the touch panel and for files; cells in\n"
              "hexadecimal; 0 or 1 for a GPIO line; a camera's sensor; a decimal\n"
              "number for receiver_status and receiver_rssi; for a co-processor\n"
              "coprocessor_manufacturer, one to four hexadecimal digits, and\n"
              "coprocessor_version, such as 6.10.3. Put -- before NODE when it or VALUE\n"
              "begins with a dash"}});
}

// The faults are those of the board's own tables, so that the help cannot differ from what it does.
Run declareFault(CLI::App& app) {
    return declare(app, "fault",
                   {{"NODE", kNode},
                    {"FAULT", host::namesOf(host::kNodeFaults) + ";\nof the " + host::kReceiver +
                                      ": " + host::namesOf(host::kReceiverFaults) + ";\nof the " +
                                      host::kCoprocessor + ": " +
                                      host::namesOf(host::kCoprocessorFaults)}});
}

Run declareHold(CLI::App& app) {
    return declare(app, "hold", {{"NODE", kNode}});
}

Run declareRelease(CLI::App& app) {
    return declare(app, "release", {{"NODE", kNode}});
}

}  // namespace tarq::tools
