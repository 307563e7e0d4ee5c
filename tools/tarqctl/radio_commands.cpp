// radio status|rssi|frequency: one call each, or none.
#include "tools/tarqctl/radio_commands.h"

#include <cutils/properties.h>
#include <stdlib.h>

#include <CLI/App.hpp>

#include "tools/tarqctl/board.h"
#include "tools/tarqctl/print_json.h"
#include "tools/tarqctl/text.h"
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
    if (parseInt32(frequency.text, &parsed).empty()) return number;
    return number + " (what the daemon makes of \"" + escaped(frequency.text) + "\")";
}

namespace {

// Makes one call of the service.
void ask(Session& session, const std::function<Status(IRadioKeyService&)>& call) {
    const Daemon daemon(session, kRadioIsSlow);
    daemon.expectOk(call(*radioOf(daemon)));
}

Run declareStatus(CLI::App& /*app*/) {
    return [](Session& session) -> int {
        int32_t status = 0;
        ask(session, [&](IRadioKeyService& radio) { return radio.getChipStatus(&status); });
        const bool isReady = status != kChipNotReady;
        printResult(session, {{"ready", isReady}, {"chip_status", status}},
                    isReady ? "ready, chip status " + std::to_string(status)
                            : "not ready: the receiver is being started or set to another "
                              "frequency");
        if (status == kChipAbsent) {
            session.notice("on a virtual board chip status 0 says that no receiver answers");
        }
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

int printStored(Session& session) {
    openBoard(session);
    const StoredFrequency stored = storedFrequency();
    const Json text = stored.text.empty() ? Json() : Json(stored.text);
    return printResult(session, {{"frequency", stored.number}, {"stored", text}}, asText(stored));
}

Run declareFrequency(CLI::App& app) {
    const auto number = std::make_shared<int32_t>();
    const CLI::Option* given =
            addNumber(app, "N",
                      "decimal, in the receiver's own unit; it is kept for later starts too.\n"
                      "Left out: print what is kept, which needs no daemon",
                      parseInt32, number.get());
    return [number, given](Session& session) {
        if (given->count() == 0) return printStored(session);
        ask(session, [&](IRadioKeyService& radio) { return radio.setRadiokeyFrequency(*number); });
        return printResult(session, {{"frequency", *number}},
                           std::to_string(*number) + ", also after restarts");
    };
}

}  // namespace

const std::vector<Command>& radioCommands() {
    static const std::vector<Command>& table = *new std::vector<Command>{
            {"status", "Tells whether the receiver is ready, and its chip's status.",
             "tarqctl radio status", declareStatus},
            {"rssi", "Prints the signal strength.", "tarqctl radio rssi", declareRssi},
            {"frequency", "Tunes the receiver, or prints what it is tuned to at a start.",
             "tarqctl radio frequency 433", declareFrequency},
            {"watch", "Prints every key that is received, until Ctrl-C.", "tarqctl radio watch",
             declareRadioWatch},
    };
    return table;
}

Run declareRadio(CLI::App& app) {
    return declareOneOf(radioCommands(), app);
}

}  // namespace tarq::tools
