// What this board is and which parts it carries. The main thread fills all of it before the
// service is registered (see board_identity.h). From then on everything is only read, by any
// thread and without a lock, except matchState.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <atomic>

// The tag of every log line of this module.
constexpr char kLogTag[] = "HardwareInfoService";

// The kinds of peripherals. Each value is the position of the kind's row in the table, and the
// order that callers get their list in. The timestamp file's sections have these names.
enum class PeripheralType : uint8_t {
    WIFI = 0,
    CODEC = 1,
    TP = 2,
    INTERNAL_CAMERA = 3,
    USB_CAMERA = 4,
    BT = 5,
    LCD = 6,
    SWITCH = 7,
    EMMC = 8,
    LED_IC = 9,
    KEYBOARD_IC = 10,
};

constexpr size_t kPeripheralCount = 11;

struct PeripheralEntry {
    PeripheralType type;
    const char name[128];  // the kind in the description file and in what callers send and get
    char value[128];       // the part fitted; "null" when the board declares none
    // How the row fared in the latest match request: 2 not matched, 1 matched, 0 nothing to match.
    // Concurrent requests overwrite each other's, deliberately: access it with relaxed order.
    std::atomic<uint8_t> matchState{0};
};

struct BoardIdentity {
    char product[32] = "null";  // of the description file, for the log
    int32_t overlayId = -1;     // -1: none, or unknown
    // Both are from the description file. A text of 64 bytes or more is cut and fills its field to
    // the last byte, without a terminator: print these two with "%.64s".
    char xmlOverlayIds[64] = "null";
    char xmlHwVersion[64] = "null";
    int32_t index = -1;  // which variant of the product this is; -1: unknown
};

extern PeripheralEntry peripheralTable[kPeripheralCount];  // in the order of PeripheralType
extern BoardIdentity boardIdentity;
