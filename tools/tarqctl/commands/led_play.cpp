// led play NAME|PATH: the daemon reads the file. What it makes of it is told by its log, and what
// the driver says to that by the board; or, in a dry run, by the daemon's own reader and a driver
// by the same rules.
#include <errno.h>
#include <string.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <filesystem>
#include <ostream>
#include <set>

#include "common/device_file.h"
#include "host/run/file_systems.h"
#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/commands/led_commands.h"
#include "tools/tarqctl/log/led_outcome.h"
#include "tools/tarqctl/user_input.h"
#include "tools/tarqctl/view/effect_transfer.h"

namespace tarq::tools {

namespace fs = std::filesystem;

static constexpr char kFolder[] = "/vendor/etc/leds/";

// The path for the daemon, which has another directory. A name with ".xml" may be a file here.
static std::string fileOf(const std::string& word) {
    const bool hasEnding = fs::path(word).extension() == ".xml";
    std::error_code ignored;
    if (word.find('/') != std::string::npos || (hasEnding && fs::is_regular_file(word, ignored))) {
        return fs::absolute(word);
    }
    return kFolder + word + (hasEnding ? "" : ".xml");
}

// For a name that is none: the names that there are, and files of that name here.
static Failure noSuchEffect(const Session& session, const std::string& word, std::string why) {
    std::set<std::string> names;
    std::error_code unreadable;  // the same as empty
    for (const auto& entry : fs::directory_iterator(deviceFile(kFolder), unreadable)) {
        if (entry.path().extension() == ".xml") names.insert(entry.path().stem());
    }
    why += names.empty() ? "; the board has no effects there" : "; the board has";
    for (const std::string& name : names) {
        why += (name == *names.begin() ? " " : ", ") + name;
    }
    std::string hint = names.empty() ? session.help()
                                     : session.next("led play " + shellQuoted(*names.begin()));
    for (const std::string& here : {word, word + ".xml"}) {
        if (!fs::is_regular_file(here, unreadable)) continue;
        why += "; " + here + " of this directory is another file";
        hint = session.next("led play " + shellQuoted("./" + here));
    }
    return session.failure("not_loaded", why, hint, kServiceSaidNo);
}

// A path that does not exist is told by the system's own words; for a name those would be of a file
// that nobody has typed.
static bool isMissingName(const std::string& word, const std::string& file) {
    std::error_code error;
    return word.find('/') == std::string::npos && !fs::exists(deviceFile(file), error) && !error;
}

// The daemon tells only that it could not open or read the file; why is found by reading it here.
static Failure notLoaded(const Session& session, const std::string& word, const std::string& file) {
    const std::string why = whyUnreadable(file);
    if (why.empty()) {
        return session.failure("not_loaded", file + ": the daemon cannot read it, only tarqctl can",
                               "ls -l " + shellQuoted(deviceFile(file)), kServiceSaidNo);
    }
    if (isMissingName(word, file)) return noSuchEffect(session, word, why);
    return session.failure("not_loaded", why, session.help(), kServiceSaidNo);
}

// With the places in the file, as far as it can be read here. The driver knows one transfer, and a
// second one at the same time gets in between: a record that is not of this file tells of it.
static std::vector<std::string> placed(const Session& session, const std::string& file,
                                       const std::vector<host::LedRecord>& refused) {
    EffectTransfer sent = {file, {}, std::nullopt};
    if (whyUnreadable(file).empty()) sent = transferEffect(session, file, board::kMostLeds);
    std::vector<std::string> lines;
    auto from = sent.records.begin();
    for (const host::LedRecord& record : refused) {
        EffectRecord shown = {record.attribute, record.text, 0, record.whyRefused};
        const auto at = std::find_if(from, sent.records.end(), [&](const EffectRecord& one) {
            return one.attribute == record.attribute && one.text == record.text;
        });
        if (at != sent.records.end()) {
            shown.line = at->line;
            from = at + 1;
        } else if (!sent.records.empty()) {
            throw session.failure("mixed",
                                  "another effect is transferred at the same time, and the driver "
                                  "has refused records of one of the two; wait until it is done, "
                                  "and play this one again",
                                  session.next("trace -f"));
        }
        lines.push_back(sent.trouble(shown));
    }
    return lines;
}

// The service answers nothing of use, so without its log nothing is known of what became of the
// file.
static int play(Session& session, const std::string& word, const std::string& file) {
    openBoard(session);
    LedRefusals refusals(session.board.ledRecords());
    const std::optional<LedCall> call = askLeds(
            session, "loadXmlFile",
            [&file](auto& leds, LedAnswer* answer) {
                int32_t meaningless = 0;
                answer->arguments = {file};
                return leds.loadXmlFile(android::String16(file.c_str()), &meaningless);
            },
            {true, "the daemon goes on with the transfer, so do not start another", "trace -f"});
    if (!call) {
        const std::string log = session.board.log();
        const int error = access(log.c_str(), R_OK) != 0 ? errno : host::writeError(session.board);
        throw session.failure("not_known",
                              "the log does not tell whether it was loaded" +
                                      (error != 0 ? ", " + log + ": " + strerror(error) : ""),
                              session.next("services"));
    }
    if (call->fileUnreadable) throw notLoaded(session, word, file);
    for (const std::string& what : call->leftOut) {
        session.notice("left out: " + what);
    }
    const auto isTransfer = [](const host::LedRecord& record) {
        return record.attribute.rfind("xml_effect_trans_", 0) == 0;
    };
    throwIfAny(session, placed(session, file, refusals.find(isTransfer)));
    return printDone(session);
}

// Members that say nothing are left out.
static void printJson(const Session& session, const EffectRecord& record) {
    Json json;
    if (record.attribute.empty()) {
        json["left_out"] = record.text;
    } else {
        json["attribute"] = record.attribute;
        json["text"] = record.text;
    }
    if (record.line != 0) json["line"] = record.line;
    if (!record.whyRefused.empty()) {
        json["refused"] = true;
        json["why"] = record.whyRefused;
    }
    printJson(session.out, json);
}

// The records as the trace of the driver has them; between them, as comments, what is left out and
// what is refused.
static int playDry(Session& session, const std::string& word, const std::string& file) {
    const std::optional<size_t> leds = findLeds(session, file);
    if (isMissingName(word, file)) throw noSuchEffect(session, word, whyUnreadable(file));
    const EffectTransfer transfer = transferEffect(session, file, leds.value_or(board::kMostLeds));
    if (!leds) {
        session.notice("no board tells how many LEDs there are; LEDs 0 to " +
                       std::to_string(board::kMostLeds - 1) + " are taken to be there");
    }
    bool isTaken = true;
    for (const EffectRecord& record : transfer.records) {
        isTaken &= record.whyRefused.empty();
        if (session.json) {
            printJson(session, record);
            continue;
        }
        if (!record.attribute.empty()) {
            session.out << record.attribute + " " + host::escaped(record.text) + "\n";
        }
        const std::string trouble = transfer.trouble(record);
        if (!trouble.empty()) session.out << "# " + trouble + "\n";
    }
    session.out << std::flush;
    return isTaken ? kDone : kServiceSaidNo;
}

Run declareLedPlay(CLI::App& app) {
    const auto word = std::make_shared<std::string>();
    const auto dry = std::make_shared<bool>(false);
    app.add_option("NAME", *word,
                   "an effect of the board, in /vendor/etc/leds, with or without\n"
                   ".xml; or the path of a file, of the device or from here")
            ->required()
            ->check(checkUtf8);
    app.add_flag("--dry-run", *dry,
                 "print what the daemon would send to the driver, what it\n"
                 "would leave out and what the driver would refuse, which is\n"
                 "exit code 1; needs no daemon, and for a file from here no board");
    return [word, dry](Session& session) {
        const std::string file = fileOf(*word);
        return *dry ? playDry(session, *word, file) : play(session, *word, file);
    };
}

}  // namespace tarq::tools
