#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include "tests/plain_board.h"
#include "tests/run_tarqctl.h"
#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/ask/known_services.h"
#include "tools/tarqctl/commands/led_commands.h"

using namespace tarq::tools;
using namespace testing;

namespace {

// Every failure has one shape, and a hint that can be followed; none of those here has quotes.
void expectFailure(const Result& result, int code, const std::string& why) {
    EXPECT_EQ(result.code, code) << why;
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, HasSubstr(why));
    EXPECT_THAT(result.err,
                MatchesRegex("tarqctl: [^\n]+: [^\n]+\nhint: (tarqctl|scripts/run)[^\n]*"
                             "\n(usage: tarqctl [^\n]+\n)?"));
    const size_t hint = result.err.find("hint: ") + strlen("hint: ");
    Words words = wordsOf(result.err.substr(hint, result.err.find('\n', hint) - hint));
    if (words[0] != "tarqctl") return;
    words.erase(words.begin());
    EXPECT_EQ(tarqctl(words).code, 0) << result.err;
}

class Tarqctl : public Test {
  protected:
    const PlainBoard mBoard;
};

TEST_F(Tarqctl, wrong_usage_names_the_fault_and_hints_at_the_help) {
    const std::pair<Words, const char*> cases[] = {
            {{}, "no command is given"},
            {{"--vers"}, "there is no option --vers"},
            {{"\x1b[m\n"}, "tarqctl: $'\\x1b[m\\x0a': there is no such command"},
            {{"frobnicate"}, "there is no such command, only services"},
            {{"help", "frobnicate"}, "there is no such command, only services"},
            {{"frobnicate", "--help"}, "there is no such command, only services"},
            {{"servces"}, "did you mean services?\nhint: tarqctl services --help\n"},
            {{"up", "--bord", "x", "true"}, "there is no option --bord; did you mean --board?"},
            {{"radio", "wtach"}, "did you mean watch?\nhint: tarqctl radio watch --help\n"},
            {{"services", "a", "b", "c d"}, ": too many words: b 'c d'\n"},
            {{"services", "--frob"}, ": there is no option --frob\n"},
            {{"match", "--flie=x", "-"}, ": there is no option --flie; did you mean --file?\n"},
            {{"setprop", "-x", "a"}, ": there is no option -x\n"},
            {{"leds", "x", "--once"}, ": too many words: x\n"},
            {{""}, "tarqctl: '': there is no such command, only services"},
            {{"led", ""}, "there is no such command, only color"},
            {{"key", "nope"}, "VALUES: \"nope\" is no decimal number"},
            {{"services", "--board"}, "--board"},
            {{"shell"}, "CMDLINE is required"},
            {{"shell", "caf\xe9"}, "not UTF-8"},
            {{"match", "a:b", "--file", "-"}, "ITEM excludes --file"},
            {{"match", "caf\xe9:a"}, "not UTF-8"},
            {{"match", "a:b", "--ota-time", "1s"}, "\"1s\""},
            {{"--timeout", "nan", "hwinfo"}, "\"nan\""},
            {{"--timeout", "0", "hwinfo"}, "\"0\""},
            {{"--timeout", "1e9", "hwinfo"}, "\"1e9\""},
    };
    for (const auto& [words, fault] : cases) {
        expectFailure(tarqctl(words), 2, fault);
        EXPECT_THAT(tarqctl(words).err, HasSubstr("\nusage: "));
    }
    for (const std::string time : {"12x", "", " 1", "0x10", "9223372036854775808"})
        expectFailure(tarqctl({"ota-time", time}), 2, '"' + time + '"');
    EXPECT_EQ(tarqctl({"setprop", "a", "--json"}).out,
              "{\"error\":{\"code\":\"usage\",\"message\":\"setprop a: VALUE is required\","
              "\"hint\":\"tarqctl setprop --help\"}}\n");
}

TEST_F(Tarqctl, global_options_stand_on_either_side_and_shell_takes_all_that_follows) {
    const std::string& dir = mBoard.directory;
    const std::pair<Words, const char*> cases[] = {
            {{"hwinfo", "--timeout=5", "--board=" + dir}, "hwinfo"},
            {{"--timeout", "5", "ota-time", "-7", "--board", dir}, "ota-time -7"},
            {{"services", "log"}, "services log"},
            {{"match", "log", "--strict", "[a,b]", "", "--ota-time", "5", "tp:x y"},
             "match log --strict '[a,b]' '' --ota-time 5 'tp:x y'"},
            {{"shell", "ls", "--json", "-l"}, "shell 'ls --json -l'"},
            {{"--board", dir, "shell", "--json"}, "shell --json"},
            {{"shell", "--", "it's"}, "shell 'it'\\''s'"},
            {{"shell", "[ -d / ]"}, "shell '[ -d / ]'"},
            {{"shell", ""}, "shell ''"},
    };
    for (const auto& [words, command] : cases) {
        expectFailure(tarqctl(words), 2,
                      std::string("tarqctl: ") + command +
                              ": no daemon serves, cannot connect to " + dir +
                              "/run/binder.sock: No such file or directory\nhint: scripts/run\n");
    }
}

TEST_F(Tarqctl, hint_after_no_answer_gives_more_time_but_no_more_than_is_taken) {
    std::istringstream in;
    std::ostringstream out;
    for (const auto& [timeout, longer] :
         {std::pair(0.1, "60"), {20.0, "120"}, {80000.0, "86400"}}) {
        Session session{in, out, out, false};
        session.timeout = std::chrono::duration<double>(timeout);
        session.line = "hwinfo";
        EXPECT_THAT(noAnswer(session, "").hint,
                    EndsWith("--timeout " + std::string(longer) + " hwinfo"));
    }
}

TEST_F(Tarqctl, list_that_cannot_be_sent_is_refused) {
    expectFailure(tarqctl({"match", "--strict"}), 2, "give the items of the package, or --file");
    expectFailure(tarqctl({"match", "--file", "/nowhere"}), 2,
                  "/nowhere: No such file or directory");
    const Words words = {"match", "--file", "-"};
    expectFailure(tarqctl(words, "a:b\ncaf\xe9\n"), 2, "-:2: it is not UTF-8");
    expectFailure(tarqctl(words, std::string("#\n\na:\0\n", 7)), 2, "-:3: it has a NUL in it");
}

TEST_F(Tarqctl, help_of_every_command_has_one_shape) {
    for (const Command& command : commands()) {
        EXPECT_THAT(tarqctl({command.name, "--help"}).out,
                    AllOf(StartsWith(std::string("usage: tarqctl [OPTIONS] ") + command.name),
                          HasSubstr(std::string("\n\n") + command.sentence + "\n"),
                          HasSubstr("\n  --board "),
                          EndsWith(std::string("example:\n  ") + command.example + "\n")));
        EXPECT_THAT(tarqctl({"-h"}).out, HasSubstr(command.sentence));
        EXPECT_EQ(tarqctl({"help", command.name}).out, tarqctl({command.name, "-h"}).out);
    }
    for (const Command& command : ledCommands())
        EXPECT_THAT(tarqctl({"led", "-h"}).out, HasSubstr(command.sentence));
    EXPECT_THAT(tarqctl({"help", "radio", "rssi"}, "", true).out,
                AllOf(StartsWith("\x1b[1musage:\x1b[0m tarqctl [OPTIONS] radio rssi\n"),
                      HasSubstr("\n\x1b[1mexample:\x1b[0m\n  tarqctl radio rssi\n")));
    EXPECT_THAT(tarqctl({"--version", "--json"}).out,
                MatchesRegex("\\{\"version\":\"[0-9.]+\"\\}\n"));
}

TEST_F(Tarqctl, board_is_the_only_one_that_the_user_runs) {
    const TemporaryDirectory temporary;
    setenv("TMPDIR", temporary.path().c_str(), 1);
    const std::string boards = temporary / ("tarqd-" + std::to_string(getuid()) + "/");
    const auto runBoard = [&boards](const std::string& name) {
        writeFile(boards + name + "/run/lock", "");
        const int fd = open((boards + name + "/run/lock").c_str(), O_RDWR | O_CLOEXEC);
        EXPECT_EQ(flock(fd, LOCK_EX | LOCK_NB), 0);
        unsetenv("TARQ_BOARD");
        return fd;
    };
    close(runBoard("stale"));
    expectFailure(tarqctl({"log"}), 2, "no board is running below");
    const int first = runBoard("b");
    writeFile(boards + "b/run/log", "of b\n");
    EXPECT_EQ(tarqctl({"log"}).out, "of b\n");
    const int second = runBoard("a");
    EXPECT_EQ(tarqctl({"log"}).err, "tarqctl: log: several boards are running: --board " + boards +
                                            "a --board " + boards + "b\nhint: tarqctl --board " +
                                            boards + "a services\n");
    close(first);
    close(second);
    unsetenv("TMPDIR");

    writeFile(mBoard / "file/run", "");
    expectFailure(tarqctl({"log", "--board", mBoard / "file"}), 2, "file/run: Not a directory\n");
    expectFailure(tarqctl({"log", "--board", "/nowhere"}), 2, "/nowhere/run: No such file or");
}

TEST_F(Tarqctl, properties_are_listed_in_order_and_one_is_printed_alone) {
    mBoard.setProperty("ro.b", "two words");
    mBoard.setProperty("ro.a", "");
    mBoard.setProperty(".writing", "half");
    EXPECT_EQ(tarqctl({"getprop"}).out, "[ro.a]: []\n[ro.b]: [two words]\n");
    EXPECT_EQ(tarqctl({"getprop", "--json"}).out,
              "{\"properties\":{\"ro.a\":\"\",\"ro.b\":\"two words\"}}\n");
    EXPECT_EQ(tarqctl({"getprop", "ro.b", "other"}).out, "two words\n");
    EXPECT_EQ(tarqctl({"getprop", "ro.a", "other"}).out, "other\n");
    EXPECT_EQ(tarqctl({"getprop", "ro.missing"}).out, "\n");
}

TEST_F(Tarqctl, property_is_set_or_the_refusal_says_why) {
    EXPECT_EQ(tarqctl({"setprop", "ro.a", "[1,2]", "--json"}).out, "{}\n");
    EXPECT_EQ(tarqctl({"setprop", "dash", "--", "-x"}).code, 0);
    EXPECT_EQ(tarqctl({"setprop", "longest", std::string(91, 'x')}).code, 0);
    const Result unsaved = tarqctl({"setprop", "persist.a", "1"});
    EXPECT_EQ(unsaved.code, 0);
    EXPECT_THAT(unsaved.err, StartsWith("tarqctl: setprop persist.a 1: cannot save property"));
    // The platform's reason, and the one where it has none that is told.
    expectFailure(tarqctl({"setprop", "ro.a", "\": "}), 1, ": it is read-only and already set");
    expectFailure(tarqctl({"setprop", "long", std::string(92, 'x')}), 1,
                  ": the value has 92 bytes, 91 are allowed");
    EXPECT_EQ(mBoard.property("ro.a"), "[1,2]");

    std::filesystem::remove_all(mBoard.properties());
    expectFailure(tarqctl({"setprop", "a", "1"}), 1, ": No such file or directory\nhint");
    expectFailure(tarqctl({"getprop"}), 2, "run/properties: No such file or directory\n");
}

TEST_F(Tarqctl, log_is_passed_on_coloured_or_taken_apart) {
    const std::string good = "01-02 03:04:05.006   512  1034 W Zig:  x : bit: 1\n";
    std::string lines = good;
    std::string json =
            "{\"time\":\"01-02 03:04:05.006\",\"pid\":512,\"tid\":1034,\"priority\":\"W\","
            "\"tag\":\"Zig:  x\",\"text\":\"bit: 1\"}\n";
    for (const std::string line :
         {"", "01-02", "01-02 03:04:05.006   512  1034 X tag     : text",
          "01-02 03:04:05.006   512  1034 I tag: text", "01-02 03:04:05.006   512  1034 I",
          "01-02 03:04:05   5  5 I t       : x"}) {
        lines += line + "\n";
        json += "{\"text\":\"" + line + "\"}\n";
    }
    lines += "01-02 03:04:05.007 123456  1034 V         : \xff";
    json += "{\"time\":\"01-02 03:04:05.007\",\"pid\":123456,\"tid\":1034,\"priority\":\"V\","
            "\"tag\":\"\",\"text\":\"\uFFFD\"}\n";
    writeFile(mBoard.log(), lines);
    EXPECT_EQ(tarqctl({"log"}).out, lines + "\n");
    EXPECT_EQ(tarqctl({"log", "--json"}).out, json);
    EXPECT_EQ(tarqctl({"log"}, "", true).out, "\x1b[33m" + good.substr(0, good.size() - 1) +
                                                      "\x1b[0m" + lines.substr(good.size() - 1) +
                                                      "\n");
    std::filesystem::remove(mBoard.log());
    expectFailure(tarqctl({"log"}), 2, "run/log: No such file or directory\n");
}

TEST_F(Tarqctl, absent_service_is_explained_by_what_can_be_seen) {
    const std::vector<KnownService> services = {
            {"first", nullptr}, {"optional", "ro.optional"}, {"last", nullptr, true}};
    const std::string refused = "its registration was refused, see the log";
    const std::string late = refused + ", or property ro.optional became \"true\" after the start";
    const std::string starting = "the daemon is still starting, or ";
    EXPECT_EQ(whyAbsent(services, {false, false, false}, 0), starting + refused);
    EXPECT_EQ(whyAbsent(services, {false, false, true}, 0), refused);
    EXPECT_EQ(whyAbsent(services, {true, false, true}, 1), "property ro.optional is not \"true\"");

    mBoard.setProperty("ro.optional", "true");
    EXPECT_EQ(whyAbsent(services, {true, false, true}, 1), late);
    EXPECT_EQ(whyAbsent(services, {true, false, false}, 1), starting + late);

    mBoard.setProperty("ro.vendor.zigbee_check_enable", "true");
    EXPECT_EQ(whyAbsent(services, {true, true, false}, 2), startupCheck());
    EXPECT_EQ(whyAbsent(services, {false, false, false}, 0), starting + refused);
    mBoard.setProperty("ro.vendor.zigbee.info", "exist=0");
    EXPECT_EQ(startupCheck() + whyAbsent(services, {true, true, false}, 2), starting + refused);
}

}  // namespace
