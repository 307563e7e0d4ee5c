#include <errno.h>
#include <stdio.h>

#include <fstream>
#include <memory>
#include <system_error>

#include "host/board/plain_files.h"
#include "host/board/view/effect_picture.h"
#include "host/board/view/gif.h"
#include "host/board/view/led_replay.h"
#include "host/board/view/views.h"
#include "rgbleds/effect_file.h"

namespace tarq::board {

namespace fs = std::filesystem;

static std::vector<EffectItem> itemsOf(const fs::path& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "re"), fclose);
    if (file == nullptr) throw std::system_error(errno, std::system_category(), path);
    std::vector<EffectItem> items;
    if (readEffect(file.get(), &items)) return items;
    throw std::runtime_error(path.string() + ": cannot be read as XML with an element in it");
}

// As the daemon would hand it to the driver. What it leaves out is named on standard error.
static LedEffect readEffectFile(const fs::path& path, size_t leds) {
    LedDriver driver(leds);
    driver.write("xml_effect_trans_state", "1", 0);
    for (const EffectItem& item : itemsOf(path)) {
        const std::string place = path.string() + ":" + std::to_string(item.line) + ": ";
        const bool isStep = item.kind == EffectItem::kStep;
        if (!isStep && item.kind != EffectItem::kParameter) {
            const bool isEmpty = item.kind == EffectItem::kEmptyStep;
            const std::string what = isEmpty ? "a step without a text" : item.text + " is missing";
            fprintf(stderr, "virtual_board: %sleft out: %s\n", place.c_str(), what.c_str());
        } else if (!driver.write(isStep ? "xml_effect_trans_data" : "xml_effect_trans_vals",
                                 item.text, 0)) {
            throw Refusal(place + "the driver refuses \"" + item.text + "\"");
        }
    }
    if (driver.write("xml_effect_trans_state", "0", 0)) return *driver.effect();
    throw Refusal(path.string() + ": the driver needs loop, interval and duration");
}

static std::string gifOf(const LedEffect& effect, size_t leds, const std::string& title) {
    const std::vector<EffectFrame> frames = framesOf(effect, leds);
    const EffectPicture picture(frames, captionOf(effect, title));
    Gif gif(picture.width(), picture.height(), picture.palette(), effect.loops());
    for (const EffectFrame& frame : frames) gif.add(picture.draw(frame.colours), frame.time);
    return gif.finish();
}

void drawEffect(const fs::path& board, const std::string& effectFile, const std::string& file) {
    const LedReplay replay(board);
    std::string bytes;
    if (!effectFile.empty()) {
        fs::path path = effectFile;
        if (PlainFiles::holds(path)) path = board / "root" / path.relative_path();
        const std::string title = path.filename().string().substr(0, 40);
        bytes = gifOf(readEffectFile(path, replay.leds()), replay.leds(), title);
    } else if (const LedEffect* effect = replay.driver().effect(); effect != nullptr) {
        bytes = gifOf(*effect, replay.leds(), "What runs");
    } else {
        throw std::runtime_error("no effect runs; --effect FILE draws one that does not");
    }
    std::ofstream out(file, std::ios::binary);
    out << bytes;
    if (!out.flush()) throw std::system_error(errno, std::system_category(), file);
}

}  // namespace tarq::board
