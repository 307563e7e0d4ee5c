#include "tools/tarqctl/utf8.h"

#include <utils/String16.h>
#include <utils/String8.h>

namespace tarq::tools {

using android::String16;
using android::String8;

std::string checkUtf8(const std::string& text) {
    const String8 back{String16(text.data(), text.size())};
    return text == std::string(back.string(), back.size()) ? "" : "it is not UTF-8";
}

}  // namespace tarq::tools
