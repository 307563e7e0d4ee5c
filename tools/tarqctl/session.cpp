// What is printed for people and what for programs is decided here. Bytes of files, logs and
// command lines are escaped on their way to a terminal, and JSON never fails for bytes that are no
// UTF-8: a command that has done its work must be able to say so.
#include "tools/tarqctl/session.h"

#include <ctype.h>

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "host/run/text.h"

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

// The two forms say the same. A hint is typed as it is, so what a name holds was quoted for a shell
// when the hint was made.
void printFailure(const Failure& failure, bool json, std::ostream& out, std::ostream& err) {
    if (json) {
        printJson(out, {{"error",
                         {{"code", failure.code},
                          {"message", failure.what + ": " + failure.why},
                          {"hint", failure.hint}}}});
        return;
    }
    err << "tarqctl: " + host::escaped(failure.what + ": " + failure.why) +
                    "\nhint: " + failure.hint + "\n" + failure.usage
        << std::flush;
}

void Session::notice(const std::string& text) const {
    err << "tarqctl: " + host::escaped(line + ": " + text) + "\n" << std::flush;
}

std::string Session::next(const std::string& command) const {
    return "tarqctl --board " + shellQuoted(board.directory) + " " + command;
}

// The program is named by its path; where the system does not tell that, by its name. What next()
// says begins with the name, which is replaced.
std::string Session::asRoot() const {
    std::error_code unknown;
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", unknown);
    const std::string words = next(line);
    return "sudo " + (unknown ? "tarqctl" : shellQuoted(program)) + words.substr(words.find(' '));
}

std::string painted(const Session& session, const std::string& verdict, bool isYes) {
    if (!session.coloured) return verdict;
    return (isYes ? "\x1b[32m" : "\x1b[31m") + verdict + "\x1b[0m";
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) text += (i > 0 ? " " : "") + words[i];
    return text;
}

// Everything that is not known to be harmless is quoted; a tilde or a brace means something to some
// shell.
std::string shellQuoted(const std::string& word) {
    static const char kPlain[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-@:.,/+=%";
    if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) return word;
    const bool hasControls = std::any_of(word.begin(), word.end(), [](char c) {
        return iscntrl(static_cast<unsigned char>(c)) != 0;
    });
    std::string quoted = "'";
    if (hasControls) {  // as they are they would command the terminal, or forge a line
        for (const char c : word) {
            if (iscntrl(static_cast<unsigned char>(c)) != 0) {
                quoted += "\\x" + host::hexOf(std::string(1, c));
            } else {
                quoted += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
            }
        }
        return "$" + quoted + "'";
    }
    // Nothing has a meaning between single quotes but the quote itself.
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

}  // namespace tarq::tools
