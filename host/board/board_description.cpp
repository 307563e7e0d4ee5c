// board.xml says what is fitted, and nothing else about a board. Each kind of part is a row of a
// table: its element, the attributes that it may have, and the function that turns the element into
// nodes of the hardware. What is not understood ends the start with its line, for a part that is
// silently missing would be looked for in the daemon.
#include "host/board/board_description.h"

#include <string.h>
#include <tinyxml2.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "host/board/hardware/drivers.h"
#include "host/board/leds/led_driver.h"
#include "host/board/leds/led_nodes.h"
#include "host/run/faults.h"
#include "host/run/text.h"
#include "host/run/xml_error.h"

namespace tarq::board {

namespace {

using tinyxml2::XMLElement;

// Where the kernel of the device shows the panel: its node of the device tree, once by way of the
// bus and once as such. The probes of the daemon look in both.
constexpr char kPanel[] = "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/";
constexpr char kTree[] = "/proc/device-tree/dsi@ff450000/";
constexpr char kGpio[] = "/sys/class/gpio/";

// What the elements are turned into.
struct Fitting {
    Hardware& hardware;
    std::shared_ptr<GpioLines> lines = std::make_shared<GpioLines>();
    Fitted fitted = {};
};

// "" when the element does not have it.
std::string attribute(const XMLElement& element, const char* name) {
    const char* value = element.Attribute(name);
    return value != nullptr ? value : "";
}

std::string needed(const XMLElement& element, const char* name) {
    if (element.Attribute(name) == nullptr) {
        throw std::invalid_argument(std::string("lacks \"") + name + "\"");
    }
    return attribute(element, name);
}

// One of the words; the first when the attribute is not given. Its place among them. With two
// words, as the refusal names both.
size_t oneOf(const XMLElement& element, const char* name, const std::vector<std::string>& words) {
    if (element.Attribute(name) == nullptr) return 0;
    for (size_t i = 0; i < words.size(); ++i) {
        if (attribute(element, name) == words[i]) return i;
    }
    throw std::invalid_argument(std::string(name) + " is neither \"" + words[0] + "\" nor \"" +
                                words[1] + "\"");
}

// The attribute's value was read, or why is what is wrong with it.
void require(const char* name, const std::string& why) {
    if (!why.empty()) throw std::invalid_argument(std::string(name) + ": " + why);
}

// A number of a GPIO line, a video node or LEDs: decimal, as people write it, whatever the kernel
// would take.
uint32_t number(const XMLElement& element, const char* name) {
    int64_t number = 0;
    require(name, host::parseDecimal(needed(element, name), 0, 999'999'999, &number));
    return static_cast<uint32_t>(number);
}

// The text is the driver's own, two lines that the probe takes apart. A panel on the I2C bus shows
// it at another place.
void fitTouchPanel(const XMLElement& element, Fitting& fitting) {
    static constexpr const char* kPlaces[] = {"/sys/class/tpinfo/tpinfo_ic_info",
                                              "/sys/class/i2c-dev/i2c-2/device/2-005d/tp_ic_info"};
    const std::string text =
            "type:" + needed(element, "type") + "\nid:" + needed(element, "id") + "\n";
    const size_t place = oneOf(element, "at", {"class", "i2c"});
    // With one in both places, the second is known by its path only.
    const char* name = fitting.hardware.has(kPlaces[1 - place]) ? "" : "touch_panel";
    fitting.hardware.add(kPlaces[place], name, std::make_unique<Attribute>(Attribute::kText, text));
}

// A display tells which it is in up to three ways, and a board may have any of them: its number in
// a cell, the bytes of its "id" property, or the numbers of two GPIO lines whose levels are its id.
void fitDisplay(const XMLElement& element, Fitting& fitting) {
    const auto addHex = [&](const char* attribute, const char* file, const char* name) {
        const char* digits = element.Attribute(attribute);
        if (digits == nullptr) return;
        std::string bytes;
        require(attribute, host::parseHex(digits, &bytes));
        fitting.hardware.add(std::string(kPanel) + file, name,
                             std::make_unique<Attribute>(Attribute::kProperty, bytes));
    };
    const auto add = [&](const std::string& path, const std::string& name,
                         const std::string& bytes) {
        fitting.hardware.add(path, name, std::make_unique<Attribute>(Attribute::kProperty, bytes));
    };
    addHex("reg", "id", "display_reg");
    addHex("hwid_flag", "hwid-flag", "hwid_flag");
    for (const char* id : {"id1", "id2"}) {
        const std::string gpio = id + std::string("_gpio");
        if (element.Attribute(gpio.c_str()) == nullptr) continue;
        const uint32_t line = number(element, gpio.c_str());
        std::string cell;  // big-endian, as the device tree has it
        for (const int shift : {24, 16, 8, 0}) cell += static_cast<char>(line >> shift & 0xff);
        add(kTree + std::string("dsi,") + id, std::string("dsi_") + id, cell);
    }
}

// export and unexport are there once for all lines, as in the kernel. A line that the boot loader
// has left as an output stays one until it is written to.
void fitGpio(const XMLElement& element, Fitting& fitting) {
    const uint32_t line = number(element, "number");
    const std::string name = "gpio" + std::to_string(line);
    const std::string files = kGpio + name;
    Hardware& hardware = fitting.hardware;
    if (fitting.lines->empty()) {
        for (const bool exports : {true, false}) {
            hardware.add(kGpio + std::string(exports ? "export" : "unexport"), "",
                         std::make_unique<GpioExport>(fitting.lines, exports));
        }
    }
    hardware.add(files + "/value", name, std::make_unique<GpioValue>(fitting.lines, line));
    hardware.add(files + "/direction", "", std::make_unique<GpioDirection>(fitting.lines, line));
    GpioLine& state = (*fitting.lines)[line];
    state.level = oneOf(element, "level", {"0", "1"}) == 1;
    state.output = oneOf(element, "direction", {"in", "out"}) == 1;
}

void fitCamera(const XMLElement& element, Fitting& fitting) {
    const std::string node = std::to_string(number(element, "node"));
    fitting.hardware.add("/dev/v4l-subdev" + node, "camera" + node,
                         std::make_unique<Camera>(needed(element, "sensor")));
}

void fitLeds(const XMLElement& element, Fitting& fitting) {
    const uint32_t count = number(element, "count");
    if (count < 1 || count > kMostLeds) {
        throw std::invalid_argument("count is not 1 to " + std::to_string(kMostLeds));
    }
    fitting.fitted.ledTrace = addLeds(fitting.hardware, count);
}

// Without attributes its chip's status is 1, and it hears -100 dBm, which is noise.
void fitReceiver(const XMLElement& element, Fitting& fitting) {
    if (fitting.fitted.receiver) throw std::invalid_argument("there is one already");
    const auto value = [&](const char* name, int32_t otherwise) {
        int32_t number = otherwise;
        if (element.Attribute(name) != nullptr) {
            require(name, host::parseInt32(attribute(element, name), &number));
        }
        return number;
    };
    fitting.fitted.receiver = std::make_shared<Receiver>(value("status", 1), value("rssi", -100));
}

void fitCoprocessor(const XMLElement& element, Fitting& fitting) {
    Coprocessor coprocessor;
    coprocessor.setManufacturer(needed(element, "manufacturer"));
    coprocessor.setVersion(needed(element, "version"));
    fitting.fitted.coprocessor = std::make_shared<CoprocessorPort>(coprocessor);
    CoprocessorPort::addNode(fitting.hardware, fitting.fitted.coprocessor);
}

// What an element may be. Attributes that are not listed are refused before fit() is called, so
// that a misspelt one is not taken for one that was left out.
struct Kind {
    const char* name;
    std::vector<std::string> attributes;
    void (*fit)(const XMLElement& element, Fitting& fitting);
};

const Kind& kindOf(const XMLElement& element) {
    static const std::vector<Kind> kKinds = {
            {"touch_panel", {"type", "id", "at"}, fitTouchPanel},
            {"display", {"reg", "hwid_flag", "id1_gpio", "id2_gpio"}, fitDisplay},
            {"gpio", {"number", "level", "direction"}, fitGpio},
            {"camera", {"node", "sensor"}, fitCamera},
            {"leds", {"count"}, fitLeds},
            {host::kReceiver, {"status", "rssi"}, fitReceiver},
            {host::kCoprocessor, {"manufacturer", "version"}, fitCoprocessor},
    };
    for (const Kind& kind : kKinds) {
        if (strcmp(kind.name, element.Name()) == 0) return kind;
    }
    throw std::invalid_argument("there is no such part");
}

void fitElement(const XMLElement& element, Fitting& fitting) {
    const Kind& kind = kindOf(element);
    for (const tinyxml2::XMLAttribute* next = element.FirstAttribute(); next != nullptr;
         next = next->Next()) {
        const auto& known = kind.attributes;
        if (std::find(known.begin(), known.end(), next->Name()) == known.end()) {
            throw std::invalid_argument(std::string("has no \"") + next->Name() + "\"");
        }
    }
    kind.fit(element, fitting);
}

}  // namespace

// The file is looked at twice: the first look tells mistakes with their line and its text, for
// which the parser itself has a number only.
Fitted fit(const std::filesystem::path& file, Hardware& hardware) {
    if (!std::filesystem::exists(file)) return {};
    const auto fail = [&](int line, const std::string& what) {
        throw std::runtime_error(file.string() + ":" + std::to_string(line) + ": " + what);
    };
    tinyxml2::XMLDocument document;
    const host::XmlError error = host::loadXml(file, &document);
    if (!error.cause.empty()) throw std::runtime_error(error.describe(file));
    const XMLElement* root = document.RootElement();
    if (strcmp(root->Name(), "board") != 0) fail(root->GetLineNum(), "not a <board>");
    if (const auto* attribute = root->FirstAttribute(); attribute != nullptr) {
        fail(root->GetLineNum(), std::string("board: has no \"") + attribute->Name() + "\"");
    }
    Fitting fitting{hardware};
    for (const tinyxml2::XMLNode* node = root->FirstChild(); node != nullptr;
         node = node->NextSibling()) {
        if (node->ToComment() != nullptr) continue;
        const XMLElement* element = node->ToElement();
        if (element == nullptr) fail(node->GetLineNum(), "text that is no part");
        try {
            fitElement(*element, fitting);
        } catch (const std::invalid_argument& wrong) {
            fail(node->GetLineNum(), std::string(element->Name()) + ": " + wrong.what());
        }
    }
    return fitting.fitted;
}

}  // namespace tarq::board
