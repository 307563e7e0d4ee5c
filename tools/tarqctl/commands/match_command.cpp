// match ITEM…: asks the service whether a package fits. The verdict is the service's; its reasons
// are in the log that it wrote meanwhile, on whichever thread, beside the requests of others. Ours
// is one with our items that came out as ours did.
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <string.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <ostream>

#include "host/run/growing_file.h"
#include "host/run/text.h"
#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/match/log.h"
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

struct Answer {
    bool fits = false;
    bool isExplained = false;
    Explanation explanation;
};

// One item a line. A file may come from another system: the end of a line may have a CR.
Items itemsIn(const Session& session, const std::string& file) {
    Items items;
    int number = 0;
    readLines(session, file, [&](std::string line) {
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const bool isBlank = line.find_first_not_of(" \t") == std::string::npos;
        if (isBlank || line[0] == '#') return;
        std::string why = checkUtf8(line);
        if (line.find('\0') != std::string::npos) why = "it has a NUL in it";
        if (!why.empty()) {
            throw session.failure("bad_item", file + ":" + std::to_string(number) + ": " + why,
                                  "tarqctl match --help");
        }
        items.push_back(line);
    });
    return items;
}

// Without reasons.
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

// The call returns when all that it logs has been written.
Answer ask(Session& session, const Items& items, const std::string& otaTime) {
    const Daemon daemon(session, "it asks the hardware, or the daemon is still starting, or hangs");
    const auto service = daemon.service<IHardwareInfoService>();
    int64_t time = 0;
    if (!otaTime.empty() && parseOtaTime(otaTime, &time).empty()) {
        daemon.expectOk(service->setOtaTimestamp(time));
    }
    const std::string path = session.board.log();
    host::GrowingFile log(path);
    log.read([](const std::string&) {});
    Answer answer;
    std::vector<android::String16> list;
    for (const std::string& item : items) list.emplace_back(item.data(), item.size());
    daemon.expectOk(service->isMatchHardwareInfo(list, &answer.fits));
    MatchLog requests;
    const int error = log.read([&requests](const std::string& line) { requests.add(line); });
    std::string why = path + ": " + (error != 0 ? strerror(error) : "it has no such request");
    for (const MatchRequest& request : requests.with(items)) {
        answer.explanation = explain(request);
        answer.isExplained = request.outcome == (answer.fits ? Outcome::kYes : Outcome::kNo);
        if (answer.isExplained) return answer;
        if (answer.explanation.verdict == "unknown") why = answer.explanation.sentence;
    }
    answer.explanation = verdictAlone(daemon, items, why);
    answer.explanation.verdict = answer.fits ? "yes" : "no";
    return answer;
}

int match(Session& session, const Options& options) {
    const bool hasFile = !options.file.empty();
    if (!hasFile && options.items.empty()) {
        throw session.failure("usage", "give the items of the package, or --file",
                              "tarqctl match --help");
    }
    const Items items = hasFile ? itemsIn(session, options.file) : options.items;
    const Answer answer = ask(session, items, options.otaTime);
    const Explanation& explanation = answer.explanation;
    if (session.json) {
        printJson(session.out, asJson(explanation));
    } else {
        session.out << asText(explanation) << std::flush;
    }
    // Without the items, which may be many.
    const std::string prefix = "tarqctl: match: ";
    for (const std::string& doubt : explanation.doubts) {
        session.err << prefix + host::escaped(doubt) + "\n" << std::flush;
    }
    for (const std::string& text : explanation.notCompared) {
        session.err << prefix + "yes, but " + host::escaped(text) + "\n" << std::flush;
    }
    const bool compared = answer.isExplained && explanation.notCompared.empty();
    return answer.fits && (compared || !options.strict) ? kDone : kServiceSaidNo;
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
    app.add_flag("--strict", options->strict, "exit 1 for a yes without a comparison, too");
    return [options](Session& session) { return match(session, *options); };
}

}  // namespace tarq::tools
