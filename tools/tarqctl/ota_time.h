// The build time of an update package, as a person gives it.
#pragma once

#include <stdint.h>

#include <string>

namespace tarq::tools {

// The whole text, without a plus sign or blanks. Empty when it is a number, else what is wrong.
std::string parseOtaTime(const std::string& text, int64_t* value);

}  // namespace tarq::tools
