// getprop, setprop: on the board's files, so they need no daemon. The platform says why a property
// was not set in its log alone; the entry is caught and its reason becomes the tool's.
#include <cutils/properties.h>
#include <errno.h>
#include <host/log_sink.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <filesystem>
#include <map>
#include <ostream>

#include "host/run/file_systems.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/commands.h"

namespace tarq::tools {

namespace fs = std::filesystem;

using Properties = std::map<std::string, std::string>;

// As on a device, nobody can tell a property that is empty from one that is missing.
static std::string get(const std::string& name, const std::string& fallback) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, fallback.c_str());
    return value;
}

// Every property is a file; one that begins with a dot is being written.
static Properties all(const Session& session) {
    Properties properties;
    std::error_code error;
    const fs::directory_iterator files(session.board.properties(), error);
    if (error) {
        throw session.failure("no_properties", session.board.properties() + ": " + error.message(),
                              howToStart(error.value()));
    }
    for (const fs::directory_entry& file : files) {
        const std::string name = file.path().filename();
        if (name[0] != '.') properties[name] = get(name, "");
    }
    return properties;
}

// The brackets are those of getprop on a device.
static void print(const Session& session, const Properties& properties, bool nameEach) {
    if (session.json) {
        printJson(session.out, {{"properties", properties}});
        return;
    }
    for (const auto& [name, value] : properties) {
        session.out << (nameEach ? "[" + name + "]: [" + value + "]\n" : value + "\n")
                    << std::flush;
    }
}

// A default is printed for a property that is empty as well, as on a device.
Run declareGetprop(CLI::App& app) {
    const auto name = std::make_shared<std::string>();
    const auto fallback = std::make_shared<std::string>();
    app.add_option("NAME", *name, "only this property; nothing if it is missing or empty");
    app.add_option("DEFAULT", *fallback, "what to print then");
    return [name, fallback](Session& session) -> int {
        openBoard(session);
        if (name->empty()) {
            print(session, all(session), true);
        } else {
            print(session, {{*name, get(*name, *fallback)}}, false);
        }
        return kDone;
    };
}

// A property may be set and still not be saved, of which said tells then.
struct Setting {
    bool done;
    std::string said;  // why not, or what went wrong besides
};

// The platform gives its reasons in a log entry alone, behind the property's name and value.
static Setting set(const std::string& name, const std::string& value) {
    if (value.size() >= PROPERTY_VALUE_MAX) {
        return {false, "the value has " + std::to_string(value.size()) + " bytes, 91 are allowed"};
    }
    std::string entry;
    host::setLogSink([&entry](int, const char*, const std::string& text) { entry = text; });
    const bool done = property_set(name.c_str(), value.c_str()) == 0;
    host::setLogSink({});
    const std::string known = "\"" + name + "\" to \"" + value + "\": ";
    const size_t at = entry.find(known);
    return {done, at == std::string::npos ? entry : entry.substr(at + known.size())};
}

// The rules stand in the help; other users of a shared board may only read. A ro. property that is
// set already is the usual cause, so its value is what to look at.
static std::string hintAfterRefusal(const Session& session, const std::string& name) {
    const std::string directory = session.board.properties();
    if (access(directory.c_str(), W_OK) != 0 && errno == EACCES) {
        return session.asRoot();
    }
    const bool isSet = !get(name, "").empty();
    return isSet ? session.next("getprop " + shellQuoted(name)) : session.help();
}

Run declareSetprop(CLI::App& app) {
    const auto name = std::make_shared<std::string>();
    const auto value = std::make_shared<std::string>();
    app.add_option("NAME", *name,
                   "A-Z a-z 0-9 _ - @ : and single dots between them; a ro. name is set only once")
            ->required();
    app.add_option("VALUE", *value,
                   "at most 91 bytes of UTF-8; put -- before one that begins with a dash")
            ->required();
    return [name, value](Session& session) -> int {
        openBoard(session);
        const Setting outcome = set(*name, *value);
        const int error = outcome.done ? 0 : host::writeError(session.board);
        if (error == ENOSPC || error == EDQUOT) {
            throw session.failure("not_stored", host::cannotBeWritten(session.board, error),
                                  "df -h " + shellQuoted(session.board.directory));
        }
        if (!outcome.done) {
            throw session.failure("refused", outcome.said, hintAfterRefusal(session, *name),
                                  kServiceSaidNo);
        }
        if (!outcome.said.empty()) session.notice(outcome.said);
        return printDone(session);
    };
}

}  // namespace tarq::tools
