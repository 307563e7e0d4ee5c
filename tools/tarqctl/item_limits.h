// What the daemon compares of an update package's list: longer texts count as not fitting.
#pragma once

#include <stddef.h>

namespace tarq::tools {

constexpr char kOverlayId[] = "overlay_id";  // the item that names no part

constexpr size_t kMaxItemSize = 101;  // bytes
constexpr size_t kMaxOverlayIdsSize = 63;

}  // namespace tarq::tools
