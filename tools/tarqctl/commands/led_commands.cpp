// led color|brightness|set|effect|stop: one call each. The units are the LED driver's. Each tells
// what the log prints of its call, and what the driver is sent, by which its outcome is found.
#include "tools/tarqctl/commands/led_commands.h"

#include <unistd.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <array>

#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

using android::binder::Status;
using com::tarq::rgbleds::IRgbLedsService;
using Words = std::vector<std::string>;

namespace {

// What the arguments of any of the commands say; each fills what it has.
struct Numbers {
    int32_t id = 0;
    int32_t colour = 0;
    int32_t brightness = 0;
    std::vector<int32_t> ids = {};
    std::array<int32_t, 5> effect = {};
};

Words texts(std::initializer_list<int32_t> numbers) {
    Words words;
    for (const int32_t number : numbers) words.push_back(std::to_string(number));
    return words;
}

// Of 32 bits, as the daemon hands numbers to the driver: -1 is ffffffff.
std::string hex(int32_t number, const char* format = "%x") {
    char digits[9];
    snprintf(digits, sizeof(digits), format, static_cast<unsigned>(number));
    return digits;
}

// It may be negative: the daemon checks nothing, and the driver's refusal is part of what one may
// want to see.
CLI::Option* addId(CLI::App& app, Numbers& numbers) {
    return addNumber(app, "ID",
                     "of the LED, decimal, from 0 on; below 0 the driver gets 32\nbits: -1 is "
                     "ffffffff",
                     host::parseInt32, &numbers.id)
            ->required();
}

int setColour(Session& session, const Numbers& n) {
    askLeds(session, "setRgbColor", [&n](IRgbLedsService& leds, LedAnswer* answer) {
        answer->arguments = texts({n.id, n.colour});
        answer->records = {"set_color " + hex(n.id) + " " + hex(n.colour)};
        return leds.setRgbColor(n.id, n.colour, &answer->done);
    });
    return printDone(session);
}

int setBrightness(Session& session, const Numbers& n) {
    askLeds(session, "setRgbBrightness", [&n](IRgbLedsService& leds, LedAnswer* answer) {
        answer->arguments = texts({n.id, n.brightness});
        answer->records = {"set_brightness " + hex(n.id) + " " + hex(n.brightness)};
        return leds.setRgbBrightness(n.id, n.brightness, &answer->done);
    });
    return printDone(session);
}

// Without a driver the daemon reads from the attribute what it has just written there.
void requireDriver(const Session& session) {
    if (access(session.board.ledRecords().c_str(), F_OK) == 0) return;
    throw session.failure(
            "no_record",
            "the board has no LED driver that could tell: " + askBoard(session, {"trace"}),
            howToStart(0));
}

// A file that is played as empty or as garbage is read as 0 or as any number.
void requireSound(const Session& session, const std::string& attribute) {
    host::BoardState board;
    std::string hint;
    if (!askState(session, &board, &hint).empty()) return;
    for (const host::NodeState& node : board.nodes) {
        if (node.name != attribute || node.fault == host::NodeState().fault) continue;
        throw session.failure("fault",
                              "what was read is not known: the board plays the fault \"" +
                                      node.fault + "\" of " + attribute,
                              session.next("fault " + attribute + " none"));
    }
}

// The daemon answers with a number whatever happened, 0 for instance. So it is believed only where
// a driver is there to be read and plays no fault.
int32_t read(Session& session, const std::string& operation, const std::string& attribute,
             int32_t id, Status (IRgbLedsService::*get)(int32_t, int32_t*)) {
    int32_t value = 0;
    askLeds(session, operation, [&](IRgbLedsService& leds, LedAnswer* answer) {
        Status status = (leds.*get)(id, &value);
        answer->arguments = {std::to_string(id), hex(value)};
        answer->records = {attribute + " " + hex(id)};
        return status;
    });
    requireDriver(session);
    requireSound(session, attribute);
    return value;
}

Run declareColour(CLI::App& app) {
    const auto n = std::make_shared<Numbers>();
    addId(app, *n);
    const CLI::Option* given =
            addNumber(app, "RRGGBB",
                      "six hexadecimal digits; left out: print the colour set last.\n"
                      "An effect file that plays, as one does from the start on,\n"
                      "hides it: tarqctl led stop",
                      parseColour, &n->colour);
    return [n, given](Session& session) {
        if (given->count() > 0) return setColour(session, *n);
        const int32_t value =
                read(session, "getRgbColor", "get_color", n->id, &IRgbLedsService::getRgbColor);
        const std::string colour = hex(value, "%06x");
        return printResult(session, {{"color", colour}}, colour);
    };
}

Run declareBrightness(CLI::App& app) {
    const auto n = std::make_shared<Numbers>();
    addId(app, *n);
    const CLI::Option* given = addNumber(
            app, "N",
            "decimal, 0 to 255 on a virtual board; left out: print the\nbrightness set last",
            host::parseInt32, &n->brightness);
    return [n, given](Session& session) {
        if (given->count() > 0) return setBrightness(session, *n);
        const int32_t value = read(session, "getRgbBrightness", "get_brightness", n->id,
                                   &IRgbLedsService::getRgbBrightness);
        return printResult(session, {{"brightness", value}}, std::to_string(value));
    };
}

Run declareSet(CLI::App& app) {
    const auto n = std::make_shared<Numbers>();
    addNumber(app, "--color", "six hexadecimal digits", parseColour, &n->colour)
            ->required()
            ->type_name("RRGGBB");
    addNumber(app, "--brightness", "decimal", host::parseInt32, &n->brightness)
            ->required()
            ->type_name("N");
    addNumbers(app, "ID", "of the LEDs, decimal, set one after the other", &n->ids)->required();
    return [n](Session& session) {
        askLeds(session, "setLedList", [&n](IRgbLedsService& leds, LedAnswer* answer) {
            answer->arguments = texts({n->ids.back(), n->colour, n->brightness});
            for (const int32_t id : n->ids) {
                answer->records.push_back("set_color " + hex(id) + " " + hex(n->colour));
                answer->records.push_back("set_brightness " + hex(id) + " " + hex(n->brightness));
            }
            return leds.setLedList(n->ids, n->colour, n->brightness, &answer->done);
        });
        return printDone(session);
    };
}

// In the order of the call.
constexpr const char* kParameters[] = {"type", "color", "brightness", "cont", "val"};

// Each one once, in any order.
void parseEffect(const Words& words, std::array<int32_t, 5>* values) {
    std::array<bool, 5> given = {};
    for (const std::string& word : words) {
        const std::string name = word.substr(0, word.find('='));
        const auto* known = std::find(std::begin(kParameters), std::end(kParameters), name);
        if (known == std::end(kParameters) || name.size() == word.size()) {
            throw CLI::ValidationError(word,
                                       "it is none of type=, color=, brightness=, cont=, val=");
        }
        const auto i = static_cast<size_t>(known - kParameters);
        if (std::exchange(given[i], true)) throw CLI::ValidationError(name, "it is given twice");
        parseOrThrow(name == "color" ? parseColour : host::parseInt32, name,
                     word.substr(name.size() + 1), &(*values)[i]);
    }
    const auto* missing = std::find(given.begin(), given.end(), false);
    if (missing == given.end()) return;
    throw CLI::ValidationError(kParameters[missing - given.begin()], "it is not given");
}

Run declareEffect(CLI::App& app) {
    const auto n = std::make_shared<Numbers>();
    addId(app, *n);
    app.add_option_function<Words>(
               "NAME=VALUE", [n](const Words& words) { parseEffect(words, &n->effect); },
               "type, color, brightness, cont and val, all of them; the colour\n"
               "in six hexadecimal digits, the others decimal. They mean what\n"
               "the driver makes of them; to the one of a virtual board:\n"
               "type 0 ends it, 1 is steady, 2 blinks, 3 breathes;\n"
               "brightness 0 to 255; it lasts for cont periods, with 0 or less\n"
               "for ever; val is the period in units of 100 ms, from 1 on")
            ->required();
    return [n](Session& session) {
        askLeds(session, "setRgbEffect", [&n](IRgbLedsService& leds, LedAnswer* answer) {
            const auto& [type, colour, brightness, cont, val] = n->effect;
            answer->arguments = texts({n->id, type, colour, brightness, cont, val});
            answer->records = {"standby_effect " + hex(n->id) + " " + hex(type) + " " +
                               hex(colour) + " " + hex(brightness) + " " + std::to_string(cont) +
                               " " + hex(val)};
            int32_t result = 0;
            Status status = leds.setRgbEffect(n->id, type, colour, brightness, cont, val, &result);
            answer->done = result != 0;
            return status;
        });
        return printDone(session);
    };
}

Run declareStop(CLI::App& /*app*/) {
    return [](Session& session) {
        askLeds(session, "stopLampEffect", [](IRgbLedsService& leds, LedAnswer* answer) {
            int32_t result = 0;
            Status status = leds.stopLampEffect(&result);
            answer->done = result != 0;
            return status;
        });
        return printDone(session);
    };
}

}  // namespace

const std::vector<Command>& ledCommands() {
    static const std::vector<Command>& table = *new std::vector<Command>{
            {kSubcommands, "color", "Sets an LED's colour, or prints it.", "tarqctl led color 3",
             declareColour},
            {kSubcommands, "brightness", "Sets an LED's brightness, or prints it.",
             "tarqctl led brightness 3 128", declareBrightness},
            {kSubcommands, "set", "Sets several LEDs.",
             "tarqctl led set --color ff8000 --brightness 255 0 1 2", declareSet},
            {kSubcommands, "effect", "Sets the effect of an LED while no file plays.",
             "tarqctl led effect 3 type=2 color=ff0000 brightness=255 cont=0 val=10",
             declareEffect},
            {kSubcommands, "play", "Plays an effect file.", "tarqctl led play wave_fast",
             declareLedPlay},
            {kSubcommands, "stop", "Stops the effect file that plays.", "tarqctl led stop",
             declareStop},
    };
    return table;
}

Run declareLed(CLI::App& app) {
    return declareOneOf(ledCommands(), app);
}

}  // namespace tarq::tools
