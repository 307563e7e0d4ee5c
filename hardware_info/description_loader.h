// Fills the peripheral table and the board's identity from the description file.
#pragma once

#include <stdint.h>

#include "hardware_info/description_file.h"

// Reads /vendor/etc/hardwareInfo.xml and applies it. A file that cannot be read is logged and
// changes nothing. Main thread only, at start-up.
void loadDescription(int32_t index, int32_t overlayId);

// Copies the product's name and, in the order of the file, what each variant of this index says,
// so that a later one overwrites an earlier one. overlayId is the board's, -1 for none; a variant
// that does not list it is logged and used all the same, since every match request checks again.
//
// An attribute that is missing, and a text that is too long, is logged with its line and left out;
// what else the variant says still counts. overlay_id and hw_version are cut to 64 bytes, as they
// are only shown from here on; a list that is too long is not compared. A <hw> without a text, or
// of a kind that is not in the table, is logged with both and changes nothing. Main thread only, at
// start-up.
void applyDescription(const HardwareDescription& description, int32_t index, int32_t overlayId);
