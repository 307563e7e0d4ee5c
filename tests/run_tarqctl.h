// tarqctl within the test's own process.
#pragma once

#include "tests/child_process.h"
#include "tools/tarqctl/tarqctl.h"

struct Result {
    int code;
    std::string out, err;
};

inline Result tarqctl(const Words& words, const std::string& input = "", bool coloured = false) {
    std::istringstream in(input);
    std::ostringstream out, err;
    const int code = tarq::tools::runTarqctl(words, coloured, in, out, err);
    return {code, out.str(), err.str()};
}

// Output and errors, without the tool's name and the command in front of these; the exit code
// unless it is 0. The line is split at blanks.
inline std::string tarqctlSays(const std::string& line) {
    Result result = tarqctl(wordsOf(line));
    const std::string prefix = "tarqctl: " + line + ": ";
    for (size_t at = 0; (at = result.err.find(prefix, at)) != std::string::npos;)
        result.err.erase(at, prefix.size());
    return result.out + result.err + (result.code != 0 ? std::to_string(result.code) : "");
}
