// Only what the presence check asks is understood: the version, in the old form, and one query in
// the extended form. Two bytes of a number stand with the lower one first. A host numbers its
// commands, and the answer to one has its number.
#include "host/board/coprocessor/ezsp.h"

#include <stdio.h>

namespace tarq::board::ash {

// The commands of the presence check, one in each form. The first one asks for the version of the
// protocol, as any host has to before all others.
static constexpr uint8_t kVersionId = 0x00;
static constexpr uint8_t kQueryId = 0x13;  // extended: the co-processor's manufacturer and version
// In the place of an id: what follows has the longer form.
static constexpr uint8_t kExtended = 0xFF;
// Of the frame control. All other bits of it are passed over.
static constexpr uint8_t kAnswerBit = 0x80;

// The extended form has ff in the place of the id, and one more control byte. What that byte says
// is passed over, like the rest of the first one.
Ezsp parseEzsp(const Bytes& content) {
    const bool isExtended = content.size() >= 5 && content[2] == kExtended;
    const ptrdiff_t place = isExtended ? 4 : 2;
    Ezsp ezsp;
    ezsp.sequence = content[0];
    ezsp.isAnswer = (content[1] & kAnswerBit) != 0;
    ezsp.id = content[static_cast<size_t>(place)];
    ezsp.parameters.assign(content.begin() + place + 1, content.end());
    if (!isExtended && ezsp.id == kVersionId) ezsp.name = "version";
    if (isExtended && ezsp.id == kQueryId) ezsp.name = "query";
    return ezsp;
}

// Frame control of a command is 0, and so is the second one of the extended form. A command without
// a name gets the short form, since its own is not known.
Bytes encodeEzsp(const Ezsp& ezsp) {
    Bytes content = {ezsp.sequence, ezsp.isAnswer ? kAnswerBit : uint8_t{0}};
    if (ezsp.name == "query") content.insert(content.end(), {kExtended, 0});
    content.push_back(ezsp.id);
    content.insert(content.end(), ezsp.parameters.begin(), ezsp.parameters.end());
    return content;
}

// Only shapes that are known are put into words; all else is shown as bytes.
std::string meaningOf(const Ezsp& ezsp) {
    const Bytes& bytes = ezsp.parameters;
    const auto byte = [&](size_t place) { return place < bytes.size() ? bytes[place] : 0u; };
    char text[80];
    if (ezsp.name == "query" && ezsp.isAnswer) {  // a status, then the two numbers
        snprintf(text, sizeof(text), "manufacturer %04x, version %s", byte(1) | byte(2) << 8,
                 versionText(byte(3) | byte(4) << 8).c_str());
    } else if (ezsp.name == "version" && !ezsp.isAnswer && bytes.size() == 1) {
        snprintf(text, sizeof(text), "wants %u", byte(0));
    } else if (ezsp.name == "version" && ezsp.isAnswer && bytes.size() == 4) {
        snprintf(text, sizeof(text), "speaks %u, stack %u of version %s", byte(0), byte(1),
                 versionText(byte(2) | byte(3) << 8).c_str());
    } else {
        return asHex(bytes);
    }
    return text;
}

// Major and minor number, and the patch. So 6a03 is 6.10.3.
std::string versionText(unsigned version) {
    char text[40];
    snprintf(text, sizeof(text), "%u.%u.%u", version >> 12 & 15, version >> 8 & 15, version & 255);
    return text;
}

}  // namespace tarq::board::ash
