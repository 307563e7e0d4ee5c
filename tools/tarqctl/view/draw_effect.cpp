// The picture is what the board's driver shows: a file is read by the daemon's reader and handed to
// a driver as the daemon hands it on, whose effect is then sampled frame by frame.

#include <errno.h>
#include <string.h>

#include <filesystem>
#include <fstream>

#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/view/effect_picture.h"
#include "tools/tarqctl/view/effect_transfer.h"
#include "tools/tarqctl/view/gif.h"
#include "tools/tarqctl/view/leds.h"

namespace tarq::tools {

struct Drawn {
    board::LedEffect effect;
    size_t leds;
    std::string title;
};

// A picture of an effect that the driver would not play would be a wrong word, so a refusal ends
// it.
static Drawn effectOf(Session& session, const std::string& file) {
    const std::optional<size_t> leds = findLeds(session, file);
    const EffectTransfer transfer = transferEffect(session, file, leds.value_or(board::kMostLeds));
    std::vector<std::string> refusals;
    for (const EffectRecord& record : transfer.records) {
        const std::string trouble = transfer.trouble(record);
        if (!record.whyRefused.empty()) refusals.push_back(trouble);
        if (record.attribute.empty()) session.notice(trouble);
    }
    throwIfAny(session, refusals);
    const std::string name = std::filesystem::path(file).filename();
    Drawn drawn = {*transfer.effect, leds.value_or(1), name.substr(0, 40)};
    if (leds) return drawn;
    for (size_t led = 0; led < board::kMostLeds; ++led) {
        if (drawn.effect.names(led)) drawn.leds = led + 1;
    }
    const std::string last = std::to_string(drawn.leds - 1);
    session.notice("no board tells how many LEDs there are; " +
                   (drawn.leds == 1 ? "LED 0 alone is drawn" : "LEDs 0 to " + last + " are drawn") +
                   ", as the file names no further ones");
    return drawn;
}

// As it plays on the board, from its start on, whatever has gone by.
static Drawn whatPlays(Session& session) {
    openBoard(session);
    const LedReplay replay(session);
    const board::LedEffect* effect = replay.driver().effect();
    if (effect != nullptr) return {*effect, replay.leds(), "What runs"};
    throw session.failure("no_effect", "no effect runs; --effect FILE draws one that does not",
                          session.help());
}

// What the picture lacks is in its caption, and said on standard error as well.
static std::string gifOf(const Session& session, const Drawn& drawn) {
    const std::vector<EffectFrame> frames = framesOf(drawn.effect, drawn.leds);
    const std::vector<std::string> lacks = lacksOf(drawn.effect, frames);
    const EffectPicture picture(frames, captionOf(drawn.effect, drawn.title, lacks));
    for (const std::string& lack : lacks) session.notice(lack);
    Gif gif(picture.width(), picture.height(), picture.palette(), drawn.effect.loops());
    for (const EffectFrame& frame : frames) gif.add(picture.draw(frame.colours), frame.time);
    return gif.finish();
}

// The picture is complete before the file is touched, so what cannot be drawn leaves an older one
// as it was.
void drawEffect(Session& session, const std::string& effectFile, const std::string& gifFile) {
    const Drawn drawn = effectFile.empty() ? whatPlays(session) : effectOf(session, effectFile);
    const std::string bytes = gifOf(session, drawn);
    std::ofstream out(gifFile, std::ios::binary);
    out << bytes;
    if (out.flush()) return;
    throw session.failure("cannot_write", gifFile + ": " + strerror(errno), session.help());
}

}  // namespace tarq::tools
