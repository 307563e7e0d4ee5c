// The peripheral table as text: for callers and for the log. Both only read, on any thread.
#pragma once

#include <stdint.h>
#include <utils/String16.h>

#include <vector>

// Appends "name:value" of all eleven rows to the list, in table order, and logs the whole list,
// with what was in it before. Always true. An item of 100 bytes or more ends the process: the
// name and the value of a row may be 98 bytes together.
bool _getHardwareInfo(std::vector<android::String16>* list);

// Logs the table and the board's identity: at start-up, and with every match request, so that a
// saved log explains a refusal without the board. Returns what the last log call returned.
int32_t dump_hardware();
