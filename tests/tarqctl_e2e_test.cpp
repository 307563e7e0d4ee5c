// The tool and the daemon as a user runs them: programs of their own, on a board of plain files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tests/child_process.h"
#include "tests/temporary_directory.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/known_services.h"

using nlohmann::json;
using tarq::tools::knownServices;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

namespace {

using Words = std::vector<std::string>;

const char kShellName[] = "com.tarq.shell.IShellService";

struct Result {
    int code;
    std::string out;
    std::string err;
};

// One run of the tool, whose standard error goes to a file.
class Tool {
  public:
    Tool(const Words& words, const std::string& board, uid_t uid = getuid(),
         const char* program = TARQCTL)
        : mProcess(command(words, program), {"TARQ_BOARD=" + board}, uid) {}

    ChildProcess& process() { return mProcess; }
    std::string errors() const { return readFile(mErrors / "text"); }
    Result finish() {
        std::string out = mProcess.readAll();
        const int code = mProcess.wait();
        return {code, std::move(out), errors()};
    }

  private:
    Words command(const Words& words, const char* program) const {
        chmod(mErrors.path().c_str(), 0777);
        Words all = {"sh", "-c", "exec \"$0\" \"$@\" 2>" + mErrors / "text", program};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }

    const TemporaryDirectory mErrors;
    ChildProcess mProcess;
};

class TarqctlE2e : public testing::Test {
  protected:
    TarqctlE2e() {
        std::filesystem::create_directories(mBoard / "run/properties");
        for (const char* name : {"", "run", "run/properties"}) chmod((mBoard / name).c_str(), 0755);
    }

    void startDaemon() {
        mDaemon.reset();
        mDaemon = std::make_unique<ChildProcess>(
                Words{TARQD},
                Words{"TARQ_BOARD=" + mBoard.path(), "TARQ_LOG=" + mBoard / "run/log"});
        ASSERT_EQ(tarqctl({"wait", kShellName}).code, 0);
    }
    Result tarqctl(const Words& words) const { return Tool(words, mBoard.path()).finish(); }

    // Does what the hint says, as a user would: a hint may use sudo, and the test is root then. Of
    // scripts/run it is seen that it is there and takes the options.
    static Result followHint(const std::string& err) {
        const size_t start = err.find("hint: ") + 6;
        std::string line = err.substr(start, err.find('\n', start) - start);
        if (line.rfind("sudo ", 0) == 0) line.erase(0, 5);
        if (line.rfind("scripts/run", 0) == 0) {
            line = SOURCES "/" + line + " --help";
        } else {
            EXPECT_THAT(line, StartsWith("tarqctl "));
            line.replace(0, strlen("tarqctl"), TARQCTL);
        }
        ChildProcess shell({"sh", "-c", line});
        std::string out = shell.readAll();
        return {shell.wait(), out, ""};
    }

    // A command of the shell service that runs until release().
    std::unique_ptr<Tool> runUntilReleased() const {
        EXPECT_EQ(mkfifo((mBoard / "fifo").c_str(), 0600), 0);
        auto tool = std::make_unique<Tool>(
                Words{"shell", "echo >" + mBoard / "started" + "; cat " + mBoard / "fifo"},
                mBoard.path());
        EXPECT_TRUE(eventually([&] { return std::filesystem::exists(mBoard / "started"); }));
        return tool;
    }
    void release() const { std::ofstream(mBoard / "fifo") << "released"; }

    const TemporaryDirectory mBoard;
    std::unique_ptr<ChildProcess> mDaemon;
};

TEST_F(TarqctlE2e, every_known_service_is_waited_for_and_listed) {
    startDaemon();
    EXPECT_EQ(tarqctl({"wait", "--json"}).out, "{}\n");
    std::string lines;
    for (const auto& service : knownServices()) lines += service.name + " present\n";
    EXPECT_EQ(tarqctl({"services"}).out, lines);
    EXPECT_EQ(json::parse(tarqctl({"services", kShellName, "--json"}).out),
              json::parse(
                      R"({"services":[{"name":"com.tarq.shell.IShellService","present":true}]})"));

    const Result absent = tarqctl({"services", "nobody"});
    EXPECT_EQ(absent.code, 1);
    EXPECT_EQ(absent.out, "nobody absent: the daemon has no service of that name\n");
}

TEST_F(TarqctlE2e, wait_begins_before_the_daemon_and_names_what_is_missing) {
    Tool early({"wait"}, mBoard.path());
    startDaemon();
    EXPECT_EQ(early.finish().code, 0);

    const Result late = tarqctl({"--timeout", "0.2", "wait", kShellName, "a", "b"});
    EXPECT_EQ(late.code, 2);
    EXPECT_THAT(late.err, HasSubstr("wait com.tarq.shell.IShellService a b: not registered after "
                                    "0.2 s: a b\n"));
    EXPECT_EQ(followHint(late.err).code, 0);
}

TEST_F(TarqctlE2e, examples_of_the_help_work) {
    startDaemon();
    for (const tarq::tools::Command& command : tarq::tools::commands()) {
        ChildProcess shell(
                {"sh", "-c", std::string(TARQCTL) + (command.example + strlen("tarqctl"))},
                {"TARQ_BOARD=" + mBoard.path()});
        EXPECT_EQ(shell.wait(), 0) << command.example;
    }
}

TEST_F(TarqctlE2e, hardware_list_is_printed_and_time_is_taken) {
    startDaemon();
    const char* names[] = {"wifi", "codec",  "tp",   "internal_camera", "usb_camera", "bt",
                           "lcd",  "switch", "emmc", "led_ic",          "keyboard_ic"};
    std::string lines;
    nlohmann::ordered_json object;
    for (const char* name : names) {
        lines += std::string(name) + ":null\n";
        object["peripherals"][name] = "null";
    }
    EXPECT_EQ(tarqctl({"hwinfo"}).out, lines);
    EXPECT_EQ(tarqctl({"hwinfo", "--json"}).out, object.dump() + "\n");
    for (const char* time : {"0", "-1", "9223372036854775807", "-9223372036854775808"}) {
        const Result result = tarqctl({"ota-time", time});
        EXPECT_EQ(result.code, 0) << time;
        EXPECT_THAT(result.out + result.err, IsEmpty());
    }
}

TEST_F(TarqctlE2e, command_output_is_printed_as_it_is_and_a_cut_is_said) {
    startDaemon();
    EXPECT_EQ(tarqctl({"shell", "printf", "'a\\n b'"}).out, "a\n b");
    EXPECT_EQ(tarqctl({"shell", "false"}).out, "");
    EXPECT_EQ(tarqctl({"--json", "shell", "printf 'a\\355\\240\\200\\n'"}).out,
              "{\"output\":\"a\\n\"}\n");
    for (const size_t size : {1022, 1023, 1024, 5000}) {
        const Result result =
                tarqctl({"shell", "head -c " + std::to_string(size) + " /dev/zero | tr '\\0' x"});
        EXPECT_EQ(result.code, 0);
        EXPECT_THAT(result.out, SizeIs(std::min<size_t>(size, 1023)));
        EXPECT_EQ(result.err.find("it may be cut") != std::string::npos, size > 1022) << size;
    }
    const Result huge = tarqctl({"shell", ": " + std::string(100000, 'x')});
    EXPECT_EQ(huge.code, 2);
    EXPECT_THAT(huge.err, HasSubstr("it may be too large\n"));
    EXPECT_EQ(followHint(huge.err).code, 0);
}

TEST_F(TarqctlE2e, only_root_and_system_may_run_commands) {
    if (getuid() != 0) GTEST_SKIP() << "only root can run the tool as other users";
    startDaemon();
    // Other users need not have a way into the build directory.
    const std::string copy = mBoard / "tarqctl";
    std::filesystem::copy_file(TARQCTL, copy);
    for (const uid_t uid : {0, 1000, 1001, 2000}) {
        const Result result =
                Tool({"shell", "echo yes"}, mBoard.path(), uid, copy.c_str()).finish();
        if (uid <= 1000) {
            EXPECT_EQ(result.out, "yes\n") << result.err;
            continue;
        }
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err, "tarqctl: shell 'echo yes': uid " + std::to_string(uid) +
                                      " is neither root nor system\nhint: sudo tarqctl --board " +
                                      mBoard.path() + " shell 'echo yes'\n");
        EXPECT_EQ(followHint(result.err).out, "yes\n");
    }
    const Result foreign = Tool({"setprop", "a", "1"}, mBoard.path(), 2000, copy.c_str()).finish();
    EXPECT_EQ(foreign.code, 1);
    EXPECT_THAT(foreign.err, StartsWith("tarqctl: setprop a 1: Permission denied\nhint: sudo "));
    EXPECT_EQ(followHint(foreign.err).code, 0);

    chmod((mBoard / "run").c_str(), 0700);
    const Result closed = Tool({"hwinfo"}, mBoard.path(), 2000, copy.c_str()).finish();
    EXPECT_EQ(closed.code, 2);
    EXPECT_THAT(closed.err,
                HasSubstr("binder.sock: Permission denied\nhint: scripts/run --shared\n"));
    EXPECT_EQ(followHint(closed.err).code, 0);
}

TEST_F(TarqctlE2e, second_command_says_what_it_waits_for_and_ends_when_the_time_is_up) {
    startDaemon();
    const auto first = runUntilReleased();
    const Result second = tarqctl({"--timeout", "2.2", "shell", "echo second"});
    EXPECT_EQ(second.code, 2);
    EXPECT_THAT(second.err,
                MatchesRegex("tarqctl: shell 'echo second': no answer after 2 s: another command "
                             "may be running, [^\n]*\n"
                             "tarqctl: shell 'echo second': no answer after 2.2 s: another command "
                             "may be running, one runs at a time[^\n]*\nhint: [^\n]*\n"));
    const Result quiet = tarqctl({"--timeout", "0.1", "--json", "shell", "echo third"});
    EXPECT_EQ(quiet.code, 2);
    EXPECT_THAT(quiet.err, IsEmpty());
    EXPECT_EQ(json::parse(quiet.out)["error"]["code"], "timeout");
    release();
    EXPECT_EQ(first->finish().out, "released");
    EXPECT_EQ(followHint(second.err).out, "second\n");
}

TEST_F(TarqctlE2e, daemon_that_is_gone_stopped_or_killed_is_told_apart) {
    const Result never = tarqctl({"hwinfo"});
    EXPECT_EQ(never.code, 2);
    EXPECT_THAT(never.err, HasSubstr(mBoard / "run/binder.sock" + ": No such file or directory\n"));
    EXPECT_EQ(followHint(never.err).code, 0);

    startDaemon();
    mDaemon->kill(SIGSTOP);
    const Result stopped = tarqctl({"--timeout", "0.2", "services"});
    EXPECT_EQ(stopped.code, 2);
    EXPECT_THAT(stopped.err, HasSubstr("no answer after 0.2 s: the daemon hangs or is stopped\n"));
    mDaemon->kill(SIGCONT);
    EXPECT_EQ(followHint(stopped.err).code, 0);

    const auto running = runUntilReleased();
    mDaemon->kill(SIGKILL);
    const Result killed = running->finish();
    EXPECT_EQ(killed.code, 2);
    EXPECT_THAT(killed.err, HasSubstr("the daemon ended before it answered\n"));
    release();

    EXPECT_EQ(mDaemon->wait(), 128 + SIGKILL);
    const Result gone = tarqctl({"hwinfo"});
    EXPECT_EQ(gone.code, 2);
    EXPECT_THAT(gone.err, HasSubstr("binder.sock: Connection refused\n"));
    EXPECT_THAT(followHint(gone.err).out, HasSubstr("instantiate....."));
}

TEST_F(TarqctlE2e, log_is_followed_until_interrupted) {
    writeFile(mBoard / "run/log", "one\n");
    Tool log({"log", "-f"}, mBoard.path());
    EXPECT_EQ(log.process().readLine(), "one");
    std::ofstream(mBoard / "run/log", std::ios::app) << "two\n";
    EXPECT_EQ(log.process().readLine(), "two");
    writeFile(mBoard / "run/log", "3\n");
    EXPECT_EQ(log.process().readLine(), "3");
    log.process().kill(SIGINT);
    EXPECT_EQ(log.finish().code, 0);
}

TEST_F(TarqctlE2e, output_that_nobody_takes_ends_the_tool) {
    std::string lines;
    for (int i = 0; i < 20000; ++i) lines += "line\n";
    writeFile(mBoard / "run/log", lines);
    const std::string log = TARQCTL " --board " + mBoard.path() + " log";
    ChildProcess head({"sh", "-c",
                       "trap '' PIPE; { " + log + "; echo $? >&3; } 3>" + mBoard / "status" +
                               " 2>&3 | head -n1"});
    EXPECT_EQ(head.readAll(), "line\n");
    EXPECT_EQ(head.wait(), 0);
    EXPECT_EQ(readFile(mBoard / "status"), "141\n");

    ChildProcess full({"sh", "-c", log + " -f 2>&1 >/dev/full"});
    EXPECT_EQ(full.readAll(), "tarqctl: standard output: cannot be written\n");
    EXPECT_EQ(full.wait(), 2);
}

}  // namespace
