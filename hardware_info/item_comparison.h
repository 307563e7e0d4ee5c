// Compares one item of an update package's list with the board.
#pragma once

#include <string>

// An item is "NAME:VALUE". "overlay_id" lists the boards that the package is for; the name of a row
// of the peripheral table lists the parts that the package supports. Sets the row's matchState and
// logs what decided. Other names have no effect.
//
// False only when this board's overlay id is not listed: no other item can make that good, a second
// "overlay_id" neither. A board without an overlay id takes any list. Of two items of one row the
// later one's matchState stays.
//
// A text of more than 101 bytes, or 63 for the value of "overlay_id", is logged and counts as one
// that does not fit; it is never cut, as what is left could be the name of another part. Without a
// ":" the value is empty. Any thread; writes matchState.
bool compareItem(const std::string& text);
