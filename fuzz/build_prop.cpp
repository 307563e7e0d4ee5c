// A board's defaults. Each line sets a property or is named, and a property that is there
// afterwards is one that a program could have set.
#include <stdlib.h>

#include <fstream>
#include <iostream>

#include "host/board/board_directory.h"

namespace fs = std::filesystem;

static void expectLegal(const fs::path& property) {
    const std::string name = property.filename();
    if (name[0] == '.' || fs::file_size(property) > 91) abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static std::string directory = "/tmp/fuzz_build_prop.XXXXXX";
    static const bool isMade = mkdtemp(directory.data()) != nullptr;
    static const tarq::host::Board board = {directory};
    if (!isMade) abort();
    std::cerr.rdbuf(nullptr);
    for (const std::string& place : {board.properties(), board.savedProperties()}) {
        fs::remove_all(place);
        fs::create_directories(place);
    }
    const fs::path file = directory + "/build.prop";
    std::ofstream(file).write(reinterpret_cast<const char*>(data), static_cast<ssize_t>(size));
    try {
        tarq::board::loadProperties(file, board);
    } catch (const std::exception& why) {
        if (*why.what() == '\0') abort();
    }
    for (const auto& property : fs::directory_iterator(board.properties())) expectLegal(property);
    return 0;
}
