// radio status|rssi|frequency: one call each, or none. What the receiver is tuned to at a start is
// kept in a property and read from there, as the daemon reads it, so that it can be told without
// one.
#include "tools/tarqctl/commands/radio_commands.h"

#include <cutils/properties.h>
#include <stdlib.h>

#include <CLI/App.hpp>

#include "host/run/file_systems.h"
#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

using android::sp;
using android::binder::Status;
using com::tarq::radiokey::IRadioKeyService;

sp<IRadioKeyService> radioOf(const Daemon& daemon) {
    return daemon.service<IRadioKeyService>(IRadioKeyService::SERVICE_NAME());
}

// As the daemon does it, which takes any text for a number.
StoredFrequency storedFrequency() {
    char text[PROPERTY_VALUE_MAX];
    property_get("persist.radiokey.frequence", text, "");
    return {text[0] != '\0' ? atoi(text) : 433, text};  // NOLINT(cert-err34-c)
}

std::string asText(const StoredFrequency& frequency) {
    const std::string number = std::to_string(frequency.number);
    if (frequency.text.empty()) return number + " (default)";
    int32_t parsed = 0;
    if (host::parseInt32(frequency.text, &parsed).empty()) return number;
    return number + " (what the daemon makes of \"" + host::escaped(frequency.text) + "\")";
}

// Only two numbers have a meaning that is known here, and of these one is the service's and one the
// virtual board's.
std::string meaningOfStatus(int32_t status) {
    const std::string number = "chip status " + std::to_string(status);
    if (status == kChipNotReady) {
        return number + ": the receiver is being started or tuned, or says so itself";
    }
    if (status != kChipAbsent) return number;
    return number + ", with which a virtual board says that no receiver answers";
}

namespace {

// Makes one call of the service.
void ask(Session& session, const std::function<Status(IRadioKeyService&)>& call) {
    const Daemon daemon(session, kRadioIsSlow);
    daemon.expectOk(call(*radioOf(daemon)));
}

// Not ready is exit code 1, so that a script can wait for it.
Run declareStatus(CLI::App& /*app*/) {
    return [](Session& session) -> int {
        int32_t status = 0;
        ask(session, [&](IRadioKeyService& radio) { return radio.getChipStatus(&status); });
        const bool isReady = status != kChipNotReady;
        printResult(session, {{"ready", isReady}, {"chip_status", status}},
                    painted(session, isReady ? "ready" : "not ready", isReady) + ", " +
                            meaningOfStatus(status));
        return isReady ? kDone : kServiceSaidNo;
    };
}

Run declareRssi(CLI::App& /*app*/) {
    return [](Session& session) {
        int32_t rssi = 0;
        ask(session, [&](IRadioKeyService& radio) { return radio.getRssiDBm(&rssi); });
        return printResult(session, {{"rssi_dbm", rssi}}, std::to_string(rssi) + " dBm");
    };
}

// It is what the next start will do, which is all that can be told without the daemon.
int printStored(Session& session) {
    openBoard(session);
    const StoredFrequency stored = storedFrequency();
    return printResult(session, {{"frequency", stored.number}, {"stored", orNull(stored.text)}},
                       asText(stored));
}

static std::string whyNotStored(const Session& session) {
    const int error = host::writeError(session.board);
    return error == 0 ? "" : ": " + host::cannotBeWritten(session.board, error);
}

// No number is refused: which frequencies there are only the receiver knows.
Run declareFrequency(CLI::App& app) {
    const auto number = std::make_shared<int32_t>();
    const CLI::Option* given =
            addNumber(app, "N",
                      "decimal, in the receiver's own unit; it is kept for later starts too.\n"
                      "Left out: print what is kept, which needs no daemon",
                      host::parseInt32, number.get());
    return [number, given](Session& session) -> int {
        if (given->count() == 0) return printStored(session);
        ask(session, [&](IRadioKeyService& radio) { return radio.setRadiokeyFrequency(*number); });
        // The service does not look at whether it could be stored.
        if (storedFrequency().text != std::to_string(*number)) {
            throw session.failure("not_stored",
                                  "the receiver is tuned, but the number is not kept for later "
                                  "starts" +
                                          whyNotStored(session),
                                  session.next("log"));
        }
        printResult(session, {{"frequency", *number}},
                    std::to_string(*number) + ", also after restarts");
        if (*number <= 0) {
            session.notice(
                    "the number was handed to the receiver as it is; nobody tells whether it "
                    "can be tuned to that");
        }
        return kDone;
    };
}

}  // namespace

const std::vector<Command>& radioCommands() {
    static const std::vector<Command>& table = *new std::vector<Command>{
            {kSubcommands, "status", "Tells whether the receiver is ready, and its chip's status.",
             "tarqctl radio status", declareStatus},
            {kSubcommands, "rssi", "Prints the signal strength.", "tarqctl radio rssi",
             declareRssi},
            {kSubcommands, "frequency",
             "Tunes the receiver, or prints to what it will be tuned at a start.",
             "tarqctl radio frequency 433", declareFrequency},
            {kSubcommands, "watch",
             "Prints every key that is received, until Ctrl-C or the daemon's or board's end.",
             "tarqctl radio watch", declareRadioWatch},
    };
    return table;
}

Run declareRadio(CLI::App& app) {
    return declareOneOf(radioCommands(), app);
}

}  // namespace tarq::tools
