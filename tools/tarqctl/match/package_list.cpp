// A list is handed to the service as it is, so anything that would reach it as something else is
// refused here with its place: other encodings, marks that cannot be seen, zero bytes.
#include "tools/tarqctl/match/package_list.h"

#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

// What keeps the line of a file from being an item. An updater may keep a mark, which then makes
// the first name another one.
std::string whyNoItem(const std::string& line) {
    if (line.rfind(kByteOrderMark, 0) == 0) return "it begins with a byte order mark";
    if (const std::string wide = wideEncodingOf(line); !wide.empty()) return "it is " + wide;
    if (line.find('\0') != std::string::npos) return "it has a NUL in it";
    return checkUtf8(line);
}

// How to take away what is wrong with the encoding of a file.
std::string howToMend(const Session& session, const std::string& file, const std::string& line) {
    const bool is8 = line.rfind(kByteOrderMark, 0) == 0;
    const std::string wide = wideEncodingOf(line);
    if (file == "-" || (!is8 && wide.empty())) return session.help();
    if (is8) return "sed -i 's/^\\xef\\xbb\\xbf//' " + shellQuoted(file);
    return "iconv -f " + wide + " -t UTF-8 " + shellQuoted(file) + " | tarqctl match --file -";
}

}  // namespace

// A file may come from another system: the end of a line may have a CR. That is no flaw of the
// list, but to an updater that keeps it the last element is another one.
PackageList readList(const Session& session, const std::string& file) {
    PackageList list;
    int number = 0;
    std::string firstCr;
    readLines(session, file, [&](std::string line) {
        const std::string place = file + ":" + std::to_string(++number);
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
            if (firstCr.empty()) firstCr = place;
        }
        const bool isBlank = line.find_first_not_of(" \t") == std::string::npos;
        if (isBlank || line[0] == '#') return;
        const std::string why = whyNoItem(line);
        if (!why.empty()) {
            throw session.failure("bad_item", place + ": " + why, howToMend(session, file, line));
        }
        list.items.push_back(line);
        list.places.push_back(place);
    });
    if (!firstCr.empty()) {
        session.notice(firstCr +
                       ": it ends in CR LF; the CR is left out here, an updater may keep it");
    }
    return list;
}

}  // namespace tarq::tools
