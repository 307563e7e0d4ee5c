#include "host/board/view/effect_reader.h"

#include <errno.h>
#include <stdio.h>

#include <memory>
#include <system_error>

#include "host/board/led_driver.h"
#include "host/board/view/views.h"
#include "rgbleds/effect_file.h"

namespace tarq::board {

static std::vector<EffectItem> itemsOf(const std::filesystem::path& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "re"), fclose);
    if (file == nullptr) throw std::system_error(errno, std::system_category(), path);
    std::vector<EffectItem> items;
    if (readEffect(file.get(), &items)) return items;
    throw std::runtime_error(path.string() + ": cannot be read as XML with an element in it");
}

LedEffect readEffectFile(const std::filesystem::path& path, size_t leds) {
    LedDriver driver(leds);
    driver.write("xml_effect_trans_state", "1", 0);
    for (const EffectItem& item : itemsOf(path)) {
        const std::string place = path.string() + ":" + std::to_string(item.line) + ": ";
        bool isTaken = true;
        if (item.kind == EffectItem::kParameter) {
            isTaken = driver.write("xml_effect_trans_vals", item.text, 0);
        } else if (item.kind == EffectItem::kStep) {
            isTaken = driver.write("xml_effect_trans_data", item.text, 0);
        } else if (item.kind == EffectItem::kEmptyStep) {
            fprintf(stderr, "%sa step without a text is left out\n", place.c_str());
        } else {
            fprintf(stderr, "%s%s is missing\n", place.c_str(), item.text.c_str());
        }
        if (!isTaken) throw Refusal(place + "the driver refuses \"" + item.text + "\"");
    }
    if (driver.write("xml_effect_trans_state", "0", 0)) return *driver.effect();
    throw Refusal(path.string() + ": without loop, interval and duration the driver plays nothing");
}

}  // namespace tarq::board
