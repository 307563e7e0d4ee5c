#include "hardware_info/peripheral_table.h"

PeripheralEntry peripheralTable[kPeripheralCount] = {
        {PeripheralType::WIFI, "wifi", "null"},
        {PeripheralType::CODEC, "codec", "null"},
        {PeripheralType::TP, "tp", "null"},
        {PeripheralType::INTERNAL_CAMERA, "internal_camera", "null"},
        {PeripheralType::USB_CAMERA, "usb_camera", "null"},
        {PeripheralType::BT, "bt", "null"},
        {PeripheralType::LCD, "lcd", "null"},
        {PeripheralType::SWITCH, "switch", "null"},
        {PeripheralType::EMMC, "emmc", "null"},
        {PeripheralType::LED_IC, "led_ic", "null"},
        {PeripheralType::KEYBOARD_IC, "keyboard_ic", "null"},
};

BoardIdentity boardIdentity;
