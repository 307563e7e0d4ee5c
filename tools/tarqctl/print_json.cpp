#include "tools/tarqctl/print_json.h"

#include <ostream>

namespace tarq::tools {

Json orNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json orNull(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json();
}

Json orNull(int number) {
    return number == 0 ? Json() : Json(number);
}

void printJson(std::ostream& out, const Json& json) {
    // The default handler throws at text that is not UTF-8, and a command may print anything.
    out << json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n" << std::flush;
}

int printResult(const Session& session, const Json& object, const std::string& text) {
    if (session.json) {
        printJson(session.out, object);
    } else {
        session.out << text + "\n" << std::flush;
    }
    return kDone;
}

int printDone(const Session& session) {
    if (session.json) printJson(session.out, Json::object());
    return kDone;
}

}  // namespace tarq::tools
