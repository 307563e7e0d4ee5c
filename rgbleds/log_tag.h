#pragma once

// Of everything that this module logs.
constexpr char kLogTag[] = "rgbLedsService";
