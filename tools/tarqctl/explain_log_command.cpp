// explain-log [FILE]: the same explanations for a log that was saved on any board.
#include <CLI/App.hpp>
#include <ostream>

#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/match_requests.h"
#include "tools/tarqctl/print_explanation.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

// A log that went through another system has a CR at the end of every line, so the first one tells.
class LogInput {
  public:
    void take(std::string line) {
        if (!mUnderstood) mHasCr = !line.empty() && line.back() == '\r';
        if (mHasCr && !line.empty() && line.back() == '\r') line.pop_back();
        if (mRequests.add(line)) mUnderstood = true;
        mIsEmpty = false;
    }
    bool isOtherFormat() const { return !mIsEmpty && !mUnderstood; }
    std::vector<MatchRequest> requests() const { return mRequests.all(); }

  private:
    MatchRequests mRequests;
    bool mIsEmpty = true;
    bool mUnderstood = false;
    bool mHasCr = false;
};

void print(const Session& session, const MatchRequest& request, const Explanation& explanation) {
    if (session.json) {
        Json json = {{"time", request.time}, {"pid", request.pid}, {"tid", request.tid}};
        json.update(asJson(explanation));
        printJson(session.out, json);
        return;
    }
    std::string text = request.time + "  pid " + std::to_string(request.pid) + "  tid " +
                       std::to_string(request.tid) + "\n" + asText(explanation);
    for (const std::string& doubt : explanation.doubts) text += "note: " + printable(doubt) + "\n";
    for (const std::string& missing : explanation.notCompared)
        text += "note: " + printable(missing) + "\n";
    session.out << text << std::flush;
}

int explainLog(Session& session, const std::string& file) {
    LogInput log;
    readLines(session, file, [&log](const std::string& line) { log.take(line); });
    if (log.isOtherFormat()) {
        throw session.failure("not_threadtime",
                              (file == "-" ? "standard input" : file) +
                                      ": no line is one of `logcat -v threadtime`",
                              "tarqctl explain-log --help");
    }
    const std::vector<MatchRequest> requests = log.requests();
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
