// What is fitted to a board, as a board engineer writes it: understood whole, or refused with the
// file's name in front of the reason.
#include <stdlib.h>

#include <fstream>

#include "host/board/board_description.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static std::string directory = "/tmp/fuzz_board_xml.XXXXXX";
    static const bool isMade = mkdtemp(directory.data()) != nullptr;
    if (!isMade) abort();
    const std::string file = directory + "/board.xml";
    std::ofstream(file).write(reinterpret_cast<const char*>(data), static_cast<ssize_t>(size));
    try {
        tarq::board::Hardware hardware;
        tarq::board::fit(file, hardware);
    } catch (const std::exception& why) {
        if (std::string(why.what()).rfind(file, 0) != 0) abort();
    }
    return 0;
}
