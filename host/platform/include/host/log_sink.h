// For who prints a refusal of the platform in words of its own, and for tests: sees what is logged
// as it was given, before any formatting of lines.
#pragma once

#include <functional>
#include <string>

namespace tarq::host {

// tag is null where the caller passed null. Called on the logging thread, one call at a time.
using LogSink = std::function<void(int priority, const char* tag, const std::string& text)>;

// Replaces the usual output for this process; an empty sink restores it.
void setLogSink(LogSink sink);

}  // namespace tarq::host
