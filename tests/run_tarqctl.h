// tarqctl within the test's own process.
#pragma once

#include <iterator>
#include <sstream>
#include <string>

#include "tools/tarqctl/tarqctl.h"

// Output and errors, without the tool's name and the command in front of these; the exit code
// unless it is 0. The line is split at blanks.
inline std::string runTarqctl(const std::string& line) {
    std::istringstream split(line), in;
    std::ostringstream out, err;
    const int code = tarq::tools::runTarqctl({std::istream_iterator<std::string>(split), {}}, false,
                                             in, out, err);
    std::string said = err.str();
    const std::string prefix = "tarqctl: " + line + ": ";
    for (size_t at = 0; (at = said.find(prefix, at)) != std::string::npos;)
        said.erase(at, prefix.size());
    return out.str() + said + (code != 0 ? std::to_string(code) : "");
}
