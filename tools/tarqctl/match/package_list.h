// The list of a package, as people write it into a file. Blank lines and those that begin with #
// are no items.
#pragma once

#include <string>
#include <vector>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

struct PackageList {
    std::vector<std::string> items;
    std::vector<std::string> places;  // "FILE:LINE" of each; none of the command line's

    // "FILE:LINE: ", or "".
    std::string placeOf(size_t item) const {
        return item < places.size() ? places[item] + ": " : "";
    }
};

// One item a line; "-" is standard input. Throws a Failure with the line that is no item. A line
// that ends in CR LF is taken without the CR, which is noticed on standard error.
PackageList readList(const Session& session, const std::string& file);

}  // namespace tarq::tools
