// Asks the touch panel's driver which controller it found.
#pragma once

#include <string>
#include <string_view>

// Sets info to type, "-", id, such as "gt9xx-5". False, and info as it was, when no driver tells
// anything or the one that does says something unexpected; the reason is logged. Reads the driver's
// file anew each time. Any thread.
bool getTpInfo(std::string& info);

// The same from a driver's text: lines "type:TEXT" and "id:NUMBER", of which the last of a kind
// counts. Without a type it is empty, without an id it is -1. False for any other line.
bool parseTpInfo(std::string_view text, std::string& info);
