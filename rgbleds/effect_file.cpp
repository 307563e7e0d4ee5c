// Every item is one text for the driver, or one thing that the file lacks, in the order of the
// file: whoever loads, prints or draws an effect goes through the same list.
#include "rgbleds/effect_file.h"

#include <tinyxml2.h>

using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

static EffectItem incomplete(const XMLElement& element, const char* attribute) {
    return {EffectItem::kIncomplete, element.GetLineNum(),
            std::string("attribute ") + attribute + " of <" + element.Value() + ">"};
}

static EffectItem parameter(const XMLElement& root, const char* name) {
    const char* value = root.Attribute(name);
    if (value == nullptr) return incomplete(root, name);
    return {EffectItem::kParameter, root.GetLineNum(), std::string(name) + " " + value};
}

static EffectItem step(const std::string& led, const XMLElement& element) {
    const char* text = element.GetText();
    if (text == nullptr) {
        const char* id = element.Attribute("id");
        return {EffectItem::kEmptyStep, element.GetLineNum(), id != nullptr ? id : "(null)"};
    }
    const char* s = element.Attribute("s");
    if (s == nullptr) return incomplete(element, "s");
    return {EffectItem::kStep, element.GetLineNum(), led + " " + text + " " + s};
}

// An LED without an id is told once, however many steps it has, and not at all without any.
static void readLed(const XMLElement& led, std::vector<EffectItem>* items) {
    const XMLElement* element = led.FirstChildElement("eff");
    if (element == nullptr) return;
    const char* id = led.Attribute("id");
    if (id == nullptr) {
        items->push_back(incomplete(led, "id"));
        return;
    }
    for (; element != nullptr; element = element->NextSiblingElement("eff")) {
        items->push_back(step(id, *element));
    }
}

bool readEffect(FILE* file, std::vector<EffectItem>* items) {
    // Entities on and blanks kept: a step's text is exactly what its element holds.
    XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    if (document.LoadFile(file) != tinyxml2::XML_SUCCESS) return false;
    const XMLElement* root = document.FirstChildElement();
    if (root == nullptr) return false;

    items->clear();
    for (const char* name : {"loop", "interval", "duration"}) {
        items->push_back(parameter(*root, name));
    }
    for (const XMLElement* led = root->FirstChildElement("led"); led != nullptr;
         led = led->NextSiblingElement("led")) {
        readLed(*led, items);
    }
    return true;
}
