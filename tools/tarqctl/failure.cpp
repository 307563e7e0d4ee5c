#include "tools/tarqctl/failure.h"

#include <ostream>

#include "tools/tarqctl/print_json.h"

namespace tarq::tools {

void printFailure(const Failure& failure, bool json, std::ostream& out, std::ostream& err) {
    if (json) {
        printJson(out, {{"error",
                         {{"code", failure.code},
                          {"message", failure.what + ": " + failure.why},
                          {"hint", failure.hint}}}});
        return;
    }
    err << "tarqctl: " + failure.what + ": " + failure.why + "\nhint: " + failure.hint + "\n" +
                    failure.usage
        << std::flush;
}

}  // namespace tarq::tools
