#include <errno.h>

#include <fstream>
#include <optional>
#include <system_error>

#include "host/board/plain_files.h"
#include "host/board/view/effect_picture.h"
#include "host/board/view/effect_reader.h"
#include "host/board/view/gif.h"
#include "host/board/view/led_replay.h"
#include "host/board/view/views.h"

namespace tarq::board {

namespace fs = std::filesystem;

static std::string gifOf(const LedEffect& effect, size_t leds, const std::string& title) {
    const std::vector<EffectFrame> frames = framesOf(effect, leds);
    const EffectPicture picture(frames, captionOf(effect, title));
    Gif gif(picture.width(), picture.height(), picture.palette(), EffectPicture::kTransparent,
            effect.loops());
    for (const EffectFrame& frame : frames) gif.add(picture.draw(frame.colours), frame.time);
    return gif.finish();
}

void drawEffect(const fs::path& board, const std::string& effectFile, const std::string& file) {
    const LedReplay replay(board);
    std::string bytes;
    if (!effectFile.empty()) {
        // As the daemon finds it.
        const fs::path place = PlainFiles::holds(effectFile) ? board / "root" / effectFile.substr(1)
                                                             : fs::path(effectFile);
        const std::string title = place.filename().string().substr(0, 40);
        bytes = gifOf(readEffectFile(place, replay.leds()), replay.leds(), title);
    } else if (const LedEffect* effect = replay.driver().effect(); effect != nullptr) {
        bytes = gifOf(*effect, replay.leds(), "Effect");
    } else {
        throw std::runtime_error("no effect is played; --effect FILE draws another");
    }
    std::ofstream out(file, std::ios::binary);
    out << bytes;
    if (!out.flush()) throw std::system_error(errno, std::system_category(), file);
}

}  // namespace tarq::board
