#include "shell/ShellService.h"

#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "shell/shell_module.h"
#include "tests/captured_log.h"
#include "tests/temporary_directory.h"
#include "tests/wire.h"

using android::IPCThreadState;
using android::Parcel;
using android::sp;
using android::String16;
using android::binder::Status;
using com::tarq::shell::ShellService;
using tarq::wire::token;
using testing::ElementsAre;
using testing::IsEmpty;

// The linker puts these in place of popen and pclose. A test may bring a stream of its own.
extern "C" {
FILE* __real_popen(const char* command, const char* type);
int __real_pclose(FILE* stream);
}
static std::function<FILE*(const char* command)> popenStandIn;
static bool streamIsCloseOnExec;

extern "C" FILE* __wrap_popen(const char* command, const char* type) {
    if (popenStandIn) return popenStandIn(command);
    FILE* stream = __real_popen(command, type);
    streamIsCloseOnExec = stream && (fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC) != 0;
    return stream;
}

extern "C" int __wrap_pclose(FILE* stream) {
    return popenStandIn ? fclose(stream) : __real_pclose(stream);
}

namespace {

struct ShellServiceTest : testing::Test {
    ShellServiceTest() { callAs(1000); }
    ~ShellServiceTest() override {
        IPCThreadState::self()->clearCallingIdentity();
        popenStandIn = nullptr;
    }

    // Calls on this thread come from a process of that uid.
    static void callAs(uint32_t uid) {
        const uint64_t token = uint64_t{uid} << 32 | 4711;  // any pid
        IPCThreadState::self()->restoreCallingIdentity(static_cast<int64_t>(token));
    }

    Status execute(const std::string& command) {
        output.clear();
        int32_t result = -1;
        return service->executeCommand(String16(command.c_str()), &output, &result);
    }

    // The one element that a command that may run puts out.
    String16 outputOf(const std::string& command) {
        EXPECT_TRUE(execute(command).isOk());
        EXPECT_EQ(output.size(), 1u);
        return output.empty() ? String16() : output[0];
    }

    CapturedLog log;
    const sp<ShellService> service = new ShellService;
    std::vector<String16> output;
};

String16 repeat(size_t count) {
    return String16(std::string(count, 'x').c_str());
}

TEST_F(ShellServiceTest, root_and_system_may_execute) {
    for (const uint32_t uid : {0u, 1000u}) {
        callAs(uid);
        EXPECT_EQ(outputOf("echo hi; uname"), String16("hi\nLinux\n"));
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(ShellServiceTest, everyone_else_is_refused) {
    popenStandIn = [](const char*) -> FILE* {
        ADD_FAILURE() << "a command ran";
        return nullptr;
    };
    // Among them the system of a second user, and a uid whose low 16 bits are root's.
    for (const uint32_t uid : {2000u, 1u, 999u, 1001u, 101000u, 0x10000u, 0xFFFFFFFFu}) {
        callAs(uid);
        EXPECT_EQ(execute("echo hi").transactionError(), -1) << uid;
        EXPECT_THAT(output, IsEmpty());
        EXPECT_THAT(log.take(), ElementsAre("E ShellService: execute command permission denied\n"));
    }
}

TEST_F(ShellServiceTest, output_is_cut_behind_1023_bytes) {
    const std::pair<size_t, size_t> printedAndReturned[] = {
            {0, 0},       {1, 1},       {511, 511},   {512, 512},   {513, 513},    {1022, 1022},
            {1023, 1023}, {1024, 1023}, {1025, 1023}, {5000, 1023}, {200000, 1023}};
    for (const auto& [printed, returned] : printedAndReturned) {
        const std::string command =
                "head -c " + std::to_string(printed) + " /dev/zero | tr '\\0' x";
        EXPECT_EQ(outputOf(command), repeat(returned)) << printed;
    }
}

TEST_F(ShellServiceTest, endless_output_ends_with_the_pipe) {
    EXPECT_EQ(outputOf("yes").size(), 1023u);
}

TEST_F(ShellServiceTest, output_in_many_small_pieces_is_joined) {
    EXPECT_EQ(outputOf("i=0; while [ $i -lt 300 ]; do echo; i=$((i+1)); done").size(), 300u);
}

TEST_F(ShellServiceTest, what_comes_back_as_text) {
    const std::pair<const char*, String16> cases[] = {
            {"", String16("")},
            {"printf 'a\\nb\\n'", String16("a\nb\n")},
            {"echo lost >&2", String16("")},
            {"echo kept; exit 3", String16("kept\n")},
            {"/no/such/program 2>/dev/null", String16("")},
            {"printf 'before\\0behind'", String16("before")},
            {"printf 'gr\\303\\274n \\360\\237\\230\\200'", String16(u"gr\u00FCn \U0001F600")},
            // Not UTF-8: a stray byte is a character of its own.
            {"printf 'a\\205b'", String16(u"a\u0085b")},
            // A character that the output's end cuts: nothing is left of the whole text.
            {"printf 'a\\303'", String16("")},
            {"head -c 1022 /dev/zero | tr '\\0' x; printf '\\303\\274'", String16("")}};
    for (const auto& [command, text] : cases) EXPECT_EQ(outputOf(command), text) << command;
}

TEST_F(ShellServiceTest, command_is_sent_to_the_shell_as_utf8) {
    popenStandIn = [](const char* command) {
        EXPECT_STREQ(command, "gr\xC3\xBCn \xF0\x9F\x98\x80");
        return fopen("/dev/null", "re");
    };
    int32_t result = -1;
    EXPECT_TRUE(
            service->executeCommand(String16(u"gr\u00FCn \U0001F600"), &output, &result).isOk());
    EXPECT_EQ(result, 0);
}

TEST_F(ShellServiceTest, output_is_appended) {
    output = {String16("earlier")};
    int32_t result = -1;
    EXPECT_TRUE(service->executeCommand(String16("echo later"), &output, &result).isOk());
    EXPECT_THAT(output, ElementsAre(String16("earlier"), String16("later\n")));
}

TEST_F(ShellServiceTest, command_that_cannot_be_started) {
    popenStandIn = [](const char*) -> FILE* {
        errno = EMFILE;
        return nullptr;
    };
    EXPECT_EQ(execute("true").transactionError(), -1);
    EXPECT_THAT(output, IsEmpty());
    EXPECT_THAT(log.take(),
                ElementsAre("E ShellService: execute command failed:Too many open files\n"));
}

TEST_F(ShellServiceTest, read_error_leaves_what_was_read) {
    popenStandIn = [](const char*) {
        static int reads;
        reads = 0;
        cookie_io_functions_t functions = {};
        functions.read = [](void*, char* buffer, size_t) -> ssize_t {
            if (++reads > 1) {
                errno = EIO;
                return -1;
            }
            return static_cast<ssize_t>(std::string("part").copy(buffer, 4));
        };
        return fopencookie(nullptr, "r", functions);
    };
    EXPECT_EQ(outputOf("true"), String16("part"));
    EXPECT_THAT(log.take(), ElementsAre("E ShellService: execute command ferror\n"));
}

TEST_F(ShellServiceTest, other_children_do_not_inherit_the_pipe) {
    outputOf("true");
    EXPECT_TRUE(streamIsCloseOnExec);
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
            for (int call = 0; call < 5; ++call) {
                std::vector<String16> lines;
                int32_t result = -1;
                callAs(0);
                service->executeCommand(String16(command.c_str()), &lines, &result);
                EXPECT_THAT(lines, ElementsAre(String16("")));
                callAs(2000);
                service->executeCommand(String16(command.c_str()), &lines, &result);
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
}

TEST_F(ShellServiceTest, refused_call_has_an_empty_reply) {
    callAs(2000);
    Parcel data;
    Parcel reply;
    tarq::wire::fill(&data, token("com.tarq.shell.IShellService") + tarq::wire::text("id"));
    EXPECT_EQ(service->transact(1, data, &reply), -1);
    EXPECT_EQ(reply.dataSize(), 0u);
}

TEST_F(ShellServiceTest, module_registers_it_under_its_descriptor) {
    EXPECT_EQ(shell_module(), 0);
    EXPECT_THAT(log.take(), ElementsAre("I ShellService: instantiate.....\n"));
    const auto found = android::defaultServiceManager()->checkService(
            String16("com.tarq.shell.IShellService"));
    ASSERT_TRUE(found != nullptr);
    EXPECT_EQ(found->getInterfaceDescriptor(), String16("com.tarq.shell.IShellService"));
}

}  // namespace
