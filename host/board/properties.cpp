// The properties of a start, in the order of a device: the defaults of build.prop, each set as any
// program would set it, then what was saved. A default for a name that was saved is passed over, so
// that the user's value is never overwritten on the way.
#include "host/board/properties.h"

#include <cutils/properties.h>
#include <errno.h>
#include <host/log_sink.h>
#include <host/process_board.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace tarq::board {

namespace fs = std::filesystem;

static constexpr char kBlanks[] = " \t\r";

static bool isPersistent(const std::string& key) {
    return key.rfind("persist.", 0) == 0;
}

// A line is KEY=VALUE with blanks around the key and before the value; what follows the value is
// part of it, as on the device.
static void setFromLine(const std::string& line, const fs::path& savedProperties) {
    const size_t begin = line.find_first_not_of(kBlanks);
    if (begin == std::string::npos || line[begin] == '#') return;
    const size_t equals = line.find('=', begin);
    if (equals == std::string::npos || equals == begin) {
        throw std::invalid_argument("not KEY=VALUE: " + line);
    }
    const size_t end = line.find_last_not_of(kBlanks, equals - 1);
    const std::string key = line.substr(begin, end - begin + 1);
    const size_t value = line.find_first_not_of(kBlanks, equals + 1);

    // A default neither replaces what was saved nor becomes saved by being set.
    if (isPersistent(key) && fs::exists(savedProperties / key)) return;
    const int result =
            property_set(key.c_str(), value != std::string::npos ? line.c_str() + value : "");
    if (isPersistent(key) && result == 0) fs::remove(savedProperties / key);
}

static void loadDefaults(const fs::path& file, const fs::path& savedProperties) {
    std::ifstream in(file);
    if (!in) throw std::system_error(errno, std::system_category(), file);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const std::string place = file.string() + ":" + std::to_string(number) + ": ";
        host::setLogSink([&place](int, const char*, const std::string& refusal) {
            std::cerr << place << refusal << '\n';
        });
        try {
            setFromLine(line, savedProperties);
        } catch (const std::invalid_argument& malformed) {
            std::cerr << place << malformed.what() << '\n';
        }
    }
    host::setLogSink({});
}

void loadProperties(const fs::path& defaults, const host::Board& board) {
    host::setProcessBoard(board);  // where property_set sets
    const fs::path savedProperties = board.savedProperties();
    loadDefaults(defaults, savedProperties);
    // Listed before the first is set: setting one writes it to the same directory.
    const std::vector<fs::directory_entry> files(fs::directory_iterator(savedProperties), {});
    for (const fs::directory_entry& entry : files) {
        const std::string key = entry.path().filename();
        if (!isPersistent(key)) continue;  // half written when its process was killed
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string value(std::istreambuf_iterator<char>(in), {});
        property_set(key.c_str(), value.c_str());
    }
}

}  // namespace tarq::board
