// match ITEM…: asks the service whether a package fits. The verdict is the service's; its reasons
// are in the log that it wrote meanwhile, on whichever thread, beside the requests of others. Ours
// is one with our items that came out as ours did.
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <string.h>

#include <CLI/App.hpp>
#include <ostream>

#include "host/run/file_systems.h"
#include "host/run/growing_file.h"
#include "host/run/text.h"
#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/match/match_log.h"
#include "tools/tarqctl/match/package_list.h"
#include "tools/tarqctl/match/silent_probes.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

using com::tarq::hardwareInfo::IHardwareInfoService;
using Items = std::vector<std::string>;

namespace {

struct Options {
    Items items;
    std::string file;
    std::string otaTime;
    bool strict = false;
};

// fits is what the service said; isExplained, that its log says the same and why.
struct Answer {
    bool fits = false;
    bool isExplained = false;
    Explanation explanation;
    SilentProbes silent;
};

// Without reasons. At least the list can be held against the board's parts, which the service tells
// by another call.
Explanation verdictAlone(const Daemon& daemon, const Items& items, const std::string& why) {
    std::vector<android::String16> parts;
    bool always = false;
    const auto service = daemon.service<IHardwareInfoService>();
    daemon.expectOk(service->getHardwareInfo(&parts, &always));
    std::vector<Item> board;
    for (const android::String16& part : parts) {
        board.push_back(itemFrom(android::String8(part).string()));
    }
    Explanation explanation;
    explanation.sentence = "the reasons are not known, " + why;
    explanation.doubts = doubtsAbout(items, board);
    return explanation;
}

// From what the daemon logged meanwhile, else without reasons. Requests of others may hold the same
// items: one that came out otherwise is not ours.
void explainAnswer(const Daemon& daemon, const host::Board& board, host::GrowingFile& log,
                   const Items& items, Answer* answer) {
    const std::string path = board.log();
    MatchLog requests;
    const int error = log.read([&requests](const std::string& line) { requests.add(line); });
    std::string why = path + ": " + (error != 0 ? strerror(error) : "it has no such request");
    for (const MatchRequest& request : requests.with(items)) {
        answer->explanation = explain(request);
        answer->silent = silentProbes(request);
        answer->isExplained = request.outcome == (answer->fits ? Outcome::kYes : Outcome::kNo);
        if (answer->isExplained) return;
        if (answer->explanation.verdict == "unknown") why = answer->explanation.sentence;
    }
    // A log that cannot be written is told by the room that is left: who writes it cannot say so.
    const int full = error == 0 ? host::writeError(board) : 0;
    if (full != 0) why = path + ": " + strerror(full);
    answer->explanation = verdictAlone(daemon, items, why);
    answer->silent = {};  // any may be
    if (!answer->fits) answer->silent = {{kTouchPanel, kDisplay, kCamera}, true};
}

// The call returns when all that it logs has been written. The log is skipped to its end before the
// call, so that earlier requests with the same items are not read.
Answer ask(Session& session, const Items& items, const std::string& otaTime) {
    const Daemon daemon(session, "it asks the hardware, or the daemon is still starting, or hangs",
                        {true});
    const auto service = daemon.service<IHardwareInfoService>();
    int64_t time = 0;
    if (!otaTime.empty() && parseOtaTime(otaTime, &time).empty()) {
        daemon.expectOk(service->setOtaTimestamp(time));
        if (time == 0) session.notice(kNoTime);
    }
    host::GrowingFile log(session.board.log());
    log.skip();
    Answer answer;
    std::vector<android::String16> list;
    for (const std::string& item : items) list.emplace_back(item.data(), item.size());
    daemon.expectOk(service->isMatchHardwareInfo(list, &answer.fits));
    explainAnswer(daemon, session.board, log, items, &answer);
    answer.explanation.verdict = answer.fits ? "yes" : "no";
    answer.explanation.service = answer.explanation.verdict;
    return answer;
}

// What is not part of the verdict. Without the items, which may be many. False when there is
// something for which a strict reader refuses a yes.
bool printNotes(const Session& session, const Answer& answer) {
    const std::string prefix = "tarqctl: match: ";
    bool isClean = answer.isExplained && answer.explanation.notCompared.empty();
    for (const Doubt& doubt : answer.explanation.doubts) {
        session.err << prefix + host::escaped(doubt.text) + "\n" << std::flush;
        if (doubt.isMistake) isClean = false;
    }
    for (const std::string& text : answer.explanation.notCompared) {
        if (text == answer.explanation.sentence) continue;  // it has been said
        session.err << prefix + "yes, but " + host::escaped(text) + "\n" << std::flush;
    }
    return isClean;
}

// What the service said and what is printed may differ: hardware that could not be asked makes it
// unknown, whatever was said.
int match(Session& session, const Options& options) {
    const bool hasFile = !options.file.empty();
    if (!hasFile && options.items.empty()) {
        throw session.failure("usage", "give the items of the package, or --file", session.help());
    }
    const PackageList list =
            hasFile ? readList(session, options.file) : PackageList{options.items, {}};
    Answer answer = ask(session, list.items, options.otaTime);
    Explanation& explanation = answer.explanation;
    std::string hint;
    const std::string why = whyNotAsked(session, answer.silent.parts, &hint);
    if (!why.empty()) withhold(answer.silent, why, &explanation);
    for (Doubt& doubt : explanation.doubts) {
        if (doubt.item) doubt.text = list.placeOf(*doubt.item) + doubt.text;
    }
    if (session.json) {
        printJson(session.out, asJson(explanation));
    } else {
        session.out << asText(session, explanation) << std::flush;
    }
    const bool isClean = printNotes(session, answer);
    if (!why.empty()) session.err << "hint: " + hint + "\n" << std::flush;
    if (explanation.verdict == "unknown") return kCouldNotAsk;
    if (!answer.fits || isClean || !options.strict) return answer.fits ? kDone : kServiceSaidNo;
    session.err << "tarqctl: match: --strict takes no such yes\n" << std::flush;
    return kServiceSaidNo;
}

}  // namespace

Run declareMatch(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::Option* items =
            app.add_option("ITEM", options->items,
                           "NAME:VALUE, as hwinfo prints them; overlay_id:LIST names the boards\n"
                           "that the package is for. A package has to name every part of the\n"
                           "board")
                    ->check(checkUtf8);
    app.add_option("--file", options->file,
                   "items, one a line, or - for standard input; blank lines\n"
                   "and those that begin with # are passed over")
            ->type_name("FILE")
            ->excludes(items);
    app.add_option("--ota-time", options->otaTime,
                   "hand over the package's time first, for this and all\n"
                   "later callers")
            ->type_name("N")
            ->check([](const std::string& text) {
                int64_t ignored = 0;
                return parseOtaTime(text, &ignored);
            });
    app.add_flag("--strict", options->strict,
                 "exit 1 also for a yes of which anything was not compared, the overlay\n"
                 "too, or whose list has unknown or doubled names or items over their\n"
                 "limit");
    return [options](Session& session) { return match(session, *options); };
}

}  // namespace tarq::tools
