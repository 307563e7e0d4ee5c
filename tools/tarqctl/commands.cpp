// Every command is a file in commands/ and a row here, with the function that declares its
// arguments and returns what is to be run. The help, the parser and the test of the examples read
// the rows.
#include "tools/tarqctl/commands.h"

#include <CLI/App.hpp>
#include <map>

namespace tarq::tools {

// clang-format off
Run declareServices(CLI::App& app), declareWait(CLI::App& app), declareLog(CLI::App& app),
    declareHwinfo(CLI::App& app), declareMatch(CLI::App& app), declareExplainLog(CLI::App& app),
    declareOtaTime(CLI::App& app), declareLed(CLI::App& app), declareRadio(CLI::App& app),
    declareShell(CLI::App& app), declareGetprop(CLI::App& app), declareSetprop(CLI::App& app),
    declareSet(CLI::App& app), declareFault(CLI::App& app), declareHold(CLI::App& app),
    declareRelease(CLI::App& app), declareKey(CLI::App& app), declareLeds(CLI::App& app),
    declareBoard(CLI::App& app), declareTrace(CLI::App& app), declareSerial(CLI::App& app),
    declareAsh(CLI::App& app), declareUp(CLI::App& app);
// clang-format on

static constexpr char kDevice[] = "the device";
static constexpr char kBoard[] = "the board";

// In the order in which a newcomer needs them. The examples are carried out by a test.
const std::vector<Command>& commands() {
    static const std::vector<Command>& table = *new std::vector<Command>{
            {kDevice, "services", "Tells which services are registered, and why one may be absent.",
             "tarqctl services", declareServices},
            {kDevice, "wait", "Waits until the daemon serves.", "tarqctl --timeout 60 wait",
             declareWait},
            {kDevice, "log", "Prints the board's log.", "tarqctl log", declareLog},
            {kDevice, "hwinfo", "Prints the parts of the board, one name:value a line.",
             "tarqctl hwinfo", declareHwinfo},
            {kDevice, "match", "Asks whether an update package fits the board, and tells why.",
             "tarqctl hwinfo | tarqctl match --file -", declareMatch},
            {kDevice, "explain-log", "Tells why packages did or did not fit, from a saved log.",
             "tarqctl log | tarqctl explain-log", declareExplainLog},
            {kDevice, "ota-time", "Hands the daemon the build time of an update package.",
             "tarqctl ota-time 1577836800", declareOtaTime},
            {kDevice, "led", "Sets and reads the LEDs, and plays effects.",
             "tarqctl led color 3 ff8000", declareLed},
            {kDevice, "radio", "Asks and tunes the receiver of remote keys, and watches keys.",
             "tarqctl radio frequency", declareRadio},
            {kDevice, "shell", "Runs a command line in the daemon and prints its output.",
             "tarqctl shell 'uname -m; id -u'", declareShell},
            {kDevice, "getprop", "Prints one property, or all of them.",
             "tarqctl getprop ro.vendor.hardwareinfo_index 0", declareGetprop},
            {kDevice, "setprop", "Sets a property.", "tarqctl setprop persist.demo.colour blue",
             declareSetprop},
            {kBoard, "up", "Starts a board and the daemon, and runs a command beside them.",
             "tarqctl up --board panel_by_gpio tarqctl hwinfo", declareUp},
            {kBoard, "board", "Tells what the board plays: its nodes, their state and faults.",
             "tarqctl board", declareBoard},
            {kBoard, "set", "Changes what is fitted, or a file below /vendor or /data.",
             "tarqctl set touch_panel 'type:FT\\nid:3\\n'", declareSet},
            {kBoard, "fault", "Makes a node go wrong, or with none right again.",
             "tarqctl fault touch_panel absent", declareFault},
            {kBoard, "hold", "Makes every call on a node wait until it is released.",
             "tarqctl hold touch_panel", declareHold},
            {kBoard, "release", "Lets the calls on a node go on.", "tarqctl release touch_panel",
             declareRelease},
            {kBoard, "key", "Sends keys of a remote control to the receiver.",
             "tarqctl key 1 2 3 --rssi -60", declareKey},
            {kBoard, "leds", "Shows the LEDs until Ctrl-C, or draws an effect.",
             "tarqctl leds --gif wave.gif --effect /vendor/etc/leds/wave_fast.xml", declareLeds},
            {kBoard, "trace", "Prints what was written to the LED driver, a record a line.",
             "tarqctl trace", declareTrace},
            {kBoard, "serial",
             "Prints the frames on the line to the Zigbee co-processor, both ways.",
             "tarqctl serial", declareSerial},
            {kBoard, "ash", "Prints the frames of such a line that are given in hexadecimal.",
             "echo 1ac038bc7e | tarqctl ash", declareAsh},
    };
    return table;
}

// The footer is where the help keeps its example. Each command keeps its sentence in the app that
// stands for it, so the help needs no table.
Run declareOneOf(const std::vector<Command>& commands, CLI::App& app) {
    // Also keeps an argument that is called like a command from being taken for one.
    app.require_subcommand(1);
    std::map<std::string, Run> runs;
    for (const Command& command : commands) {
        CLI::App* below = app.add_subcommand(command.name, command.sentence);
        below->group(command.group);
        below->footer(command.example);
        runs[command.name] = command.declare(*below);
    }
    return [&app, runs = std::move(runs)](Session& session) {
        return runs.at(app.get_subcommands().front()->get_name())(session);
    };
}

}  // namespace tarq::tools
