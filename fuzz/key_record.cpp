// A record of remote keys. The board that would play it has ended, so it is read whole and then
// refused, whatever stands in it: no pause of it is waited for.
#include <filesystem>

#include "fuzz/board_files.h"
#include "fuzz/tool.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const BoardFiles board;
    static const std::string directory = getenv("TARQ_BOARD");
    std::filesystem::create_directories(directory + "/run");
    if (runTool({"--board", directory, "key", "--fast", "--replay", "-"}, data, size) != 2) abort();
    return 0;
}
