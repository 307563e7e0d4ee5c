// up [COMMAND…]: what the parser is not given are the command's words, which may look like options.
// What it does is in up/; here is only what its options mean.
#include <stdlib.h>

#include <CLI/App.hpp>

#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/up/up.h"

namespace tarq::tools {

namespace {

constexpr char kWords[] =
        "all words from the first that is no option. It finds the tools on\n"
        "PATH, and up ends with its status. Without one, the log is shown\n"
        "until Ctrl-C, or until the board or the daemon ends. Ctrl-C is the\n"
        "command's; twice, it ends all at once.";

// In front of `up` the option names a board that runs.
void refuseRunningBoard(const Session& session, const UpOptions& options) {
    const char* inherited = getenv("TARQ_BOARD");
    if (session.board.isNone() || session.board.directory == (inherited ? inherited : "")) return;
    throw Failure{"usage", "up", "--board in front of up names a board that runs already",
                  "tarqctl up --board " + shellQuoted(options.board)};
}

}  // namespace

Run declareUp(CLI::App& app) {
    const auto options = std::make_shared<UpOptions>();
    app.add_option("--board", options->board,
                   "a known board, demo_panel by default, or a folder with a build.prop")
            ->type_name("NAME");
    app.add_flag("--shared", options->isShared,
                 "let other users of this machine talk to the daemon");
    app.add_flag("--require-fuse", options->requiresFuse,
                 "do not start with plain files where FUSE is not to be had");
    app.add_option("COMMAND", kWords)->expected(0, 1);
    return [options](Session& session) -> int {
        refuseRunningBoard(session, *options);
        return runUp(session, *options, session.commandWords);
    };
}

}  // namespace tarq::tools
