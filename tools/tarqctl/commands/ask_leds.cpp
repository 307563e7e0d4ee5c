// The service's answer does not tell everything: an attribute that could not be opened is only in
// its log, and what the driver refused only in the board's records. So each call is looked up in
// both, by its operation, arguments and records, before it is called done.
#include <algorithm>

#include "host/run/board.h"
#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands/led_commands.h"
#include "tools/tarqctl/log/led_outcome.h"
#include "tools/tarqctl/view/effect_transfer.h"

namespace tarq::tools {

using android::binder::Status;
using com::tarq::rgbleds::IRgbLedsService;
using Words = std::vector<std::string>;

// A driver that refuses has done nothing, so a service that answers "done" was wrong about that.
// Each refusal is a line, in the order in which the driver got them. It names attribute and text as
// `trace` prints them.
static void throwIfRefused(const Session& session, const std::vector<host::LedRecord>& refused) {
    Words lines;
    for (const host::LedRecord& record : refused) {
        lines.push_back("the driver refuses " + record.attribute + " \"" + record.text +
                        "\": " + record.whyRefused);
    }
    throwIfAny(session, lines);
}

// Log and records are skipped to their ends before the call and read after it. The Daemon has ended
// by the time that anything is printed, so that a slow reader is no time-out. On a board that has
// ended no attribute can be opened, which is no refusal of the service.
std::optional<LedCall> askLeds(Session& session, const std::string& operation,
                               const std::function<Status(IRgbLedsService&, LedAnswer*)>& call,
                               const Asked& asked) {
    LedAnswer answer;
    std::optional<LedCall> logged;
    std::vector<host::LedRecord> refused;
    {
        const Daemon daemon(session,
                            "the LED driver is slow, or the daemon is still starting, or hangs",
                            asked);
        const auto leds = daemon.service<IRgbLedsService>();
        LedLog log(session.board.log());
        LedRefusals refusals(session.board.ledRecords());
        daemon.expectOk(call(*leds, &answer));
        logged = log.find(operation, answer.arguments);
        refused = refusals.find([&](const host::LedRecord& record) {
            const Words& ours = answer.records;
            return std::count(ours.begin(), ours.end(), record.attribute + " " + record.text) != 0;
        });
    }
    if (host::recordsAreLost(session.board.ledRecords())) {
        throw session.failure("not_known",
                              "nobody tells whether the driver refused it: the disk was full, and "
                              "the board's records are lost; make room, and start the board again",
                              session.next("board"));
    }
    const bool opened = !logged || logged->notOpened.empty();
    if (answer.done && opened) {
        throwIfRefused(session, refused);
        return logged;
    }
    if (!opened && !host::isRunning(session.board)) throw boardEnded(session);
    throw session.failure("attribute",
                          opened ? "the service said no, and its log does not tell why"
                                 : "the daemon cannot open " + joined(logged->notOpened),
                          session.next("log"), kServiceSaidNo);
}

}  // namespace tarq::tools
