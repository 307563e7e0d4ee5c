#include "host/board/key_command.h"

#include <errno.h>
#include <math.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>
#include <thread>

#include "host/board/control.h"
#include "host/board/view/views.h"

namespace tarq::board {

namespace {

using std::chrono::milliseconds;

// The keys of a remote control.
struct Key {
    std::vector<int32_t> values;
    std::optional<int32_t> rssiDBm;  // none: as strong as what is heard now
    milliseconds at{0};              // in a record
};

// What the arguments say.
struct Arguments {
    std::vector<int32_t> values;
    std::optional<int32_t> rssiDBm;
    int32_t frequency = 433;
    uint32_t count = 1;
    uint32_t everyMs = 0;
    std::string record;
    bool isFast = false;
};

// As "tarqctl radio watch --json" prints it.
Key parseKey(const std::string& line) {
    const nlohmann::json object = nlohmann::json::parse(line, nullptr, false);
    if (!object.is_object()) throw std::invalid_argument("no JSON object");
    const auto number = [&](const char* name, double least, double most) {
        const nlohmann::json value = object.value(name, nlohmann::json());
        const auto wide = value.is_number_integer() ? value.get<double>() : NAN;
        if (wide >= least && wide <= most) return value.get<int64_t>();
        throw std::invalid_argument(std::string(name) +
                                    " is missing, no integer, or out of its range");
    };
    const auto number32 = [&](const char* name) {
        return static_cast<int32_t>(number(name, INT32_MIN, INT32_MAX));
    };
    constexpr double kMostMs = 1e12;  // 30 years
    return {{number32("value1"), number32("value2"), number32("value3")},
            number32("rssi_dbm"),
            milliseconds(number("ms", 0, kMostMs))};
}

std::vector<Key> readRecord(const std::string& name) {
    std::ifstream file;
    if (name != "-") file.open(name);
    std::istream& in = name == "-" ? std::cin : file;
    if (!in) throw std::system_error(errno, std::system_category(), name);
    std::vector<Key> keys;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        try {
            keys.push_back(parseKey(line));
            if (keys.back().at < keys[std::max<size_t>(keys.size(), 2) - 2].at) {
                throw std::invalid_argument("ms goes back");
            }
        } catch (const std::exception& wrong) {
            throw std::runtime_error(name + ":" + std::to_string(number) +
                                     ": no line of tarqctl radio watch --json: " + wrong.what());
        }
    }
    if (in.bad()) throw std::system_error(errno, std::system_category(), name);
    if (keys.empty()) throw std::runtime_error(name + ": no keys are recorded there");
    return keys;
}

// One of so many, of which as many as sent were heard before.
void send(const Key& key, const Arguments& arguments, const std::string& board, size_t sent,
          size_t count) {
    std::vector<std::string> words = {"key"};
    for (const int32_t value : key.values) words.push_back(std::to_string(value));
    words.push_back(std::to_string(arguments.frequency));
    if (key.rssiDBm) words.push_back(std::to_string(*key.rssiDBm));
    std::string reason;
    if (ask(board, words, &reason)) return;
    const std::string heard =
            "; " + std::to_string(sent) + " of " + std::to_string(count) + " were heard";
    throw Refusal("key " + words[1] + " " + words[2] + " " + words[3] + ": " + reason +
                  (count > 1 ? heard : ""));
}

void repeat(const Arguments& arguments, const std::string& board) {
    const Key key = {arguments.values, arguments.rssiDBm};
    const auto start = std::chrono::steady_clock::now();
    for (uint32_t i = 0; i < arguments.count; ++i) {
        std::this_thread::sleep_until(start + i * milliseconds(arguments.everyMs));
        send(key, arguments, board, i, arguments.count);
    }
}

void replay(const Arguments& arguments, const std::string& board) {
    const std::vector<Key> keys = readRecord(arguments.record);
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < keys.size(); ++i) {
        if (!arguments.isFast) std::this_thread::sleep_until(start + keys[i].at - keys[0].at);
        send(keys[i], arguments, board, i, keys.size());
    }
}

}  // namespace

void declareKey(CLI::App& app, std::function<void(const std::string& board)>* play) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* key = app.add_subcommand("key", "Sends a key of a remote control to the receiver");
    CLI::Option* values =
            key->add_option("VALUES", arguments->values, "what the receiver tells of it")
                    ->expected(3)
                    ->type_name("");
    key->add_option("--rssi", arguments->rssiDBm,
                    "how strong it arrives, in dBm; as what was heard last, unless given");
    key->add_option("--frequency", arguments->frequency, "where it is sent; 433 unless given");
    CLI::Option* count = key->add_option("--repeat", arguments->count, "so many times")
                                 ->check(CLI::Range(1U, UINT32_MAX));
    CLI::Option* every =
            key->add_option("--every", arguments->everyMs, "so many ms apart")->needs(count);
    CLI::Option* record =
            key->add_option("--replay", arguments->record,
                            "instead of VALUES: the lines of tarqctl radio watch --json in this "
                            "file, or - for standard input, as far apart as they were")
                    ->excludes(values)
                    ->excludes(count)
                    ->excludes(every);
    key->add_flag("--fast", arguments->isFast, "without their pauses")->needs(record);
    key->callback([arguments, play] {
        if (arguments->values.empty() && arguments->record.empty()) {
            throw CLI::RequiredError("VALUES or --replay");
        }
        const auto how = arguments->record.empty() ? repeat : replay;
        *play = [=](const std::string& board) { how(*arguments, board); };
    });
}

}  // namespace tarq::board
