// The tool and the daemon as a user runs them: programs of their own, on a board of plain files.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <thread>

#include "host/run/board.h"
#include "host/run/descriptors.h"
#include "tests/child_process.h"
#include "tests/plain_board.h"
#include "tools/tarqctl/ask/known_services.h"

using namespace testing;

namespace {

namespace fs = std::filesystem;

const char kShellName[] = "com.tarq.shell.IShellService";

struct Result {
    int code;
    std::string out;  // errors too; which is which is the other test's
};

Result finish(ChildProcess& process) {
    std::string out = process.readAll();
    return {process.wait(), std::move(out)};
}

class TarqctlE2e : public Test {
  protected:
    TarqctlE2e() {
        for (const char* name : {"", "run", "run/properties"}) chmod((mBoard / name).c_str(), 0755);
        // Other users need not have a way into the build directory.
        fs::copy_file(TARQCTL, mBoard / "tarqctl");
    }

    void startDaemon() {
        mDaemon = std::make_unique<ChildProcess>(Words{TARQD}, Words{"TARQ_LOG=" + mBoard.log()});
        ASSERT_EQ(tarqctl({"wait", kShellName}).code, 0);
    }
    // With overlay id 5. For the next daemon that starts.
    void describeBoard(const std::string& parts) const {
        mBoard.setProperty("ro.vendor.hardwareinfo_index", "3");
        mBoard.setProperty("ro.boot.dtbo_overlay_st", "storageId-2_FindIdOK_overlayId-5-OK");
        writeFile(mBoard.device("/vendor/etc/hardwareInfo.xml"),
                  "<hardware product='p'><hardwre_info index='3' overlay_id='5' hw_version='1'>" +
                          parts + "</hardwre_info></hardware>");
    }
    std::unique_ptr<ChildProcess> start(const Words& words, uid_t uid = getuid()) const {
        Words command = {"sh", "-c", "exec \"$0\" \"$@\" 2>&1", mBoard / "tarqctl"};
        command.insert(command.end(), words.begin(), words.end());
        return std::make_unique<ChildProcess>(command, Words{}, uid);
    }
    Result tarqctl(const Words& words, uid_t uid = getuid()) const {
        return finish(*start(words, uid));
    }
    Result sh(const std::string& line) const {
        ChildProcess shell({"sh", "-c", "cd " SOURCES "; " + line},
                           {"PATH=" + mBoard.directory + ":/usr/bin:/bin"});
        return finish(shell);
    }

    // Fails unless the tool ended so; then does what the hint says, as a user would. The test is
    // root where a hint uses sudo; of scripts/run it is seen that it takes the options.
    Result followHint(const Result& failed, int code, const std::string& why) const {
        EXPECT_EQ(failed.code, code);
        EXPECT_THAT(failed.out, HasSubstr(why));
        const size_t start = failed.out.find("hint: ") + 6;
        std::string line = failed.out.substr(start, failed.out.find('\n', start) - start);
        if (line.rfind("scripts/run", 0) == 0) line += " --help";
        Result result = sh("unset TARQ_BOARD; sudo() { \"$@\"; }; " + line);
        EXPECT_EQ(result.code, 0) << line;
        return result;
    }

    // A command of the shell service; it has begun, and goes on until release().
    std::unique_ptr<ChildProcess> runUntilReleased() const {
        EXPECT_EQ(mkfifo((mBoard / "fifo").c_str(), 0600), 0);
        const std::string line = "echo >" + mBoard / "started" + "; cat " + mBoard / "fifo";
        auto tool = start({"shell", line});
        EXPECT_TRUE(eventually([&] { return fs::exists(mBoard / "started"); }));
        return tool;
    }
    void release() const { std::ofstream(mBoard / "fifo") << "released"; }

    const PlainBoard mBoard;
    std::unique_ptr<ChildProcess> mDaemon;
};

TEST_F(TarqctlE2e, services_are_waited_for_and_listed) {
    mBoard.setProperty("ro.vendor.433_check_enable", "true");
    const auto early = start({"wait", "--json"});
    startDaemon();
    EXPECT_EQ(finish(*early).out, "{}\n");
    std::string lines;
    for (const auto& service : tarq::tools::knownServices()) lines += service.name + " present\n";
    EXPECT_EQ(tarqctl({"services"}).out, lines);
    EXPECT_EQ(tarqctl({"services", kShellName, "--json"}).out,
              "{\"services\":[{\"name\":\"com.tarq.shell.IShellService\",\"present\":true}]}\n");
    const Result absent = tarqctl({"services", "nobody"});
    EXPECT_EQ(absent.code, 1);
    EXPECT_EQ(absent.out, "nobody absent: the daemon has no service of that name\n");
    followHint(tarqctl({"--timeout", "0.2", "wait", kShellName, "a", "b"}), 2,
               "wait com.tarq.shell.IShellService a b: not registered after 0.2 s: a b: no service "
               "of that name "
               "is known\n");
}

TEST_F(TarqctlE2e, without_its_property_a_service_is_not_waited_for_and_the_reason_is_told) {
    startDaemon();
    followHint(tarqctl({"radio", "watch"}), 2,
               "tarqctl: radio watch: radiokey_service is not registered: property "
               "ro.vendor.433_check_enable is not \"true\"\n");
}

TEST_F(TarqctlE2e, check_at_the_start_is_named_while_it_holds_up_the_calls) {
    const int line = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);  // nobody answers
    ASSERT_EQ(grantpt(line) + unlockpt(line), 0);
    fs::create_directories(mBoard.device("/dev"));
    fs::create_symlink(ptsname(line), mBoard.device("/dev/ttyS3"));
    mBoard.setProperty("ro.vendor.zigbee_check_enable", "true");
    startDaemon();
    const std::string check = ": the Zigbee check is still running; it can take up to 13.5 minutes";
    const std::pair<Words, std::string> cases[] = {
            {{"--timeout", "0.2", "shell", "id"}, "no answer after 0.2 s"},
            {{"--timeout", "0.2", "wait"}, "not serving after 0.2 s"},
            {{"--timeout", "0.2", "wait", "radiokey_service"}, "after 0.2 s: radiokey_service"}};
    for (const auto& [words, why] : cases) {
        if (words.back() == "radiokey_service") {
            mBoard.setProperty("ro.vendor.433_check_enable", "true");
        }
        const Result result = tarqctl(words);
        EXPECT_EQ(result.code, 2);
        EXPECT_THAT(result.out, HasSubstr(why + check));
    }
    close(line);
}

TEST_F(TarqctlE2e, time_is_taken) {
    startDaemon();
    for (const char* time : {"-1", "9223372036854775807", "-9223372036854775808"})
        EXPECT_EQ(tarqctl({"ota-time", time}).out, "") << time;
    EXPECT_THAT(tarqctl({"ota-time", "0"}).out,
                HasSubstr("no package passes by its time any more"));
}

TEST_F(TarqctlE2e, package_is_compared_and_explained) {
    describeBoard("<hw Peripheral='tp'>gt9</hw><hw Peripheral='bt'>r s</hw>");
    startDaemon();
    EXPECT_THAT(tarqctl({"hwinfo"}).out, AllOf(StartsWith("wifi:null\ncodec:null\ntp:gt9\n"),
                                               EndsWith("\nkeyboard_ic:null\n")));
    const Result refused = tarqctl({"match", "overlay_id:5", "bt:x"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.out, HasSubstr("\n  add tp:gt9\n  write bt:x,r,s\n"));
    const Result fitting =
            tarqctl({"match", "--strict", "overlay_id:5", "tp:x,gt9", "--json", "bt:r,s"});
    EXPECT_EQ(fitting.code, 0);
    EXPECT_THAT(fitting.out,
                StartsWith("{\"verdict\":\"yes\",\"service\":\"yes\",\"sentence\":\"all 2 board "
                           "parts fit"));
    const Result piped = sh("tarqctl hwinfo | tarqctl match --file - 2>&1");
    EXPECT_THAT(piped.out,
                AllOf(StartsWith("yes: all 2 board parts fit; the overlay was not compared\n"),
                      EndsWith("tarqctl: match: yes, but the overlay was not compared: no item is "
                               "overlay_id, the board's is 5\n")));
    EXPECT_EQ(piped.code, 0);
    writeFile(mBoard / "list", "# comment\r\n\r\n \t\ntp:gt9\r\n#tp:x\nbt:r s");
    EXPECT_THAT(
            tarqctl({"match", "--file", mBoard / "list"}).out,
            HasSubstr("gt9      fits: has \"gt9\"; the probe found nothing usable\n  bt    r s  "
                      "  r s      "
                      "fits: has \"r\", \"s\"\n"));
    EXPECT_EQ(tarqctl({"match", "--file", "/dev/null"}).code, 1);

    tarqctl({"setprop", "ro.vendor.ota_enter_timestamp_check", "true"});
    writeFile(mBoard.device("/vendor/etc/hardware_timestamp.txt"), ",\n,6");
    EXPECT_THAT(tarqctl({"match", "--strict", "--ota-time", "7", "tp:x"}).out,
                HasSubstr("passed: the package's time, 7"));
}

TEST_F(TarqctlE2e, mistakes_in_a_list_are_named_with_their_line_and_strict_refuses_them) {
    describeBoard("<hw Peripheral='tp'>gt9</hw>");
    startDaemon();
    const std::string list = mBoard / "list";
    const auto check = [&](const std::string& lines, int code, const std::string& said) {
        writeFile(list, lines);
        const Result plain = tarqctl({"match", "--file", list});
        const Result strict = tarqctl({"match", "--strict", "--file", list});
        EXPECT_THAT(plain.out, HasSubstr(said));
        EXPECT_THAT(strict.out, HasSubstr(said));
        EXPECT_EQ(plain.code, code == 2 ? 2 : 0) << lines;
        EXPECT_EQ(strict.code, code) << lines;
    };
    const std::string fits = "overlay_id:5\ntp:gt9\n";
    check(fits, 0, "yes: 1 board part fits\n");
    check(fits + "\nwifi:gt9 gt911\n", 0, "yes: ");
    check("overlay_id:5\ntp:gt9\r\n", 0, list + ":2: it ends in CR LF");
    check(fits + "#\ntp:gt9", 1, list + ":4: tp is named more than once");
    check(fits + "overlay-id:9", 1, list + ":3: there is no part \"overlay-id\"");
    check(fits + "wifi:" + std::string(97, 'x'), 1, list + ":3: wifi: the item is longer than 101");
    check("tp:gt9", 1, "the overlay was not compared: no item is overlay_id, the board's is 5\n");
    check("\xef\xbb\xbf" + fits, 2, list + ":1: it begins with a byte order mark\nhint: sed -i ");
    check(fits + "\xef\xbb\xbf#", 2, list + ":3: it begins with a byte order mark\n");
    check(std::string("\xff\xfet\0p\0", 6), 2, list + ":1: it is UTF-16\nhint: iconv ");
    writeFile(list, "\xef\xbb\xbf" + fits);
    const std::string mended = followHint(tarqctl({"match", "--file", list}), 2, "mark").out;
    EXPECT_EQ(readFile(list), fits) << mended;
    EXPECT_THAT(tarqctl({"match", "tp:gt9", "\xef\xbb\xbfoverlay_id:9"}).out,
                HasSubstr("match: a byte order mark in front of \"overlay_id\" makes it another"));
}

TEST_F(TarqctlE2e, yes_without_a_comparison_is_said_and_strict_refuses_it) {
    startDaemon();
    const Result nothing = tarqctl({"match", "overlay_id:1", "tp:x"});
    EXPECT_EQ(nothing.code, 0);
    EXPECT_THAT(nothing.out, EndsWith("tarqctl: match: yes, but overlay ids were not compared: the "
                                      "board has none\ntarqctl: match: yes, but no part was "
                                      "compared: the board lists none\n"));
    EXPECT_EQ(tarqctl({"match", "--strict", "tp:x"}).code, 1);
    tarqctl({"setprop", "ro.vendor.ota_skip_hw_info", "true"});
    EXPECT_EQ(tarqctl({"match", "--strict", "tp:x"}).code, 1);
    const std::string log = mBoard.log();
    fs::remove(log);
    EXPECT_EQ(tarqctl({"match", "foo:x"}).out,
              "yes: the reasons are not known, " + log +
                      ": No such file or directory\n"
                      "tarqctl: match: there is no part \"foo\", the nearest name is \"tp\"\n");
    EXPECT_EQ(tarqctl({"match", "--strict", "tp:x"}).code, 1);
}

TEST_F(TarqctlE2e, log_that_cannot_be_written_is_named_beside_the_answer) {
    if (system("unshare -m true 2>/dev/null") != 0) GTEST_SKIP() << "unshare -m is refused";
    const std::string full = mBoard / "full";
    setenv("TARQ_BOARD", full.c_str(), 1);
    const std::string said = sh("exec 2>&1; unshare -m sh -c 'mkdir $TARQ_BOARD; "
                                "mount -t tmpfs -o size=256k none $TARQ_BOARD; cd $TARQ_BOARD; "
                                "mkdir -p run/properties; TARQ_LOG=run/log " TARQD
                                " 2>/dev/null & "
                                "tarqctl wait; head -c 1M /dev/zero >fill 2>/dev/null; "
                                "tarqctl match tp:x; kill $!'")
                                     .out;
    EXPECT_THAT(said, HasSubstr("yes: the reasons are not known, " + full +
                                "/run/log: No space left on device\n"));
}

TEST_F(TarqctlE2e, command_output_is_printed_as_it_is_and_a_cut_is_said) {
    startDaemon();
    EXPECT_EQ(tarqctl({"shell", "printf", "'a\\n b'"}).out, "a\n b");
    EXPECT_EQ(tarqctl({"shell", "false"}).out, "");
    EXPECT_EQ(tarqctl({"--json", "shell", "printf 'a\\355\\240\\200\\n'"}).out,
              "{\"output\":\"a\\n\"}\n");
    for (const size_t size : {1022, 1023, 5000}) {
        const Result result =
                tarqctl({"shell", "head -c " + std::to_string(size) + " /dev/zero | tr '\\0' x"});
        EXPECT_EQ(result.code, 0);
        const std::string kept(std::min<size_t>(size, 1023), 'x');
        EXPECT_THAT(result.out, EndsWith((size < 1023 ? "" : "it may be cut\n") + kept));
        EXPECT_EQ(result.out.size() > kept.size(), size >= 1023);
    }
    followHint(tarqctl({"shell", ": " + std::string(100000, 'x')}), 2, "it may be too large\n");
}

TEST_F(TarqctlE2e, only_root_and_system_may_run_commands) {
    if (getuid() != 0) GTEST_SKIP() << "only root can run the tool as other users";
    startDaemon();
    for (const uid_t uid : {0, 1000}) EXPECT_EQ(tarqctl({"shell", "echo yes"}, uid).out, "yes\n");
    for (const uid_t uid : {1001, 2000}) {
        const std::string refusal = "tarqctl: shell 'echo yes': uid " + std::to_string(uid) +
                                    " is neither root nor system\nhint: sudo " +
                                    mBoard / "tarqctl" + " --board " + mBoard.directory +
                                    " shell 'echo yes'\n";
        EXPECT_EQ(followHint(tarqctl({"shell", "echo yes"}, uid), 1, refusal).out, "yes\n");
    }
    // Nor does a command run for which the daemon has no descriptor left once it has the tool's
    // connections. Those of the tools before may be open for a moment yet.
    const auto isLeftWithout = [&](uid_t uid) {
        const std::string open = "/proc/" + std::to_string(mDaemon->pid()) + "/fd/";
        rlimit limit = {0, 4096};
        for (int left = 4; left > 0; ++limit.rlim_cur) {
            if (!fs::is_symlink(open + std::to_string(limit.rlim_cur))) --left;
        }
        EXPECT_EQ(prlimit(mDaemon->pid(), RLIMIT_NOFILE, &limit, nullptr), 0);
        return tarqctl({"shell", "true"}, uid).out.find("could not start the command\nhint: ta") !=
               std::string::npos;
    };
    for (const uid_t uid : {0, 1000}) EXPECT_TRUE(eventually([&] { return isLeftWithout(uid); }));
    followHint(tarqctl({"setprop", "a", "1"}, 2000), 1,
               "tarqctl: setprop a 1: Permission denied\nhint: sudo ");
    chmod(mBoard.run().c_str(), 0700);
    followHint(tarqctl({"hwinfo"}, 2000), 2,
               "binder.sock: Permission denied\nhint: scripts/run --shared\n");
}

TEST_F(TarqctlE2e, second_command_says_what_it_waits_for_and_ends_when_the_time_is_up) {
    startDaemon();
    const auto first = runUntilReleased();
    const Result second = tarqctl({"--timeout", "2.2", "shell", "echo second"});
    EXPECT_THAT(second.out, StartsWith("tarqctl: shell 'echo second': no answer after 2 s: another "
                                       "command may be running, waiting on\n"));
    EXPECT_THAT(tarqctl({"--timeout", "0.1", "--json", "shell", "echo third"}).out,
                StartsWith("{\"error\":{\"code\":\"timeout\""));
    release();
    EXPECT_THAT(finish(*first).out, EndsWith("\nreleased"));
    EXPECT_EQ(followHint(second, 2,
                         "\ntarqctl: shell 'echo second': no answer after 2.2 s: another command "
                         "may be running, one runs at a time")
                      .out,
              "second\n");
}

TEST_F(TarqctlE2e, daemon_that_is_gone_stopped_or_killed_is_told_apart) {
    followHint(tarqctl({"hwinfo"}), 2, "run/binder.sock: No such file or directory\n");
    startDaemon();
    mDaemon->kill(SIGSTOP);
    const std::string process = std::to_string(mDaemon->pid());
    const std::string why =
            ": the daemon is stopped (process " + process + ")\nhint: kill -CONT " + process + "\n";
    EXPECT_THAT(tarqctl({"--timeout", "0.2", "wait"}).out, EndsWith(why));
    followHint(tarqctl({"--timeout", "0.2", "services"}), 2, "no answer after 0.2 s" + why);
    EXPECT_EQ(tarqctl({"services"}).code, 0);

    const auto running = runUntilReleased();
    mDaemon->kill(SIGKILL);
    followHint(finish(*running), 2, "the daemon ended before it answered\n");
    release();
    EXPECT_EQ(mDaemon->wait(), 128 + SIGKILL);
    EXPECT_THAT(followHint(tarqctl({"hwinfo"}), 2, "binder.sock: Connection refused\n").out,
                HasSubstr("instantiate....."));
}

TEST_F(TarqctlE2e, tool_and_daemon_of_different_builds_do_not_misread_each_other) {
    const int listener = tarq::host::listenAt(mBoard.binderSocket(), 0600);
    std::thread other([&] {
        for (int fd; (fd = accept(listener, nullptr, nullptr)) >= 0; close(fd)) {
            const uint32_t welcome[10] = {2, 99};  // kind and version
            EXPECT_EQ(send(fd, welcome, sizeof(welcome), 0), sizeof(welcome));
        }
    });
    EXPECT_THAT(tarqctl({"--timeout", "30", "hwinfo"}).out, HasSubstr("is of another build"));
    EXPECT_THAT(tarqctl({"--timeout", "0.2", "wait"}).out, HasSubstr("is of another build"));
    shutdown(listener, SHUT_RDWR);
    other.join();
    close(listener);

    startDaemon();
    const uint32_t open[10] = {0, 99};
    const int fd = tarq::host::connectTo(mBoard.binderSocket());
    EXPECT_EQ(send(fd, open, sizeof(open), 0), sizeof(open));
    char byte;
    while (recv(fd, &byte, 1, 0) > 0) continue;
    close(fd);
    EXPECT_THAT(readFile(mBoard.log()), HasSubstr("it speaks version 99 of the packets, this"));
}

TEST_F(TarqctlE2e, log_is_followed_until_interrupted_or_the_board_ends) {
    const int board = tarq::host::lockBoard(mBoard);
    writeFile(mBoard.log(), "one\n");
    const auto interrupted = start({"log", "-f"}), log = start({"log", "-f"});
    for (const auto& each : {interrupted.get(), log.get()}) EXPECT_EQ(each->readLine(), "one");
    std::ofstream(mBoard.log(), std::ios::app) << "two\n";
    for (const auto& each : {interrupted.get(), log.get()}) EXPECT_EQ(each->readLine(), "two");
    interrupted->kill(SIGINT);
    EXPECT_EQ(interrupted->wait(), 0);
    std::ofstream(mBoard.log(), std::ios::app) << "the last";
    close(board);
    followHint(finish(*log), 2,
               "the last\ntarqctl: log -f: the board in " + mBoard.directory + " has ended\n");
}

TEST_F(TarqctlE2e, terminal_gets_colours_and_a_word_for_no_output) {
    startDaemon();
    const auto onTerminal = [this](const std::string& line) {
        return sh("script -qec '" + line + "' /dev/null").out;
    };
    EXPECT_THAT(onTerminal("tarqctl shell \"true;true\""),
                HasSubstr("no standard output came back"));
    EXPECT_THAT(onTerminal("NO_COLOR= tarqctl match tp:x"), StartsWith("\x1b[32myes\x1b[0m: "));
    EXPECT_THAT(onTerminal("NO_COLOR=1 tarqctl match tp:x"), StartsWith("yes: "));
}

TEST_F(TarqctlE2e, output_that_nobody_takes_ends_the_tool) {
    std::string lines;
    for (int i = 0; i < 20000; ++i) lines += "line\n";
    writeFile(mBoard.log(), lines);
    const std::string status = mBoard / "status";
    EXPECT_EQ(sh("trap '' PIPE; { tarqctl log 2>&1; echo $? >" + status + "; } | head -n1").out,
              "line\n");
    EXPECT_EQ(readFile(status), "141\n");
    const Result full = sh("tarqctl log -f 2>&1 >/dev/full");
    EXPECT_EQ(full.code, 2);
    EXPECT_EQ(full.out, "tarqctl: standard output: cannot be written: No space left on device\n");
}

}  // namespace
