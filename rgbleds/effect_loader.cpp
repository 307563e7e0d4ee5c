#include "rgbleds/effect_loader.h"

#include <android/log.h>

#include <memory>

#include "common/device_file.h"
#include "rgbleds/effect_file.h"
#include "rgbleds/led_attributes.h"

// One write for each item: the driver takes one record a write. A write that fails is logged where
// it is made, and the next one follows.
static void transfer(const char* path, const EffectItem& item) {
    switch (item.kind) {
        case EffectItem::kParameter:
            writeAttribute(kTransferValues, item.text);
            break;
        case EffectItem::kStep:
            writeAttribute(kTransferData, item.text);
            break;
        case EffectItem::kEmptyStep:
            __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s id =%s \n", "eff",
                                item.text.c_str());
            break;
        case EffectItem::kIncomplete:
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s:%d: %s is missing", path, item.line,
                                item.text.c_str());
            break;
    }
}

void parseXmlFile(const char* path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(deviceFile(path).c_str(), "re"), fclose);
    std::vector<EffectItem> items;
    if (file == nullptr || !readEffect(file.get(), &items)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Error opening xml file .\n");
        return;
    }
    // An effect that runs is not stopped first: what a new transfer does to it is the driver's
    // choice.
    writeAttribute(kTransferState, "1");
    for (const EffectItem& item : items) transfer(path, item);
    writeAttribute(kTransferState, "0");
}
