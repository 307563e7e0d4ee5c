// The picture is what the board's driver shows: a file is read by the daemon's reader and handed to
// a driver as the daemon hands it on, whose effect is then sampled frame by frame.
#include "tools/tarqctl/view/draw_effect.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "common/device_file.h"
#include "tools/tarqctl/view/effect_picture.h"
#include "tools/tarqctl/view/gif.h"
#include "tools/tarqctl/view/leds.h"

namespace tarq::tools {

static const char kHint[] = "tarqctl leds --help";

static Failure refused(const Session& session, const std::string& why, const std::string& hint) {
    return session.failure("not_loaded", why, hint, kServiceSaidNo);
}

std::vector<EffectItem> effectItems(const Session& session, const std::string& path,
                                    const std::string& hint) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(deviceFile(path).c_str(), "re"), fclose);
    if (file == nullptr) throw refused(session, path + ": " + strerror(errno), hint);
    std::vector<EffectItem> items;
    if (readEffect(file.get(), &items)) return items;
    throw refused(session, path + ": it is no XML, the daemon would send nothing", hint);
}

bool isSent(const EffectItem& item) {
    return item.kind == EffectItem::kParameter || item.kind == EffectItem::kStep;
}

std::string leftOutText(const EffectItem& item) {
    return item.kind == EffectItem::kEmptyStep ? "a step without a text, its id is " + item.text
                                               : item.text + " is missing";
}

static board::LedEffect effectOf(const Session& session, const std::string& path, size_t leds) {
    board::LedDriver driver(leds);
    driver.write("xml_effect_trans_state", "1", 0);
    for (const EffectItem& item : effectItems(session, path, kHint)) {
        const std::string place = path + ":" + std::to_string(item.line) + ": ";
        const bool isStep = item.kind == EffectItem::kStep;
        if (!isSent(item)) {
            session.notice(place + "left out: " + leftOutText(item));
        } else if (!driver.write(isStep ? "xml_effect_trans_data" : "xml_effect_trans_vals",
                                 item.text, 0)) {
            throw refused(session, place + "the driver refuses \"" + item.text + "\"", kHint);
        }
    }
    if (driver.write("xml_effect_trans_state", "0", 0)) return *driver.effect();
    throw refused(session, path + ": the driver needs loop, interval and duration", kHint);
}

static std::string gifOf(const board::LedEffect& effect, size_t leds, const std::string& title) {
    const std::vector<EffectFrame> frames = framesOf(effect, leds);
    const EffectPicture picture(frames, captionOf(effect, title));
    Gif gif(picture.width(), picture.height(), picture.palette(), effect.loops());
    for (const EffectFrame& frame : frames) gif.add(picture.draw(frame.colours), frame.time);
    return gif.finish();
}

void drawEffect(const Session& session, const std::string& effectFile, const std::string& gifFile) {
    const LedReplay replay(session);
    std::string bytes;
    if (!effectFile.empty()) {
        const std::string name = std::filesystem::path(effectFile).filename();
        bytes = gifOf(effectOf(session, effectFile, replay.leds()), replay.leds(),
                      name.substr(0, 40));
    } else if (const board::LedEffect* effect = replay.driver().effect(); effect != nullptr) {
        bytes = gifOf(*effect, replay.leds(), "What runs");
    } else {
        throw session.failure("no_effect", "no effect runs; --effect FILE draws one that does not",
                              kHint);
    }
    std::ofstream out(gifFile, std::ios::binary);
    out << bytes;
    if (out.flush()) return;
    throw session.failure("cannot_write", gifFile + ": " + strerror(errno), kHint);
}

}  // namespace tarq::tools
