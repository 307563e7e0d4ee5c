// A lamp effect file is read, or refused without a trace. There is no driver: its texts go nowhere.
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include "rgbleds/effect_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;  // there is no such stream
    FILE* const file = fmemopen(const_cast<uint8_t*>(data), size, "r");
    std::vector<EffectItem> items = {{EffectItem::kStep, 0, "earlier"}};
    if (!readEffect(file, &items)) {
        if (items.size() != 1 || items[0].text != "earlier") abort();
    } else if (items.size() < 3) {
        abort();  // the parameters are told, be they there or not
    }
    fclose(file);
    return 0;
}
