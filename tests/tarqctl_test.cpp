#include "tools/tarqctl/tarqctl.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <future>
#include <sstream>

#include "tests/temporary_directory.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/growing_file.h"
#include "tools/tarqctl/known_services.h"
#include "tools/tarqctl/log_line.h"
#include "tools/tarqctl/print_json.h"
#include "tools/tarqctl/timer.h"

using namespace tarq::tools;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

using Words = std::vector<std::string>;

// A process has one board: its properties are found through the first one that is opened.
const TemporaryDirectory& board() {
    static const TemporaryDirectory directory;
    return directory;
}

struct Result {
    int code;
    std::string out;
    std::string err;
};

Result tarqctl(const Words& words, bool coloured = false) {
    std::ostringstream out;
    std::ostringstream err;
    const int code = runTarqctl(words, coloured, out, err);
    return {code, out.str(), err.str()};
}

Result onBoard(Words words, bool coloured = false) {
    words.insert(words.begin(), {"--board", board().path()});
    return tarqctl(words, coloured);
}

// The command line behind "hint: tarqctl ", as far as it has no quotes.
Words hintedWords(const std::string& err) {
    const std::string mark = "hint: tarqctl ";
    const size_t start = err.find(mark);
    EXPECT_NE(start, std::string::npos) << err;
    std::istringstream line(err.substr(start + mark.size()));
    std::string text;
    std::getline(line, text);
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

class Tarqctl : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::remove_all(board() / "run");
        std::filesystem::create_directories(board() / "run/properties");
        unsetenv("TARQ_BOARD");
        setenv("TMPDIR", mTemporary.path().c_str(), 1);
    }
    void TearDown() override { unsetenv("TMPDIR"); }

    // A board below the user's own directory that somebody holds the lock of, for the descriptor.
    int runBoard(const std::string& name) const {
        writeFile(usersBoard(name) + "/run/lock", "");
        const int fd = open((usersBoard(name) + "/run/lock").c_str(), O_RDWR | O_CLOEXEC);
        EXPECT_EQ(flock(fd, LOCK_EX | LOCK_NB), 0);
        return fd;
    }
    std::string usersBoard(const std::string& name) const {
        return mTemporary / ("tarqd-" + std::to_string(getuid()) + "/" + name);
    }

  private:
    const TemporaryDirectory mTemporary;
};

TEST_F(Tarqctl, wrong_usage_names_the_fault_and_hints_at_the_help) {
    const struct {
        Words words;
        const char* fault;
    } cases[] = {
            {{}, "no command is given"},
            {{"frobnicate"}, "there is no such command, only services"},
            {{"services", "a", "b"}, "not expected: b"},
            {{"services", "--frob"}, "not expected: --frob"},
            {{"services", "--board"}, "--board"},
            {{"setprop", "a"}, "VALUE is required"},
            {{"shell"}, "CMDLINE is required"},
            {{"shell", "caf\xe9"}, "not UTF-8"},
            {{"ota-time", "12x"}, "\"12x\""},
            {{"ota-time", ""}, "\"\""},
            {{"ota-time", " 1"}, "\" 1\""},
            {{"ota-time", "+1"}, "\"+1\""},
            {{"ota-time", "0x10"}, "\"0x10\""},
            {{"ota-time", "9223372036854775808"}, "\"9223372036854775808\""},
            {{"--timeout", "nan", "hwinfo"}, "\"nan\""},
            {{"--timeout", "0", "hwinfo"}, "\"0\""},
            {{"--timeout", "1e9", "hwinfo"}, "\"1e9\""},
    };
    for (const auto& [words, fault] : cases) {
        const Result result = tarqctl(words);
        EXPECT_EQ(result.code, 2) << fault;
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_THAT(result.err, HasSubstr(fault));
        EXPECT_THAT(result.err, MatchesRegex("tarqctl: [^\n]+: [^\n]+\nhint: tarqctl [^\n]+\n"
                                             "usage: tarqctl [^\n]+\n"));
        EXPECT_EQ(tarqctl(hintedWords(result.err)).code, 0) << result.err;
    }
}

TEST_F(Tarqctl, error_is_an_object_with_json) {
    const Result result = tarqctl({"setprop", "a", "--json"});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.out,
              "{\"error\":{\"code\":\"usage\",\"message\":\"setprop a: VALUE is required\","
              "\"hint\":\"tarqctl setprop --help\"}}\n");
    EXPECT_THAT(result.err, IsEmpty());
}

TEST_F(Tarqctl, global_options_stand_on_either_side_and_shell_takes_all_that_follows) {
    const std::string dir = board().path();
    const struct {
        Words words;
        const char* command;
    } cases[] = {
            {{"--board", dir, "--timeout", "5", "hwinfo"}, "hwinfo"},
            {{"hwinfo", "--timeout=5", "--board=" + dir}, "hwinfo"},
            {{"--timeout", "5", "ota-time", "-7", "--board", dir}, "ota-time -7"},
            {{"--board", dir, "services", "log"}, "services log"},
            {{"--board", dir, "shell", "ls", "--json", "-l"}, "shell 'ls --json -l'"},
            {{"--board", dir, "shell", "--json"}, "shell --json"},
            {{"--board", dir, "shell", "--", "it's"}, "shell 'it'\\''s'"},
            {{"--board", dir, "shell", "[ -d / ]"}, "shell '[ -d / ]'"},
            {{"--board", dir, "shell", ""}, "shell ''"},
    };
    for (const auto& [words, command] : cases) {
        const Result result = tarqctl(words);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.err, std::string("tarqctl: ") + command + ": cannot connect to " + dir +
                                      "/run/binder.sock: No such file or directory\n"
                                      "hint: scripts/run\n");
    }
}

TEST_F(Tarqctl, help_of_every_command_has_one_shape) {
    for (const Command& command : commands()) {
        const Result result = tarqctl({command.name, "--help"});
        EXPECT_EQ(result.code, 0);
        EXPECT_THAT(result.out,
                    StartsWith(std::string("usage: tarqctl [OPTIONS] ") + command.name));
        EXPECT_THAT(result.out, HasSubstr(std::string("\n\n") + command.sentence + "\n"));
        EXPECT_THAT(result.out, HasSubstr("\n  --board DIR "));
        EXPECT_THAT(result.out,
                    testing::EndsWith(std::string("example:\n  ") + command.example + "\n"));
        EXPECT_THAT(tarqctl({"-h"}).out, HasSubstr(command.sentence));
    }
}

TEST_F(Tarqctl, board_is_the_only_one_that_the_user_runs) {
    EXPECT_THAT(tarqctl({"log"}).err, HasSubstr("no board is running below"));
    writeFile(usersBoard("stale") + "/run/lock", "");
    EXPECT_THAT(tarqctl({"log"}).err, HasSubstr("hint: scripts/run\n"));

    const int first = runBoard("b");
    writeFile(usersBoard("b") + "/run/log", "of b\n");
    EXPECT_EQ(tarqctl({"log"}).out, "of b\n");

    unsetenv("TARQ_BOARD");
    const int second = runBoard("a");
    const Result several = tarqctl({"log"});
    EXPECT_EQ(several.code, 2);
    EXPECT_THAT(several.err, HasSubstr(": several boards are running: --board " + usersBoard("a") +
                                       " --board " + usersBoard("b") + "\n"));
    EXPECT_THAT(hintedWords(several.err), ElementsAre("--board", usersBoard("a"), "services"));
    close(first);
    close(second);
}

TEST_F(Tarqctl, board_that_is_none_is_said_so) {
    writeFile(board() / "file/run", "");
    EXPECT_EQ(tarqctl({"log", "--board", board() / "file"}).err,
              "tarqctl: log: " + (board() / "file/run: Not a directory\nhint: scripts/run\n"));
    const Result missing = tarqctl({"log", "--board", "/nowhere"});
    EXPECT_EQ(missing.code, 2);
    EXPECT_THAT(missing.err, HasSubstr("/nowhere/run: No such file or directory\n"));
}

TEST_F(Tarqctl, properties_are_listed_in_order_and_one_is_printed_alone) {
    writeFile(board() / "run/properties/ro.b", "two words");
    writeFile(board() / "run/properties/ro.a", "");
    writeFile(board() / "run/properties/.writing", "half");
    EXPECT_EQ(onBoard({"getprop"}).out, "[ro.a]: []\n[ro.b]: [two words]\n");
    EXPECT_EQ(onBoard({"getprop", "--json"}).out,
              "{\"properties\":{\"ro.a\":\"\",\"ro.b\":\"two words\"}}\n");
    EXPECT_EQ(onBoard({"getprop", "ro.b", "other"}).out, "two words\n");
    EXPECT_EQ(onBoard({"getprop", "ro.a", "other"}).out, "other\n");
    EXPECT_EQ(onBoard({"getprop", "ro.missing"}).out, "\n");
}

TEST_F(Tarqctl, property_is_set_or_the_refusal_says_why) {
    const Result done = onBoard({"setprop", "ro.a", "[1,2]"});
    EXPECT_EQ(done.code, 0);
    EXPECT_THAT(done.out + done.err, IsEmpty());
    EXPECT_EQ(readFile(board() / "run/properties/ro.a"), "[1,2]");
    EXPECT_EQ(onBoard({"setprop", "dash", "--", "-x"}).code, 0);
    EXPECT_EQ(onBoard({"setprop", "longest", std::string(91, 'x')}).code, 0);

    const Result unsaved = onBoard({"setprop", "persist.a", "1"});
    EXPECT_EQ(unsaved.code, 0);
    EXPECT_THAT(unsaved.err, StartsWith("tarqctl: setprop persist.a 1: cannot save property"));

    const struct {
        const char* name;
        std::string value;
        const char* why;
    } refusals[] = {
            {"ro.a", "\": ", "it is read-only and already set"},
            {"long", std::string(92, 'x'), "the value has 92 bytes, 91 are allowed"},
            {"long", std::string(5000, 'x'), "the value has 5000 bytes, 91 are allowed"},
            {"a..b", "1", "single dots"},
            {"bad/name", "1", "a name is made of"},
            {"latin", "\xe9", "not UTF-8"},
    };
    for (const auto& [name, value, why] : refusals) {
        const Result result = onBoard({"setprop", name, value});
        EXPECT_EQ(result.code, 1) << why;
        EXPECT_THAT(result.err, HasSubstr(why));
        EXPECT_EQ(tarqctl(hintedWords(result.err)).code, 0) << result.err;
    }
    EXPECT_EQ(readFile(board() / "run/properties/ro.a"), "[1,2]");

    std::filesystem::remove_all(board() / "run/properties");
    EXPECT_THAT(onBoard({"setprop", "a", "1"}).err, HasSubstr(": No such file or directory\nhint"));
    EXPECT_THAT(onBoard({"getprop"}).err, HasSubstr("run/properties: No such file or directory\n"));
}

TEST_F(Tarqctl, log_is_passed_on_coloured_or_taken_apart) {
    const std::string lines =
            "01-02 03:04:05.006   512  1034 W Zig:  x : bit: 1\n"
            "not of this shape\n"
            "01-02 03:04:05.007 123456  1034 V         : ";
    writeFile(board() / "run/log", lines);
    EXPECT_EQ(onBoard({"log"}).out, lines + "\n");
    EXPECT_THAT(
            onBoard({"log"}, true).out,
            StartsWith("\x1b[33m01-02 03:04:05.006   512  1034 W Zig:  x : bit: 1\x1b[0m\nnot"));
    EXPECT_EQ(onBoard({"log", "--json"}).out,
              "{\"time\":\"01-02 03:04:05.006\",\"pid\":512,\"tid\":1034,\"priority\":\"W\","
              "\"tag\":\"Zig:  x\",\"text\":\"bit: 1\"}\n"
              "{\"text\":\"not of this shape\"}\n"
              "{\"time\":\"01-02 03:04:05.007\",\"pid\":123456,\"tid\":1034,\"priority\":\"V\","
              "\"tag\":\"\",\"text\":\"\"}\n");
    std::filesystem::remove(board() / "run/log");
    EXPECT_THAT(onBoard({"log"}).err, HasSubstr("run/log: No such file or directory\nhint: "));
}

TEST(log_line, other_shapes_are_not_taken_apart) {
    for (const char* line :
         {"", "01-02", "01-02 03:04:05.006   512  1034 X tag     : text",
          "01-02 03:04:05.006   512  1034 I tag: text", "01-02 03:04:05.006   512  1034 I",
          "01-02 03:04:05   5  5 I t       : x"}) {
        EXPECT_FALSE(parseLogLine(line).has_value()) << line;
    }
}

TEST(growing_file, lines_are_handed_over_once_complete_and_a_new_file_is_read_anew) {
    const TemporaryDirectory directory;
    const std::string path = directory / "log";
    Words lines;
    const auto take = [&lines](const std::string& line) { lines.push_back(line); };
    GrowingFile file(path);
    EXPECT_EQ(file.read(take), ENOENT);

    writeFile(path, "one\ntw");
    EXPECT_EQ(file.read(take), 0);
    EXPECT_THAT(std::exchange(lines, {}), ElementsAre("one"));
    std::ofstream(path, std::ios::app) << "o\n\nthr";
    file.read(take);
    EXPECT_THAT(std::exchange(lines, {}), ElementsAre("two", ""));

    writeFile(path, "new\n");  // emptied and begun again
    file.read(take);
    EXPECT_THAT(std::exchange(lines, {}), ElementsAre("thr", "new"));

    std::filesystem::remove(path);
    EXPECT_EQ(file.read(take), 0);
    writeFile(path, "another, which is longer\n");
    file.read(take);
    EXPECT_THAT(lines, ElementsAre("another, which is longer"));
}

TEST_F(Tarqctl, absent_service_is_explained_by_what_can_be_seen) {
    onBoard({"getprop"});  // from here on properties are this board's
    const std::vector<KnownService> services = {{"first", nullptr},
                                                {"second", nullptr},
                                                {"optional", "ro.optional"},
                                                {"last", nullptr}};
    const std::string refused = "its registration was refused, see the log";
    const std::string late = ", or property ro.optional became \"true\" after the start";
    const std::string starting = "the daemon is still starting, or ";
    EXPECT_EQ(whyAbsent(services, {true, false, false, false}, 1), starting + refused);
    EXPECT_EQ(whyAbsent(services, {true, false, false, true}, 1), refused);
    EXPECT_EQ(whyAbsent(services, {true, true, false, true}, 2),
              "property ro.optional is not \"true\"");

    writeFile(board() / "run/properties/ro.optional", "true");
    EXPECT_EQ(whyAbsent(services, {true, true, false, true}, 2), refused + late);
    EXPECT_EQ(whyAbsent(services, {true, true, false, false}, 2), starting + refused + late);
}

TEST(timer, runs_when_the_time_is_up_and_never_once_it_is_gone) {
    std::promise<void> expired;
    const Timer timer(std::chrono::milliseconds(1), [&] { expired.set_value(); });
    EXPECT_EQ(expired.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
    {
        const Timer stopped(std::chrono::hours(1), [] { abort(); });
    }
}

TEST(print_json, bytes_that_are_no_utf8_are_replaced) {
    std::ostringstream out;
    printJson(out, {{"output", "a\xff\xed\xa0\x80z"}});
    EXPECT_THAT(out.str(), MatchesRegex("\\{\"output\":\"a(\xef\xbf\xbd)+z\"\\}\n"));
}

}  // namespace
