// explain-log [FILE]: the same explanations for a log that was saved on any board. It may have been
// cut anywhere, and have lost lines on its way here.
#include <CLI/App.hpp>
#include <ostream>

#include "host/run/text.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/match/log.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

void print(const Session& session, const MatchRequest& request, const Explanation& explanation) {
    if (session.json) {
        Json json = {{"time", request.time}, {"pid", request.pid}, {"tid", request.tid}};
        json.update(asJson(explanation));
        printJson(session.out, json);
        return;
    }
    std::string text = request.time + "  pid " + std::to_string(request.pid) + "  tid " +
                       std::to_string(request.tid) + "\n" + asText(explanation);
    for (const Doubt& doubt : explanation.doubts)
        text += "note: " + host::escaped(doubt.text) + "\n";
    for (const std::string& missing : explanation.notCompared)
        text += "note: " + host::escaped(missing) + "\n";
    session.out << text << std::flush;
}

int explainLog(Session& session, const std::string& file) {
    MatchLog log;
    bool isEmpty = true;
    bool isUnderstood = false;
    bool hasCr = false;  // at the end of every line, after another system, so the first one tells
    readLines(session, file, [&](std::string line) {
        const bool endsInCr = !line.empty() && line.back() == '\r';
        if (!isUnderstood) hasCr = endsInCr;
        if (hasCr && endsInCr) line.pop_back();
        if (log.add(line)) isUnderstood = true;
        isEmpty = false;
    });
    if (!isEmpty && !isUnderstood) {
        throw session.failure("not_threadtime",
                              (file == "-" ? "standard input" : file) +
                                      ": no line is one of `logcat -v threadtime`",
                              "tarqctl explain-log --help");
    }
    const std::vector<MatchRequest> requests = log.all();
    if (requests.empty()) session.notice("no match request is in it");
    for (size_t i = 0; i < requests.size(); ++i) {
        if (i > 0 && !session.json) session.out << "\n";
        print(session, requests[i], explain(requests[i]));
    }
    return kDone;
}

}  // namespace

Run declareExplainLog(CLI::App& app) {
    const auto file = std::make_shared<std::string>("-");
    app.add_option("FILE", *file,
                   "written by `logcat -v threadtime`; standard input when it is - or\n"
                   "left out");
    return [file](Session& session) { return explainLog(session, *file); };
}

}  // namespace tarq::tools
