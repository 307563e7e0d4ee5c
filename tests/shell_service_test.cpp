
#include <binder/IPCThreadState.h>
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdio.h>

#include <thread>

#include "shell/ShellService.h"
#include "tests/captured_log.h"
#include "tests/temporary_directory.h"

using android::IPCThreadState;
using android::sp;
using android::String16;
using android::binder::Status;
using com::tarq::shell::ShellService;
using testing::ElementsAre;

// The linker puts these in place of popen and pclose. A test may bring a stream of its own. Any
// other must be closed in whatever else the process starts.
extern "C" {
FILE* __real_popen(const char* command, const char* type);
int __real_pclose(FILE* stream);
}
static FILE* (*popenStandIn)();

extern "C" FILE* __wrap_popen(const char* command, const char* type) {
    if (popenStandIn) return popenStandIn();
    FILE* stream = __real_popen(command, type);
    EXPECT_EQ(fcntl(fileno(stream), F_GETFD), FD_CLOEXEC);
    return stream;
}

extern "C" int __wrap_pclose(FILE* stream) {
    return popenStandIn ? fclose(stream) : __real_pclose(stream);
}

namespace {

struct ShellServiceTest : testing::Test {
    ShellServiceTest() {
        callAs(1000);
        popenStandIn = nullptr;
    }

    // Calls on this thread come from a process of that uid.
    static void callAs(uint32_t uid) {
        const uint64_t token = uint64_t{uid} << 32 | 4711;  // any pid
        IPCThreadState::self()->restoreCallingIdentity(static_cast<int64_t>(token));
    }

    Status execute(const std::string& command) {
        output = {String16("earlier")};
        return service->executeCommand(String16(command.c_str()), &output, &result);
    }

    // The one element that a command that may run appends.
    String16 outputOf(const std::string& command) {
        EXPECT_TRUE(execute(command).isOk());
        EXPECT_EQ(result, 0);
        EXPECT_THAT(output, ElementsAre(String16("earlier"), testing::_));
        return output.back();
    }

    void expectRefusal(const char* logged) {
        EXPECT_EQ(execute("echo hi").transactionError(), -1);
        EXPECT_THAT(output, ElementsAre(String16("earlier")));
        EXPECT_THAT(log.take(), ElementsAre(logged));
    }

    CapturedLog log;
    const sp<ShellService> service = new ShellService;
    std::vector<String16> output;
    int32_t result = -1;
};

TEST_F(ShellServiceTest, only_root_and_system_may_execute) {
    for (const uint32_t uid : {0u, 1000u}) {
        callAs(uid);
        EXPECT_EQ(outputOf("echo hi; uname"), String16("hi\nLinux\n"));
        EXPECT_THAT(log.take(), testing::IsEmpty());
    }
    // Among them root and system of a second user, and a uid whose low 16 bits are root's.
    for (const uint32_t uid : {2000u, 1u, 999u, 1001u, 100000u, 101000u, 0x10000u, 0xFFFFFFFFu}) {
        callAs(uid);
        expectRefusal("E ShellService: execute command permission denied\n");
    }
}

TEST_F(ShellServiceTest, output_is_cut_behind_1023_bytes) {
    for (const size_t printed : {0, 1, 1022, 1023, 1024, 5000}) {
        const std::string size = std::to_string(printed);
        EXPECT_EQ(outputOf("head -c " + size + " /dev/zero | tr '\\0' x"),
                  String16(std::string(std::min<size_t>(printed, 1023), 'x').c_str()))
                << size;
    }
    EXPECT_EQ(outputOf("yes").size(), 1023u);                            // ended by the closed pipe
    EXPECT_EQ(outputOf("printf a; sleep 0; printf b"), String16("ab"));  // in pieces
}

TEST_F(ShellServiceTest, commands_and_output_are_utf8) {
    const std::pair<const char*, const char16_t*> cases[] = {
            {"echo gr\u00FCn \U0001F600", u"gr\u00FCn \U0001F600\n"},
            {"printf '\\303\\274 \\360\\237\\230\\200'", u"\u00FC \U0001F600"},
            {"echo lost >&2; echo kept; exit 3", u"kept\n"},
            {"printf 'before\\0behind'", u"before"},
            // Not UTF-8: a stray byte is a character of its own.
            {"printf 'a\\205b'", u"a\u0085b"},
            // A character that the output's end cuts: nothing is left of the whole text.
            {"printf 'a\\303'", u""},
            {"head -c 1022 /dev/zero | tr '\\0' x; printf '\\303\\274'", u""}};
    for (const auto& [command, text] : cases) EXPECT_EQ(outputOf(command), String16(text));
}

TEST_F(ShellServiceTest, command_that_cannot_be_started) {
    popenStandIn = []() -> FILE* {
        errno = EMFILE;
        return nullptr;
    };
    expectRefusal("E ShellService: execute command failed:Too many open files\n");
}

TEST_F(ShellServiceTest, read_error_leaves_what_was_read) {
    popenStandIn = [] {
        static int reads;
        reads = 0;
        cookie_io_functions_t functions = {};
        functions.read = [](void*, char* buffer, size_t) -> ssize_t {
            errno = EIO;
            return ++reads > 1 ? -1 : static_cast<ssize_t>(std::string("part").copy(buffer, 4));
        };
        return fopencookie(nullptr, "r", functions);
    };
    EXPECT_EQ(outputOf("true"), String16("part"));
    EXPECT_THAT(log.take(), ElementsAre("E ShellService: execute command ferror\n"));
}

// Every command finds itself alone, up to its end and not just to the end of its output: the
// directory that it makes is not there. Refused calls in between must let the lock go.
TEST_F(ShellServiceTest, commands_run_strictly_one_after_the_other) {
    const TemporaryDirectory directory;
    const std::string alone = directory / "alone";
    const std::string command = "mkdir " + alone + " || echo not alone; exec >&-; expr 1 + 1 >" +
                                alone + "/sum; rm -r " + alone;
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            std::vector<String16> lines;
            int32_t ignored = -1;
            for (const uint32_t uid : {0, 2000, 1000, 2000, 0}) {
                callAs(uid);
                service->executeCommand(String16(command.c_str()), &lines, &ignored);
            }
            EXPECT_THAT(lines, ElementsAre(String16(""), String16(""), String16("")));
        });
    }
    for (std::thread& caller : callers) caller.join();
}

}  // namespace
