// Hands a lamp effect file to the LED driver, which then plays it.
#pragma once

// Writes the effect's parameters and steps to the driver's transfer attributes, between a "1" and a
// "0". A file that cannot be read is logged, and nothing is written. What is broken within it is
// logged with its line and left out; so is what the driver cannot take, and the transfer ends all
// the same. A path of the device, or of anywhere else.
//
// Any thread; two loads at once mix their transfers.
void parseXmlFile(const char* path);
