// One walk turns the XML tree into plain values that own their texts, so the tree lives no longer
// than the call. Nothing is judged on the way: who checks a file wants to see what is wrong with
// it.
#include "hardware_info/description_file.h"

#include <errno.h>
#include <tinyxml2.h>

using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

static DescriptionText textOrNone(const char* text) {
    if (text == nullptr) return std::nullopt;
    return text;
}

static DescriptionText attributeOf(const XMLElement& element, const char* name) {
    return textOrNone(element.Attribute(name));
}

static BoardVariant variantFrom(const XMLElement& element) {
    BoardVariant variant = {element.GetLineNum(),
                            attributeOf(element, "index"),
                            attributeOf(element, "overlay_id"),
                            attributeOf(element, "hw_version"),
                            {}};
    for (const XMLElement* part = element.FirstChildElement("hw"); part != nullptr;
         part = part->NextSiblingElement("hw")) {
        variant.parts.push_back({part->GetLineNum(), attributeOf(*part, "Peripheral"),
                                 textOrNone(part->GetText())});
    }
    return variant;
}

bool readDescription(FILE* file, HardwareDescription* description) {
    // Entities on and blanks kept: a part name is exactly what its element holds.
    XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    errno = 0;  // a mistake in the XML sets none, and an old one would mislead
    if (document.LoadFile(file) != tinyxml2::XML_SUCCESS) return false;

    *description = {};
    const XMLElement* root = document.FirstChildElement();
    if (root == nullptr) return true;
    description->rootLine = root->GetLineNum();
    description->product = attributeOf(*root, "product");
    for (const XMLElement* variant = root->FirstChildElement("hardwre_info"); variant != nullptr;
         variant = variant->NextSiblingElement("hardwre_info")) {
        description->variants.push_back(variantFrom(*variant));
    }
    return true;
}
