// Two properties say which board this is. The index names the variant of the product in the
// description file; the overlay id comes from the boot loader, which chose a device tree overlay
// for what it found. Neither is needed to start: without them the board is an unknown one.
#include "hardware_info/board_identity.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <stdio.h>
#include <stdlib.h>

#include "hardware_info/description_loader.h"
#include "hardware_info/peripheral_list.h"
#include "hardware_info/peripheral_table.h"

static constexpr char kIndexProperty[] = "ro.vendor.hardwareinfo_index";
static constexpr char kOverlayProperty[] = "ro.boot.dtbo_overlay_st";

// Only a missing index is -1. A text that is no number is index 0, which a variant may well have.
static int32_t readIndex() {
    char text[PROPERTY_VALUE_MAX] = {};
    property_get(kIndexProperty, text, "-1");
    const int32_t index = atoi(text);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "parse index prop,index:%d", index);
    if (index == -1) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "not find index by %s,let index -1",
                            kIndexProperty);
    }
    return index;
}

// The storage id is of no use but in the log.
static int32_t readOverlayId() {
    char text[PROPERTY_VALUE_MAX] = {};
    property_get(kOverlayProperty, text, "storageId--1_FindIdOK_overlayId--1-OK");
    int32_t storageId = -1;
    int32_t overlayId = -1;
    // What does not match stays -1, so the number of matches does not matter.
    sscanf(text, "storageId-%d_FindIdOK_overlayId-%d-OK", &storageId, &overlayId);
    // The boot loader has two ways to say that it applied none.
    if (overlayId == 9 || overlayId == 0) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "overlay_id==0 || overlay_id==9,mean no overlay,change as -1");
        overlayId = -1;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "parse dtbo st prop,get storage_id:%d,overlay_id:%d", storageId, overlayId);
    return overlayId;
}

int32_t initHardwareInfo() {
    boardIdentity.index = readIndex();
    boardIdentity.overlayId = readOverlayId();
    // A board that does not know its variant takes packages for any overlay.
    if (boardIdentity.index == -1) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "index is -1, let overlay_id as -1,maybe no support hardware fw");
        boardIdentity.overlayId = -1;
    }
    loadDescription(boardIdentity.index, boardIdentity.overlayId);
    return dump_hardware();
}
