// key: a remote control, played to the board's receiver. A key is one command to the board, which
// refuses it with the reason when nothing hears it; a record is played with the pauses in which
// `radio watch --json` has seen it.
#include <math.h>

#include <CLI/App.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

using std::chrono::milliseconds;
using Words = std::vector<std::string>;

// One press of a key, as the receiver tells it to its users: what its three values mean is theirs
// to know.
struct Key {
    std::vector<int32_t> values;
    std::optional<int32_t> rssiDBm;  // none: as strong as what is heard now
    milliseconds at{0};              // from the first one on
};

// What the arguments say.
struct Options {
    std::vector<int32_t> values;
    int32_t rssiDBm = 0;
    int32_t frequency = 433;
    int32_t count = 1;
    int32_t everyMs = 0;
    std::string record;
    bool isFast = false;
};

// As `radio watch --json` prints it. Throws std::invalid_argument.
Key parseKey(const std::string& line) {
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object()) throw std::invalid_argument("no JSON object");
    const auto number = [&](const char* name, double least, double most) {
        const Json value = object.value(name, Json());
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

// Read whole before the first is sent, so that a mistake in the last line is not found in the
// middle.
std::vector<Key> readRecord(const Session& session, const std::string& file) {
    std::vector<Key> keys;
    int number = 0;
    const auto wrong = [&](const std::string& what) {
        return session.failure("bad_record", file + what, session.help());
    };
    readLines(session, file, [&](const std::string& line) {
        ++number;
        try {
            keys.push_back(parseKey(line));
            if (keys.back().at < keys[std::max<size_t>(keys.size(), 2) - 2].at) {
                throw std::invalid_argument("ms goes back");
            }
        } catch (const std::invalid_argument& why) {
            throw wrong(":" + std::to_string(number) +
                        ": no line of tarqctl radio watch --json: " + why.what());
        }
    });
    if (keys.empty()) throw wrong(": no keys are recorded there");
    return keys;
}

// One of so many, of which as many as sent were heard before. The board answers when a program has
// the key in its queue, so a key that was sent is one that was heard.
void send(const Session& session, const Key& key, int32_t frequency, size_t sent, size_t count) {
    Words words = {"key"};
    for (const int32_t value : key.values) words.push_back(std::to_string(value));
    words.push_back(std::to_string(frequency));
    if (key.rssiDBm) words.push_back(std::to_string(*key.rssiDBm));
    const std::string refusal = askBoard(session, words);
    if (refusal.empty()) return;
    const std::string heard =
            "; " + std::to_string(sent) + " of " + std::to_string(count) + " were heard";
    throw session.failure("not_heard", refusal + (count > 1 ? heard : ""),
                          session.next("radio status"), kServiceSaidNo);
}

// Times count from the first key, so that what one takes does not delay those behind it.
int play(Session& session, const Options& options, bool hasRssi) {
    if (options.values.size() != 3 && options.record.empty()) {
        throw session.failure("usage",
                              "give the three values of a key, or --replay; " +
                                      std::to_string(options.values.size()) + " are given",
                              session.help());
    }
    openBoard(session);
    std::vector<Key> recorded;
    if (!options.record.empty()) recorded = readRecord(session, options.record);
    const size_t count = recorded.empty() ? static_cast<size_t>(options.count) : recorded.size();
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < count; ++i) {
        Key key = {options.values, std::nullopt, milliseconds(options.everyMs) * i};
        if (hasRssi) key.rssiDBm = options.rssiDBm;
        if (!recorded.empty()) key = recorded[i];
        const milliseconds first = recorded.empty() ? milliseconds(0) : recorded[0].at;
        if (!options.isFast) std::this_thread::sleep_until(start + key.at - first);
        send(session, key, options.frequency, i, count);
    }
    return printDone(session);
}

}  // namespace

Run declareKey(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::Option* values = addNumbers(app, "VALUES", "what the receiver tells of it, three numbers",
                                     &options->values);
    values->expected(-1);
    const CLI::Option* rssi =
            addNumber(app, "--rssi",
                      "how strong it arrives, in dBm; as what was heard last,\nunless given",
                      host::parseInt32, &options->rssiDBm)
                    ->type_name("N");
    addNumber(app, "--frequency", "where it is sent; 433 unless given", host::parseInt32,
              &options->frequency)
            ->type_name("N");
    CLI::Option* count = addNumber(app, "--repeat", "so many times", parseCount, &options->count)
                                 ->type_name("N");
    CLI::Option* every =
            addNumber(app, "--every", "so many ms apart", parseCount, &options->everyMs)
                    ->type_name("MS")
                    ->needs(count);
    CLI::Option* record =
            app.add_option("--replay", options->record,
                           "instead of VALUES: the lines of tarqctl radio watch --json\n"
                           "in this file, or - for standard input, as far apart as they\n"
                           "were")
                    ->type_name("FILE")
                    ->excludes(values)
                    ->excludes(count)
                    ->excludes(every);
    app.add_flag("--fast", options->isFast, "without their pauses")->needs(record);
    return [options, rssi](Session& session) { return play(session, *options, rssi->count() > 0); };
}

}  // namespace tarq::tools
