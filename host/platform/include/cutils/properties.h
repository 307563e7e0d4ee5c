// System properties on a Linux host: one small file a property in the board's run/properties, so
// that every process of a board sees a change at once.
#pragma once

// The device's sizes, terminator included. Names may be longer than the first, as on the device.
#define PROPERTY_KEY_MAX 32
#define PROPERTY_VALUE_MAX 92

extern "C" {

// Fills value (PROPERTY_VALUE_MAX bytes) and returns its length, 0 to 91. A property that is
// missing or empty reads as default_value, cut at 91 bytes; null stands for "". Without a board
// every property is missing. Any thread.
int property_get(const char* key, char* value, const char* default_value);

// 0, or -1 with a log line for: a value over 91 bytes (on the device a ro. property may be longer,
// but is not read whole by property_get there), a name that is not made of A-Za-z0-9_-@:.
// or has a leading, trailing or double dot, a value that is not UTF-8, a ro. property that exists,
// and a board that cannot be written. A null value counts as "", a null name is refused without a
// line. persist. properties outlive a restart of the board. A reader sees the old value or the new
// one; of two setters at once the later counts, but for ro. properties, where it is the earlier.
int property_set(const char* key, const char* value);
}
