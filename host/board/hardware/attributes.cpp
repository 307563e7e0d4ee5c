#include "host/board/hardware/attributes.h"

#include "host/run/text.h"

namespace tarq::board {

off_t Attribute::size() const {
    return mKind == kProperty ? static_cast<off_t>(mBytes.size()) : Node::size();
}

int Attribute::read(std::string* content) {
    *content = mBytes;
    return 0;
}

void Attribute::set(const std::string& value) {
    const std::string why =
            mKind == kProperty ? host::parseHex(value, &mBytes) : host::unescape(value, &mBytes);
    if (!why.empty()) throw std::invalid_argument(why);
}

}  // namespace tarq::board
