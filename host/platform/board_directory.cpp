#include <host/board_directory.h>

#include <stdlib.h>

namespace tarq::host {

const std::string& boardDirectory() {
    static const std::string& directory = *new std::string([] {
        const char* value = getenv("TARQ_BOARD");
        return value != nullptr ? value : "";
    }());
    return directory;
}

std::string boardPath(const std::string& relative) {
    return boardDirectory() + "/" + relative;
}

}  // namespace tarq::host
