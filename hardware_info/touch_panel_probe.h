// Asks the touch panel's driver which controller it found.
#pragma once

#include <string>
#include <string_view>

// Sets info to type, "-", id, such as "gt9xx-5". False, and info as it was, when no driver tells
// anything or the one that does says something unexpected; the reason is logged. Reads the driver's
// file anew each time. Any thread.
bool getTpInfo(std::string& info);

// The same from a driver's text: lines "type:TEXT" and "id:NUMBER", of which the last of a kind
// counts. The text is kept as it stands, a CR at its end included. Without a type it is empty,
// without an id it is -1, and an id that is no number is 0. False for any other line, an empty one
// too.
bool parseTpInfo(std::string_view text, std::string& info);
