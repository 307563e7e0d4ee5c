// The help is made from what the commands have declared, in one shape for all of them: the parser's
// own formatter begins with the description, and leaves out the global options.
#include <string.h>

#include <CLI/App.hpp>
#include <iomanip>
#include <sstream>
#include <utility>
#include <vector>

#include "tools/tarqctl/tarqctl.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

static constexpr int kNames = 14;  // the width of the names' column

using Rows = std::vector<std::pair<std::string, std::string>>;

static bool isPositional(const CLI::Option* option) {
    return option->get_positional();
}

// Some are declared only to refuse them with a better word than the parser has.
static std::vector<const CLI::Option*> shownPositionals(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) {
        return isPositional(option) && option->get_group() != kHidden;
    });
}

// NAME, [NAME] for one that may be left out, NAME... for one that may be given again.
static std::string usageOf(const CLI::Option& positional) {
    const std::string name =
            positional.get_name() + (positional.get_items_expected_max() > 1 ? "..." : "");
    return positional.get_required() ? name : "[" + name + "]";
}

std::string usageOf(const CLI::App& app) {
    std::string words;
    for (const CLI::App* a = &app; a->get_parent() != nullptr; a = a->get_parent()) {
        words = " " + a->get_name() + words;
    }
    for (const CLI::Option* option : shownPositionals(app)) {
        words += " " + usageOf(*option);
    }
    if (!app.get_subcommands({}).empty()) words += " COMMAND";
    return "usage: tarqctl [OPTIONS]" + words + "\n";
}

// What a command is given, in order.
static Rows positionals(const CLI::App& app) {
    Rows rows;
    for (const CLI::Option* option : shownPositionals(app)) {
        rows.emplace_back(option->get_name(), option->get_description());
    }
    return rows;
}

// The app's own options, then those of the apps above it, once each. Global options are printed
// with every command, because they may stand behind it.
static Rows options(const CLI::App& app) {
    Rows rows;
    for (const CLI::App* a = &app; a != nullptr; a = a->get_parent()) {
        for (const CLI::Option* option : a->get_options()) {
            // Its own of that name stands for it, and the version is the tool's.
            const bool isHidden =
                    a != &app && (option == a->get_version_ptr() ||
                                  app.get_option_no_throw(option->get_name()) != nullptr);
            if (isPositional(option) || isHidden) continue;
            const std::string type = option->get_type_name();
            rows.emplace_back(option->get_name(false, true) + (type.empty() ? "" : " " + type),
                              option->get_description());
        }
    }
    return rows;
}

// Its groups in their order, each with its commands.
static std::vector<std::pair<std::string, Rows>> subcommands(const CLI::App& app) {
    std::vector<std::pair<std::string, Rows>> groups;
    for (const CLI::App* command : app.get_subcommands({})) {
        if (groups.empty() || groups.back().first != command->get_group()) {
            groups.push_back({command->get_group(), {}});
        }
        groups.back().second.emplace_back(command->get_name(), command->get_description());
    }
    return groups;
}

// The lines after the first stand below it, right of the names.
static std::string indented(const std::string& lines) {
    std::string text;
    for (const char c : lines) {
        text += c;
        if (c == '\n') text.append(kNames + 3, ' ');
    }
    return text;
}

// A name that is longer than the column pushes its text to the right, and nothing else.
static void print(std::ostream& out, const std::string& title, const Rows& rows) {
    if (rows.empty()) return;
    out << "\n" << title << "\n";
    for (const auto& [left, right] : rows) {
        out << "  " << std::left << std::setw(kNames) << left << " " << indented(right) << "\n";
    }
}

namespace {

class HelpFormatter : public CLI::FormatterBase {
  public:
    explicit HelpFormatter(bool coloured) : mColoured(coloured) {}

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;

  private:
    const bool mColoured;
};

std::string HelpFormatter::make_help(const CLI::App* app, std::string /*name*/,
                                     CLI::AppFormatMode /*mode*/) const {
    const auto title = [this](const std::string& text) {
        return mColoured ? "\x1b[1m" + text + ":\x1b[0m" : text + ":";
    };
    std::ostringstream out;
    out << title("usage") << usageOf(*app).substr(strlen("usage:")) << "\n"
        << app->get_description() << "\n";
    for (const auto& [group, rows] : subcommands(*app)) print(out, title(group), rows);
    print(out, title("arguments"), positionals(*app));
    print(out, title("options"), options(*app));
    out << "\n" << title("example") << "\n  " << app->get_footer() << "\n";
    return out.str();
}

}  // namespace

std::shared_ptr<CLI::FormatterBase> helpFormatter(bool coloured) {
    return std::make_shared<HelpFormatter>(coloured);
}

}  // namespace tarq::tools
