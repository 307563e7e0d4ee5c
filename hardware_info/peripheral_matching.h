// Whether an update package fits this board.
#pragma once

#include <utils/String16.h>

#include <vector>

// Whether this build lets every package in without comparing it: by one property for all boards, by
// another for those without an overlay id. A yes is logged with its reason. Any thread.
bool isSkipHw();

// Whether the package whose list this is fits the board: it is made for the board's overlay id, and
// supports every part that the board lists. If it does not support one, or does not name it at all,
// it may still pass by its time, see timestamp_check.h. Each item is "name:value", see
// item_comparison.h.
//
// Logs the list, the board and every reason. Any thread; calls at the same time write the same
// match states, so each may come out with some of the other's.
bool _isMatchHardwareInfo(const std::vector<android::String16>& items);
