// The LED service answers "done" also where an attribute could not be opened, and a file that it
// cannot read costs it nothing; only its log tells. Each operation ends with a line that repeats
// its arguments, and what went wrong stands before that line on the same thread. What the driver
// refuses is not even in the log, but in the records of the board.
#include "tools/tarqctl/log/led_outcome.h"

#include <algorithm>
#include <map>
#include <utility>

#include "rgbleds/led_attributes.h"
#include "tools/tarqctl/log/log_line.h"

namespace tarq::tools {

namespace {

using Arguments = std::vector<std::string>;

// Each begins with the operation's name. In the words of the daemon's printf; the numbers are those
// of the call, in the form in which it prints them.
constexpr const char* kLastLines[] = {
        "setRgbColor:id=%d,reg=%d",
        "setRgbBrightness:id=%d,reg=%d",
        "getRgbColor:id=%d,reg=0x%x",
        "getRgbBrightness:id=%d,reg=0x%x",
        "setLedList:id=%d, color=%d, brightness=%d",
        "setRgbEffect:id=%d,type=%d,color=%d,brightness=%d,cont=%d,val=%d",
        "loadXmlFile:path=%s",
        "stopLampEffect",
};

// What went wrong is kept until the last line of its call comes on the same thread.
void takeTrouble(const std::string& text, LedCall* call) {
    if (const auto path = printedArguments("open file %s failed!", text)) {
        auto& paths = call->notOpened;
        if (std::count(paths.begin(), paths.end(), (*path)[0]) == 0) paths.push_back((*path)[0]);
    } else if (text == "Error opening xml file .") {
        call->fileUnreadable = true;
    } else if (printedArguments("%s: attribute %s of <%s> is missing", text)) {
        call->leftOut.push_back(text);
    } else if (const auto step = printedArguments("eff id =%s ", text)) {
        call->leftOut.push_back("a step without a text, its id is " + (*step)[0]);
    }
}

bool isTroubled(const LedCall& call) {
    return call.fileUnreadable || !call.notOpened.empty() || !call.leftOut.empty();
}

// The pattern with the arguments in the place of its conversions.
std::string filled(std::string pattern, const Arguments& arguments) {
    size_t at = 0;
    for (const std::string& argument : arguments) {
        at = pattern.find('%', at);
        if (at == std::string::npos) break;
        pattern.replace(at, 2, argument);
        at += argument.size();
    }
    return pattern;
}

}  // namespace

LedLog::LedLog(const std::string& path) : mFile(path) {
    mFile.skip();
}

// Calls of others stand in between, on their own threads. Of two calls that look the same the one
// that went wrong is taken, since nothing tells whose it was.
std::optional<LedCall> LedLog::find(const std::string& operation, const Arguments& arguments) {
    std::map<std::pair<int, int>, LedCall> running;  // by pid and tid
    std::optional<LedCall> found;
    mFile.read([&](const std::string& line) {
        const std::optional<LogLine> parsed = parseLogLine(line);
        if (!parsed || parsed->tag != kLogTag) return;
        LedCall& call = running[{parsed->pid, parsed->tid}];
        takeTrouble(parsed->text, &call);
        for (const std::string lastLine : kLastLines) {
            const auto printed = printedArguments(lastLine.c_str(), parsed->text);
            if (!printed) continue;
            // A long path is cut there, and one with a newline goes on in another line.
            const bool isOurs = lastLine.substr(0, lastLine.find(':')) == operation &&
                                parsed->text == asLogged(filled(lastLine, arguments)).front();
            if (isOurs && (!found || isTroubled(call))) found = call;
            call = {};
        }
    });
    return found;
}

LedRefusals::LedRefusals(const std::string& records) : mRecords(records) {
    mRecords.skip();
}

// The first line of the trace, with the number of LEDs, is no record and has no refusal.
std::vector<host::LedRecord> LedRefusals::find(const IsOurs& isOurs) {
    std::vector<host::LedRecord> refused;
    mRecords.read([&](const std::string& line) {
        host::LedLine parsed;
        if (!host::parseLedLine(line, &parsed) || parsed.record.whyRefused.empty()) return;
        if (isOurs(parsed.record)) refused.push_back(parsed.record);
    });
    return refused;
}

}  // namespace tarq::tools
