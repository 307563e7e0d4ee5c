// Runs a fuzz target once over every file of the directories given: a regression test that needs no
// libFuzzer. Directories without a file are a mistake, and no success.
#include <stdint.h>
#include <stdio.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream in(entry.path(), std::ios::binary);
            const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
