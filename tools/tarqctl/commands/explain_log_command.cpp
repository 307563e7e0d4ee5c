// explain-log [FILE]: the same explanations for a log that was saved on any board. It may have been
// packed, quoted, or cut anywhere, and have lost lines on its way here.
#include <errno.h>
#include <string.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <fstream>
#include <ostream>
#include <utility>

#include "host/run/text.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/log/log_source.h"
#include "tools/tarqctl/log/saved_log.h"
#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/match/match_log.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

// One text of the file, or one member of an archive. A log is read into it line by line and asked
// for its requests at the end.
struct Log {
    explicit Log(std::string name) : member(std::move(name)) {}

    const std::string member;
    MatchLog requests;
    SavedLog lines{[this](const LogLine& line) { requests.add(line); }};
    bool isUnderstood = false;
};
using Logs = std::vector<std::unique_ptr<Log>>;

// What the log's format tells of it: "05-01 10:00:00.123  pid 512  tid 530  in FS/log.txt". Some
// formats tell neither time nor thread, and one text alone has no name.
std::string titleOf(const std::string& member, const MatchRequest& request) {
    std::string title = request.time;
    const auto add = [&title](const std::string& text) {
        title += (title.empty() ? "" : "  ") + text;
    };
    if (request.pid != 0) add("pid " + std::to_string(request.pid));
    if (request.tid != 0) add("tid " + std::to_string(request.tid));
    if (!member.empty()) add("in " + host::escaped(member));
    return title.empty() ? "a request" : title;
}

void print(const Session& session, const std::string& member, const MatchRequest& request,
           const Explanation& explanation) {
    if (session.json) {
        Json json = {{"time", orNull(request.time)},
                     {"pid", orNull(request.pid)},
                     {"tid", orNull(request.tid)}};
        if (!member.empty()) json["member"] = member;
        json.update(asJson(explanation));
        printJson(session.out, json);
        return;
    }
    std::string text = titleOf(member, request) + "\n" + asText(session, explanation);
    for (const Doubt& doubt : explanation.doubts) {
        text += "note: " + host::escaped(doubt.text) + "\n";
    }
    for (const std::string& missing : explanation.notCompared) {
        if (missing == explanation.sentence) continue;  // it has been said
        text += "note: " + host::escaped(missing) + "\n";
    }
    session.out << text << std::flush;
}

// Reads all that is in the file; what it seems to be.
std::string read(const Session& session, const std::string& file, Logs* logs) {
    std::ifstream opened;
    errno = 0;
    if (file != "-") opened.open(file, std::ios::binary);
    LogSink sink;
    sink.begin = [&](const std::string& member) { logs->push_back(std::make_unique<Log>(member)); };
    sink.take = [&](const std::string& line) {
        if (logs->back()->lines.add(line)) logs->back()->isUnderstood = true;
    };
    try {
        if (file != "-" && !opened.is_open()) throw std::runtime_error(strerror(errno));
        return readLog(file == "-" ? session.in : opened, sink);
    } catch (const std::runtime_error& error) {
        throw session.failure("cannot_read", ofFile(session, file, error.what()), session.help());
    }
}

// Why nothing can be told. The most that can be said: a log without tags, a log without a request,
// or no log at all.
std::string whyNothing(const Logs& logs, const std::string& kind) {
    const auto any = [&logs](const auto& is) {
        return std::any_of(logs.begin(), logs.end(), [&](const auto& log) { return is(*log); });
    };
    if (any([](const Log& log) { return log.lines.lacksTags(); })) {
        return "it is a log without tags, such as `logcat -v thread` writes it";
    }
    if (any([](const Log& log) { return log.isUnderstood; })) {
        return "it is a log, but no match request is in it";
    }
    if (kind == "empty" && ferror(stdin) != 0) return "it is closed";
    return kind == "empty" ? "it is empty" : "no line of any logcat format; it is " + kind;
}

// One no makes it a no, whatever else is unknown: that is what a script asks about.
int explainLog(Session& session, const std::string& file) {
    Logs logs;
    const std::string kind = read(session, file, &logs);
    bool isFirst = true;
    bool anyNo = false;
    bool anyUnknown = false;
    for (const auto& log : logs) {
        for (const MatchRequest& request : log->requests.all()) {
            if (!std::exchange(isFirst, false) && !session.json) session.out << "\n";
            const Explanation explanation = explain(request);
            print(session, log->member, request, explanation);
            anyNo = anyNo || explanation.verdict == "no";
            anyUnknown = anyUnknown || explanation.verdict == "unknown";
        }
    }
    if (isFirst) {
        throw session.failure("no_request", ofFile(session, file, whyNothing(logs, kind)),
                              session.help());
    }
    return anyNo ? kServiceSaidNo : anyUnknown ? kCouldNotAsk : kDone;
}

}  // namespace

Run declareExplainLog(CLI::App& app) {
    const auto file = std::make_shared<std::string>("-");
    app.add_option("FILE", *file,
                   "a log as logcat writes it, in any of its formats (threadtime tells\n"
                   "most), in UTF-8 or UTF-16, quoted in a mail, packed with gzip; or a\n"
                   "bug report, a zip archive. Standard input when it is - or left out.\n"
                   "Exits with 0 when all packages fit, 1 when one did not, and 2 when of\n"
                   "one or all it cannot be told");
    return [file](Session& session) { return explainLog(session, *file); };
}

}  // namespace tarq::tools
