// The tag of every log line of this module.
#pragma once

constexpr char kLogTag[] = "zigbee_check";
