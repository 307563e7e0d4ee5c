// What somebody may have meant who has mistyped a name.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tarq::host {

// How many bytes are to be changed, added or taken away to make one of the other.
size_t distance(const std::string& a, const std::string& b);

// The name that is near enough to be meant: at most a third of its letters are other ones. Else "".
// Of names that are equally near the first one is taken.
std::string nearestName(const std::string& word, const std::vector<std::string>& names);

// "there is no such command, only a b", or of one that may be meant "there is no such command; did
// you mean a?"
std::string noSuchCommand(const std::string& word, const std::vector<std::string>& names);

// Of the words of a command line that the parser did not take the first that looks like an option
// and is none of the app and those above it: "there is no option --nope", or with one that may be
// meant, as above. "" when there is no such word. Behind "--" there are none. A number below 0 is
// no option, so it is passed over.
std::string noSuchOption(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace tarq::host
