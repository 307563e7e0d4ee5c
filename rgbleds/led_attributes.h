// The attributes of the kernel's RGB LED driver, and the one way to write and to read them.
//
// All of it may be called from any thread; nothing is locked. Each call opens, writes and closes
// the attribute by itself, so of two calls at once each writes whole, in either order.
#pragma once

#include <stdint.h>

#include <string>

// The tag of every log line of this module.
constexpr char kLogTag[] = "rgbLedsService";

// Take an LED's id, which selects it, and then show its value in hexadecimal, with or without "0x".
constexpr char kGetColor[] = "/sys/class/rgbled/get_color";
constexpr char kGetBrightness[] = "/sys/class/rgbled/get_brightness";
// Frames the transfer of an effect: "1" begins it, "0" ends it, "2" stops the effect that runs.
constexpr char kTransferState[] = "/sys/class/rgbled/xml_effect_trans_state";
// An effect's parameters, each "NAME VALUE".
constexpr char kTransferValues[] = "/sys/class/rgbled/xml_effect_trans_vals";
// An effect's steps, each "LED TEXT S".
constexpr char kTransferData[] = "/sys/class/rgbled/xml_effect_trans_data";
// What an LED shows otherwise: "ID TYPE COLOR BRIGHTNESS CONT VAL".
constexpr char kStandbyEffect[] = "/sys/class/rgbled/standby_effect";

// A number as the driver takes it: hexadecimal digits alone, -1 as "ffffffff".
std::string driverHex(int32_t number);

// Writes the text as one record. False, with a log line, when the attribute cannot be opened; what
// the driver then says to the text is not asked.
bool writeAttribute(const char* path, const std::string& text);

// Selects an LED by writing its id to one of the two get_ attributes and reads its value there, in
// the driver's units. Another thread may select another LED in between. 0 when there is nothing
// that could be read; an attribute that cannot be opened is logged, once for each of the two steps.
int32_t readAttribute(const char* path, int32_t id);

// Write an LED's value in the driver's units: "ID VALUE", both as driverHex gives them. 1, or 0
// when the attribute could not be opened.
int writeColorToFile(int id, int color);
int writeBrightnessToFile(int id, int brightness);
