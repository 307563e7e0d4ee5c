// An effect file as the daemon hands it to the LED driver, and what the driver says to it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/board/leds/led_driver.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// What the daemon makes of an item of the file, in the order of the file.
struct EffectRecord {
    std::string attribute;        // "" for what it leaves out
    std::string text;             // of the record; or what is left out, and why
    int line = 0;                 // 0: it has none, as the first and the last record
    std::string whyRefused = {};  // by the driver; "" when it takes the record
};

// The first and the last record are the driver's commands that begin and end the transfer.
struct EffectTransfer {
    std::string file;
    std::vector<EffectRecord> records;
    std::optional<board::LedEffect> effect;  // that is played then; none when the end is refused

    // "FILE:LINE: left out: …", "FILE:LINE: the driver refuses "c 0 1": …", fit to be printed; ""
    // when nothing is the matter.
    std::string trouble(const EffectRecord& record) const;
};

// Reads it, a path of the device or any other, with the daemon's reader, and writes it to a driver
// of so many LEDs. Throws a Failure when the daemon would send nothing, as it cannot be read: no
// such file, not readable and no XML are told apart. What the driver refuses does not end it: the
// daemon, which does not ask, goes on as well.
EffectTransfer transferEffect(const Session& session, const std::string& file, size_t leds);

// Opens the board, and tells how many LEDs it has; nothing where that is not known. A file that is
// none of the device needs no board.
std::optional<size_t> findLeds(Session& session, const std::string& file);

// "x.xml:3: CAUSE: TEXT", when the daemon could not read it; "" when it can be read here.
std::string whyUnreadable(const std::string& file);

// Each one on err; the last one is the Failure that is thrown, if there is any. The service has
// said no then (exit code 1).
void throwIfAny(const Session& session, const std::vector<std::string>& refusals);

}  // namespace tarq::tools
