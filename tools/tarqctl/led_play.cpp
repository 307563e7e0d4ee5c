// led play NAME|PATH: the daemon reads the file. What it makes of it is told by its log; or, in a
// dry run, by its own reader.
#include <errno.h>
#include <string.h>

#include <CLI/App.hpp>
#include <filesystem>
#include <ostream>

#include "common/device_file.h"
#include "rgbleds/effect_file.h"
#include "rgbleds/led_attributes.h"
#include "tools/tarqctl/board.h"
#include "tools/tarqctl/led_commands.h"
#include "tools/tarqctl/print_json.h"
#include "tools/tarqctl/text.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace fs = std::filesystem;

static Failure notLoaded(const Session& session, const std::string& why, const std::string& hint) {
    return session.failure("not_loaded", why, hint, kServiceSaidNo);
}

// The path for the daemon, which has another directory. A name with ".xml" may be a file here.
static std::string fileOf(const std::string& word) {
    const bool hasEnding = fs::path(word).extension() == ".xml";
    std::error_code ignored;
    if (word.find('/') != std::string::npos || (hasEnding && fs::is_regular_file(word, ignored))) {
        return fs::absolute(word);
    }
    return "/vendor/etc/leds/" + word + (hasEnding ? "" : ".xml");
}

static int play(Session& session, const std::string& file) {
    const std::optional<LedCall> call =
            askLeds(session, "loadXmlFile", [&file](auto& leds, LedAnswer* answer) {
                int32_t meaningless = 0;
                answer->arguments = {file};
                return leds.loadXmlFile(android::String16(file.c_str()), &meaningless);
            });
    if (!call) {
        throw session.failure("not_known", "the log does not tell whether it was loaded",
                              session.next("services"));
    }
    if (call->fileUnreadable) {
        throw notLoaded(session, file + ": the daemon cannot open it, or it is no XML",
                        session.next("log"));
    }
    for (const std::string& what : call->leftOut) session.notice("left out: " + escaped(what));
    return printDone(session);
}

// As the trace of the driver has it.
static void printRecord(const Session& session, const std::string& attribute,
                        const std::string& text, int line) {
    const std::string name = attribute.substr(attribute.rfind('/') + 1);
    if (!session.json) {
        session.out << name + " " + escaped(text) + "\n";
    } else if (line == 0) {
        printJson(session.out, {{"attribute", name}, {"text", text}});
    } else {
        printJson(session.out, {{"attribute", name}, {"text", text}, {"line", line}});
    }
}

static void printLeftOut(const Session& session, const std::string& file, const EffectItem& item) {
    const std::string what = item.kind == EffectItem::kEmptyStep
                                     ? "a step without a text, its id is " + item.text
                                     : item.text + " is missing";
    if (session.json) {
        printJson(session.out, {{"leftOut", what}, {"line", item.line}});
    } else {
        session.out << "# " + escaped(file) + ":" + std::to_string(item.line) +
                               ": left out: " + escaped(what) + "\n";
    }
}

static int playDry(const Session& session, const std::string& file) {
    const std::string hint = "tarqctl led play --help";
    const std::unique_ptr<FILE, int (*)(FILE*)> stream(fopen(deviceFile(file).c_str(), "re"),
                                                       fclose);
    if (stream == nullptr) throw notLoaded(session, file + ": " + strerror(errno), hint);
    std::vector<EffectItem> items;
    if (!readEffect(stream.get(), &items)) {
        throw notLoaded(session, file + ": it is no XML, the daemon would send nothing", hint);
    }
    printRecord(session, kTransferState, "1", 0);
    for (const EffectItem& item : items) {
        if (item.kind == EffectItem::kParameter || item.kind == EffectItem::kStep) {
            const bool isStep = item.kind == EffectItem::kStep;
            printRecord(session, isStep ? kTransferData : kTransferValues, item.text, item.line);
        } else {
            printLeftOut(session, file, item);
        }
    }
    printRecord(session, kTransferState, "0", 0);
    session.out << std::flush;
    return kDone;
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
                 "print what the daemon would send to the driver, and what\n"
                 "it would leave out; needs no daemon");
    return [word, dry](Session& session) {
        const std::string file = fileOf(*word);
        if (!*dry) return play(session, file);
        // A file from here is looked at without a board.
        std::error_code ignored;
        if (!fs::is_regular_file(file, ignored)) openBoard(session);
        return playDry(session, file);
    };
}

}  // namespace tarq::tools
