#include "hardware_info/peripheral_list.h"

#include <android/log.h>
#include <stdio.h>
#include <stdlib.h>
#include <utils/String8.h>

#include "hardware_info/peripheral_table.h"

using android::String16;
using android::String8;

// The text of one row, at most 99 bytes.
static String16 itemOf(const PeripheralEntry& entry) {
    char item[100];
    const int length = snprintf(item, sizeof(item), "%s:%s", entry.name, entry.value);
    if (length >= static_cast<int>(sizeof(item))) {
        // A caller must never take a part's name that was cut for the name of another part.
        __android_log_print(ANDROID_LOG_FATAL, kLogTag,
                            "the item \"%s:\" is %d bytes long, at most %zu fit: shorten the part "
                            "name in the description file",
                            entry.name, length, sizeof(item) - 1);
        abort();
    }
    return String16(item, static_cast<size_t>(length));
}

bool _getHardwareInfo(std::vector<String16>* list) {
    list->reserve(list->size() + kPeripheralCount);
    for (const PeripheralEntry& entry : peripheralTable) list->push_back(itemOf(entry));

    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "service get peripherals(index=%d,overlay id=%d,xml hwVersions=%.64s,"
                        "product:%s):",
                        boardIdentity.index, boardIdentity.overlayId, boardIdentity.xmlHwVersion,
                        boardIdentity.product);
    for (const String16& item : *list) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s", String8(item).string());
    }
    return true;
}

int32_t dump_hardware() {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, ">>>hardware info Dump Begin");
    for (const PeripheralEntry& entry : peripheralTable) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s:%s", entry.name, entry.value);
    }
    const BoardIdentity& board = boardIdentity;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "hw overLayId:%d", board.overlayId);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "read xml overLayId:%.64s", board.xmlOverlayIds);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "read xml hwVersion:%.64s", board.xmlHwVersion);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "index:%d", board.index);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "product:%s", board.product);
    return __android_log_print(ANDROID_LOG_INFO, kLogTag, "<<<hardware info Dump End");
}
