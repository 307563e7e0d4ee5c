// Texts for the daemon, which takes them as UTF-16.
#pragma once

#include <string>

namespace tarq::tools {

// Empty when the text is UTF-8, else what is wrong. Another one would reach the daemon as a
// different text, or as none at all.
std::string checkUtf8(const std::string& text);

}  // namespace tarq::tools
