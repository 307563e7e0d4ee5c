// docs/json.md against what the commands print, and their examples: both are the test's data.
#include <gmock/gmock.h>

#include <CLI/App.hpp>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/test_board.h"
#include "tools/tarqctl/commands/led_commands.h"
#include "tools/tarqctl/commands/radio_commands.h"

using nlohmann::json;
using namespace testing;

namespace {

struct Section {
    std::string title;
    std::vector<std::string> lines;
    std::map<std::string, std::string> types;  // by member, with ? and |
};

std::vector<Section> sectionsOf(const std::string& file) {
    std::vector<Section> sections;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("## ", 0) == 0) sections.push_back({line.substr(3), {}, {}});
        if (line.rfind("$ ", 0) == 0) sections.back().lines.push_back(line.substr(2));
        if (line.rfind("| `", 0) != 0) continue;
        const size_t end = line.find("` | ");
        std::string type = line.substr(end + 4, line.find(" | ", end + 4) - end - 4);
        type.erase(std::remove(type.begin(), type.end(), '\\'), type.end());
        sections.back().types[line.substr(3, end - 3)] = type;
    }
    return sections;
}

// Each member of the line by its path, with the types that were seen of it. free: the paths whose
// members have any names.
void flatten(const json& value, const std::string& path, const std::set<std::string>& free,
             std::multimap<std::string, std::string>* members) {
    if (value.is_object()) {
        for (const auto& [name, member] : value.items()) {
            const std::string inner = free.count(path) > 0 ? "*" : name;
            flatten(member, path.empty() ? inner : path + "." + inner, free, members);
        }
    } else if (value.is_array()) {
        for (const json& element : value) flatten(element, path + "[]", free, members);
        if (value.empty()) members->emplace(path + "[]", "");
    } else {
        members->emplace(path, value.type_name());
    }
}

class JsonDocument : public Test {
  protected:
    JsonDocument()
        : mBoard("<touch_panel type='GT' id='5'/><leds count='12'/><receiver/>"
                 "<coprocessor manufacturer='1002' version='6.10.3'/>",
                 readFile(SOURCES "/host/board/boards/demo_panel/build.prop")) {
        std::filesystem::copy(SOURCES "/host/board/boards/demo_panel/vendor",
                              mBoard.device("/vendor"), std::filesystem::copy_options::recursive);
    }
    void SetUp() override { mBoard.skipWithoutFuse(); }

    // The exit code, and what a shell prints.
    int run(const std::string& line, std::string* out) const {
        ChildProcess tool({"sh", "-c",
                           "cd $0 && PATH=${1%/*}:$PATH && { " + line + "\n} 2>/dev/null",
                           mHere.path(), TARQCTL});
        *out = tool.readAll();
        return tool.wait();
    }
    std::vector<json> printed(const std::string& line) const {
        std::string out;
        run(line, &out);
        std::istringstream lines(out);
        std::vector<json> objects;
        for (std::string text; std::getline(lines, text);) {
            objects.push_back(json::parse(text, nullptr, false));
            EXPECT_TRUE(objects.back().is_object()) << line << ": " << text;
        }
        EXPECT_FALSE(objects.empty()) << line;
        return objects;
    }
    // Every member is in the table with its type, and all of the table has been seen.
    void compare(const Section& section) const {
        std::set<std::string> free;
        std::set<std::string> missing;
        for (const auto& [path, type] : section.types) {
            missing.insert(path);
            if (path.size() > 2 && path.substr(path.size() - 2) == ".*")
                free.insert(path.substr(0, path.size() - 2));
        }
        for (const std::string& line : section.lines) {
            for (const json& object : printed(line)) {
                std::multimap<std::string, std::string> members;
                flatten(object, "", free, &members);
                for (const auto& [path, type] : members) {
                    missing.erase(path);
                    const auto known = section.types.find(path);
                    EXPECT_THAT(known == section.types.end() ? "" : known->second, HasSubstr(type))
                            << section.title << ": " << path;
                }
                for (const auto& [path, type] : section.types) {
                    EXPECT_TRUE(type.back() == '?' || members.count(path) > 0)
                            << section.title << ": no " << path << " in " << object;
                }
            }
        }
        missing.erase("member");  // takes an archive
        EXPECT_THAT(missing, IsEmpty()) << section.title;
    }

    const TestBoard mBoard;
    const std::unique_ptr<ChildProcess> mDaemon = mBoard.startDaemon(TARQD);
    const TemporaryDirectory mHere;
};

TEST_F(JsonDocument, describes_what_every_command_prints) {
    std::string all;
    for (const Section& section : sectionsOf(SOURCES "/docs/json.md")) {
        compare(section);
        for (const std::string& line : section.lines) all += line + "\n";
    }
    CLI::App app;
    tarq::tools::declareOneOf(tarq::tools::commands(), app);
    for (const CLI::App* command : app.get_subcommands({})) {
        const auto below = command->get_subcommands({});
        if (command->get_name() == "up") continue;  // what it prints is another command's
        const std::string name = " " + command->get_name() + " ";
        EXPECT_THAT(all, HasSubstr(name));
        for (const CLI::App* one : below) EXPECT_THAT(all, HasSubstr(name + one->get_name() + " "));
    }
}

TEST_F(JsonDocument, examples_of_the_help_work) {
    std::string out;
    for (const auto& commands :
         {tarq::tools::commands(), tarq::tools::ledCommands(), tarq::tools::radioCommands()}) {
        for (const tarq::tools::Command& command : commands) {
            if (command.example == std::string("tarqctl radio watch")) continue;  // has no end
            EXPECT_EQ(run(command.example, &out), 0) << command.example;
        }
    }
    EXPECT_TRUE(std::filesystem::exists(mHere / "wave.gif"));
}

}  // namespace
