#include "tools/tarqctl/commands.h"

#include <CLI/App.hpp>
#include <map>

namespace tarq::tools {

// In the order in which a newcomer needs them. The examples are carried out by a test.
const std::vector<Command>& commands() {
    static const std::vector<Command>& table = *new std::vector<Command>{
            {"services", "Tells which services are registered, and why one may be absent.",
             "tarqctl services", declareServices},
            {"wait", "Waits until the daemon serves.", "tarqctl --timeout 60 wait", declareWait},
            {"log", "Prints the board's log.", "tarqctl log", declareLog},
            {"hwinfo", "Prints the parts of the board, one name:value a line.", "tarqctl hwinfo",
             declareHwinfo},
            {"match", "Asks whether an update package fits the board, and tells why.",
             "tarqctl hwinfo | tarqctl match --file -", declareMatch},
            {"explain-log", "Tells why packages did or did not fit, from a saved log.",
             "tarqctl log | tarqctl explain-log", declareExplainLog},
            {"ota-time", "Hands the daemon the build time of an update package.",
             "tarqctl ota-time 1577836800", declareOtaTime},
            {"led", "Sets, reads and watches the LEDs, and plays effects.",
             "tarqctl led color 3 ff8000", declareLed},
            {"radio", "Asks and tunes the receiver of remote keys, and watches keys.",
             "tarqctl radio frequency", declareRadio},
            {"shell", "Runs a command line in the daemon and prints its output.",
             "tarqctl shell 'uname -m; id -u'", declareShell},
            {"getprop", "Prints one property, or all of them.",
             "tarqctl getprop ro.vendor.hardwareinfo_index 0", declareGetprop},
            {"setprop", "Sets a property.", "tarqctl setprop persist.demo.colour blue",
             declareSetprop},
    };
    return table;
}

// The footer is where the help keeps its example.
Run declareOneOf(const std::vector<Command>& commands, CLI::App& app) {
    // Also keeps an argument that is called like a command from being taken for one.
    app.require_subcommand(1);
    std::map<std::string, Run> runs;
    for (const Command& command : commands) {
        CLI::App* below = app.add_subcommand(command.name, command.sentence);
        below->footer(command.example);
        runs[command.name] = command.declare(*below);
    }
    return [&app, runs = std::move(runs)](Session& session) {
        return runs.at(app.get_subcommands().front()->get_name())(session);
    };
}

}  // namespace tarq::tools
