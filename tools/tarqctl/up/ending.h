// The end of all that `up` has started.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/tarqctl/up/child.h"

namespace tarq::tools {

// How long each may take to end.
constexpr std::chrono::seconds kPatience{5};

// Ends them one after the other, the last one first: tells each to, and kills it when the time is
// over, which say() is told in a sentence. A SIGINT or SIGTERM meanwhile kills all of them at once.
void endAll(const std::vector<std::unique_ptr<Child>>& children, const Signals& signals,
            const std::function<void(const std::string&)>& say);

}  // namespace tarq::tools
