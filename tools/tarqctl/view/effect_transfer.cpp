// What becomes of an effect file can be told without playing it: the daemon's own reader makes the
// records, and a driver by the rules of the board's takes or refuses them. Dry run, picture and the
// lines of what was refused in earnest all go by this one list.
#include "tools/tarqctl/view/effect_transfer.h"

#include <stdio.h>

#include <fstream>
#include <memory>

#include "common/device_file.h"
#include "host/run/records.h"
#include "host/run/text.h"
#include "host/run/xml_error.h"
#include "rgbleds/effect_file.h"
#include "rgbleds/led_attributes.h"
#include "tools/tarqctl/ask/board.h"

namespace tarq::tools {

std::string whyUnreadable(const std::string& file) {
    const host::XmlError error = host::findXmlError(deviceFile(file));
    return error.cause.empty() ? "" : error.describe(file);
}

// Why a file cannot be read is found first, by a reader that tells causes; the daemon's has none.
static std::vector<EffectItem> readItems(const Session& session, const std::string& path) {
    std::string why = whyUnreadable(path);
    std::vector<EffectItem> items;
    if (why.empty()) {
        const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(deviceFile(path).c_str(), "re"),
                                                         fclose);
        if (file != nullptr && readEffect(file.get(), &items)) return items;
        why = path + ": it has changed meanwhile";
    }
    throw session.failure("not_loaded", why + "; the daemon would send nothing", session.help(),
                          kServiceSaidNo);
}

// The attributes are the daemon's constants, so no name of one stands here again.
static EffectRecord recordOf(const EffectItem& item) {
    switch (item.kind) {
        case EffectItem::kParameter:
            return {kTransferValues, item.text, item.line};
        case EffectItem::kStep:
            return {kTransferData, item.text, item.line};
        case EffectItem::kEmptyStep:
            return {"", "a step without a text, its id is " + item.text, item.line};
        case EffectItem::kIncomplete:
            return {"", item.text + " is missing", item.line};
    }
    return {};
}

// All records are written to one driver, since whether a later one is taken depends on those before
// it.
EffectTransfer transferEffect(const Session& session, const std::string& file, size_t leds) {
    EffectTransfer transfer = {file, {{kTransferState, "1"}}, std::nullopt};
    for (const EffectItem& item : readItems(session, file)) {
        transfer.records.push_back(recordOf(item));
    }
    transfer.records.push_back({kTransferState, "0"});
    board::LedDriver driver(leds);
    for (EffectRecord& record : transfer.records) {
        record.attribute.erase(0, record.attribute.rfind('/') + 1);
        if (record.attribute.empty()) continue;
        record.whyRefused = driver.write(record.attribute, record.text, 0);
    }
    if (driver.effect() != nullptr) transfer.effect = *driver.effect();
    return transfer;
}

std::string EffectTransfer::trouble(const EffectRecord& record) const {
    const std::string line = record.line != 0 ? ":" + std::to_string(record.line) : "";
    const std::string place = file + line + ": ";
    if (record.attribute.empty()) return host::escaped(place + "left out: " + record.text);
    if (record.whyRefused.empty()) return "";
    const std::string what = record.line != 0 ? "\"" + record.text + "\"" : "to play it";
    return host::escaped(place + "the driver refuses " + what + ": " + record.whyRefused);
}

// The first line of the trace tells it, so a board without one, as on plain files, does not tell.
std::optional<size_t> findLeds(Session& session, const std::string& file) {
    try {
        openBoard(session);
    } catch (const Failure&) {
        if (deviceFile(file) != file) throw;
        return std::nullopt;
    }
    std::ifstream records(session.board.ledRecords());
    std::string first;
    host::LedLine line;
    if (!std::getline(records, first) || !host::parseLedLine(first, &line)) return std::nullopt;
    return line.leds;
}

void throwIfAny(const Session& session, const std::vector<std::string>& refusals) {
    if (refusals.empty()) return;
    for (size_t i = 0; i + 1 < refusals.size(); ++i) session.notice(refusals[i]);
    throw session.failure("refused", refusals.back(), session.help(), kServiceSaidNo);
}

}  // namespace tarq::tools
