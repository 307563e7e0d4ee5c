// ota-time N: kept by the daemon for all callers, until the next one. What it means to a package is
// decided when one is matched: by the times in the board's timestamp file, whose unit it has to
// have.
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>

#include <CLI/App.hpp>

#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

using com::tarq::hardwareInfo::IHardwareInfoService;

// The daemon takes any number and has nothing to say to it.
static int send(Session& session, int64_t timestamp) {
    {
        const Daemon daemon(session, "the daemon is still starting, or hangs");
        daemon.expectOk(daemon.service<IHardwareInfoService>()->setOtaTimestamp(timestamp));
    }
    if (timestamp == 0) {
        session.notice(kNoTime);
    }
    return printDone(session);
}

Run declareOtaTime(CLI::App& app) {
    const auto text = std::make_shared<std::string>();
    int64_t ignored = 0;
    app.add_option("N", *text,
                   "in the unit of the board's timestamp file. With 0 no package\n"
                   "passes by its time; the other ways to pass stay")
            ->required()
            ->check([ignored](const std::string& n) mutable { return parseOtaTime(n, &ignored); });
    return [text](Session& session) {
        int64_t timestamp = 0;
        parseOtaTime(*text, &timestamp);
        return send(session, timestamp);
    };
}

}  // namespace tarq::tools
