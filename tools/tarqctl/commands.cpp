#include "tools/tarqctl/commands.h"

namespace tarq::tools {

// In the order in which a newcomer needs them. The examples are carried out by a test.
const std::vector<Command>& commands() {
    static const std::vector<Command>& table = *new std::vector<Command>{
            {"services", "Tells which services are registered, and why one may be absent.",
             "tarqctl services", declareServices},
            {"wait", "Waits until services are registered.", "tarqctl --timeout 60 wait",
             declareWait},
            {"log", "Prints the board's log.", "tarqctl log", declareLog},
            {"hwinfo", "Prints the parts of the board, one name:value a line.", "tarqctl hwinfo",
             declareHwinfo},
            {"match", "Asks whether an update package fits the board, and tells why.",
             "tarqctl hwinfo | tarqctl match --file -", declareMatch},
            {"explain-log", "Tells why packages did or did not fit, from a saved log.",
             "tarqctl log | tarqctl explain-log", declareExplainLog},
            {"ota-time", "Hands the daemon the build time of an update package.",
             "tarqctl ota-time 1577836800", declareOtaTime},
            {"shell", "Runs a command line in the daemon and prints its output.",
             "tarqctl shell 'uname -m; id -u'", declareShell},
            {"getprop", "Prints one property, or all of them.",
             "tarqctl getprop ro.vendor.hardwareinfo_index 0", declareGetprop},
            {"setprop", "Sets a property.", "tarqctl setprop persist.demo.colour blue",
             declareSetprop},
    };
    return table;
}

}  // namespace tarq::tools
