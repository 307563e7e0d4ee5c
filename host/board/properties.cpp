// The properties of a start, in the order of a device: the defaults of build.prop, each set as any
// program would set it, then what was saved. A default for a name that was saved is passed over, so
// that the user's value is never overwritten on the way.
#include "host/board/board_directory.h"

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

#include "host/run/file_systems.h"
#include "host/run/text.h"

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

// What is no text is no list of properties, and no line of it is printed.
static void requireText(std::istream& in, const fs::path& file) {
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        for (const char byte : line) {
            const auto code = static_cast<unsigned char>(byte);
            if (code >= ' ' || byte == '\t' || byte == '\r') continue;
            throw std::runtime_error(file.string() + ":" + std::to_string(number) +
                                     ": a byte of value " + std::to_string(code) +
                                     ", so this is no text file of KEY=VALUE lines");
        }
    }
    in.clear();
    in.seekg(0);
}

// property_set has no way to say why it refused: it logs the reason, which is caught here and
// printed with the line that is to blame.
static void loadDefaults(const fs::path& file, const host::Board& board) {
    std::ifstream in(file);
    if (!in) throw std::system_error(errno, std::system_category(), file);
    requireText(in, file);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const std::string place = file.string() + ":" + std::to_string(number) + ": ";
        std::string wrong;
        host::setLogSink(
                [&wrong](int, const char*, const std::string& refusal) { wrong = refusal; });
        try {
            setFromLine(line, board.savedProperties());
        } catch (const std::invalid_argument& malformed) {
            wrong = malformed.what();
        }
        host::setLogSink({});
        if (wrong.empty()) continue;
        host::requireRoom(board);  // else no line is to blame, and the next would fail as well
        std::cerr << place << host::escaped(wrong) << '\n';
    }
}

void loadProperties(const fs::path& defaults, const host::Board& board) {
    host::setProcessBoard(board);  // where property_set sets
    loadDefaults(defaults, board);
    const fs::path savedProperties = board.savedProperties();
    // Listed before the first is set: setting one writes it to the same directory.
    const std::vector<fs::directory_entry> files(fs::directory_iterator(savedProperties), {});
    for (const fs::directory_entry& entry : files) {
        const std::string key = entry.path().filename();
        if (!isPersistent(key)) continue;  // half written when its process was killed
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string value(std::istreambuf_iterator<char>(in), {});
        if (property_set(key.c_str(), value.c_str()) != 0) host::requireRoom(board);
    }
}

}  // namespace tarq::board
