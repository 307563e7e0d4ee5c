#include "tools/tarqctl/ask/as_root.h"

#include <filesystem>

namespace tarq::tools {

std::string asRoot(const Session& session) {
    std::error_code unknown;
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", unknown);
    const std::string words = session.next(session.line);
    return "sudo " + (unknown ? "tarqctl" : shellQuoted(program)) + words.substr(words.find(' '));
}

}  // namespace tarq::tools
