#include "hardware_info/text.h"

#include <stdlib.h>

std::string_view asText(const std::vector<uint8_t>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool Pieces::next(std::string_view* piece) {
    if (mRest.empty()) return false;
    const size_t end = mRest.find(mSeparator);
    *piece = mRest.substr(0, end);
    mRest.remove_prefix(end == std::string_view::npos ? mRest.size() : end + 1);
    return true;
}

std::vector<std::string> tokensOf(std::string_view list) {
    static constexpr char kSeparators[] = " ,*";
    std::vector<std::string> tokens;
    for (size_t begin = 0; (begin = list.find_first_not_of(kSeparators, begin)) != list.npos;) {
        const size_t end = list.find_first_of(kSeparators, begin);
        tokens.emplace_back(list.substr(begin, end - begin));
        begin = end;
    }
    return tokens;
}

bool includesId(std::string_view list, int32_t id) {
    for (const std::string& token : tokensOf(list)) {
        if (atoi(token.c_str()) == id) return true;
    }
    return false;
}
