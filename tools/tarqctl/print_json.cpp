#include "tools/tarqctl/print_json.h"

#include <ostream>

namespace tarq::tools {

void printJson(std::ostream& out, const Json& json) {
    // The default handler throws at text that is not UTF-8, and a command may print anything.
    out << json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n" << std::flush;
}

}  // namespace tarq::tools
