#include "tools/tarqctl/input.h"

#include <errno.h>
#include <string.h>

#include <fstream>

namespace tarq::tools {

void readLines(const Session& session, const std::string& file,
               const std::function<void(const std::string&)>& take) {
    std::ifstream opened;
    const bool isStandardInput = file == "-";
    errno = 0;
    if (!isStandardInput) opened.open(file, std::ios::binary);
    std::istream& in = isStandardInput ? session.in : opened;
    const bool isOpen = isStandardInput || opened.is_open();
    for (std::string line; isOpen && std::getline(in, line);) take(line);
    if (isOpen && !in.bad()) return;
    const int error = errno != 0 ? errno : EIO;
    throw session.failure("cannot_read",
                          (isStandardInput ? "standard input" : file) + ": " + strerror(error),
                          "tarqctl " + session.line.substr(0, session.line.find(' ')) + " --help");
}

}  // namespace tarq::tools
