#include <cutils/properties.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <host/log_sink.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/temporary_directory.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

// One board for all tests of the process, which reads TARQ_BOARD once; each takes its own names.
const TemporaryDirectory& board() {
    static const TemporaryDirectory directory;
    return directory;
}

class Properties : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        setenv("TARQ_BOARD", board().path().c_str(), 1);
        std::filesystem::create_directories(board() / "run/properties");
        std::filesystem::create_directories(board() / "root/data/property");
    }
    Properties() {
        tarq::host::setLogSink([this](int, const char* tag, const std::string& text) {
            mLog.push_back(std::string(tag) + ": " + text);
        });
    }
    ~Properties() override { tarq::host::setLogSink({}); }

    std::vector<std::string> mLog;
};

std::string get(const char* name, const char* fallback = "default") {
    char value[PROPERTY_VALUE_MAX];
    const int length = property_get(name, value, fallback);
    EXPECT_EQ(static_cast<size_t>(length), strlen(value));
    return value;
}

TEST_F(Properties, missing_or_empty_reads_as_the_default_cut_at_91_bytes) {
    EXPECT_EQ(get("a.missing"), "default");
    EXPECT_EQ(get("a.missing", nullptr), "");
    EXPECT_EQ(get("a.missing", std::string(200, 'x').c_str()), std::string(91, 'x'));
    EXPECT_EQ(property_set("a.empty", nullptr), 0);
    EXPECT_EQ(get("a.empty"), "default");
    EXPECT_EQ(get("../../etc/passwd"), "default");
    EXPECT_THAT(mLog, IsEmpty());
}

TEST_F(Properties, value_is_replaced_and_comes_back_byte_for_byte) {
    const std::string longest(91, 'v');
    for (const std::string& value :
         {std::string("1"), longest, std::string(" \n\xF0\x9F\x98\x80")}) {
        EXPECT_EQ(property_set("azAZ09_-@:.b", value.c_str()), 0);
        EXPECT_EQ(get("azAZ09_-@:.b"), value);
    }
    EXPECT_THAT(mLog, IsEmpty());
}

TEST_F(Properties, illegal_names_and_values_are_refused_with_a_reason) {
    const struct {
        std::string name;
        std::string value;
        const char* reason;
    } refused[] = {
            {"c.long", std::string(92, 'v'), "longer than 91"},
            {"ro.c.long", std::string(92, 'v'), "longer than 91"},
            {"", "1", "a name is made of"},
            {".c", "1", "a name is made of"},
            {"c.", "1", "a name is made of"},
            {"c..c", "1", "a name is made of"},
            {"c/c", "1", "a name is made of"},
            {"c c", "1", "a name is made of"},
            {"ctl.start", "tarqd", "commands to init"},
            {"c.lone_continuation", "\x85", "not UTF-8"},
            {"c.past_the_end", "\xE2\x82", "not UTF-8"},
            {"c.overlong", "\xC1\x81", "not UTF-8"},
            {"c.surrogates", "\xED\xA0\x80\xED\xB0\x80", "not UTF-8"},
            {"c.past_unicode", "\xF4\x90\x80\x80", "not UTF-8"},
            {std::string(300, 'c'), "1", "File name too long"},
    };
    for (const auto& [name, value, reason] : refused) {
        mLog.clear();
        EXPECT_EQ(property_set(name.c_str(), value.c_str()), -1) << name;
        EXPECT_THAT(mLog,
                    ElementsAre(AllOf(HasSubstr("libc: cannot set property"), HasSubstr(reason))));
        EXPECT_EQ(get(name.c_str()), "default");
    }
    EXPECT_EQ(property_set(nullptr, "1"), -1);
}

TEST_F(Properties, persistent_value_is_saved_and_set_even_when_it_cannot_be_saved) {
    EXPECT_EQ(property_set("persist.d", "1"), 0);
    EXPECT_EQ(property_set("persist.d", "2"), 0);
    EXPECT_EQ(readFile(board() / "root/data/property/persist.d"), "2");
    EXPECT_THAT(mLog, IsEmpty());

    std::filesystem::create_directory(board() / "root/data/property/persist.blocked");
    EXPECT_EQ(property_set("persist.blocked", "3"), 0);
    EXPECT_EQ(get("persist.blocked"), "3");
    EXPECT_THAT(mLog, ElementsAre(HasSubstr("cannot save property \"persist.blocked\"")));
}

// Runs the body in `count` processes, which begin together, and returns their exit codes.
template <typename Body>
std::vector<int> exitCodesOf(int count, Body body) {
    int gate[2];
    EXPECT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        children.push_back(fork());
        if (children.back() != 0) continue;
        close(gate[1]);
        char unused;
        while (read(gate[0], &unused, 1) > 0) {
        }
        _exit(body(i));
    }
    close(gate[0]);
    close(gate[1]);
    std::vector<int> codes;
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        codes.push_back(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
    }
    return codes;
}

TEST_F(Properties, of_racing_processes_one_sets_a_read_only_property) {
    for (int round = 0; round < 20; ++round) {
        const std::string name = "ro.race." + std::to_string(round);
        const auto codes = exitCodesOf(4, [&](int i) {
            return property_set(name.c_str(), std::to_string(i).c_str()) == 0 ? 0 : 1;
        });
        ASSERT_EQ(std::count(codes.begin(), codes.end(), 0), 1);
        const auto winner = std::find(codes.begin(), codes.end(), 0) - codes.begin();
        EXPECT_EQ(get(name.c_str()), std::to_string(winner));
        EXPECT_EQ(property_set(name.c_str(), get(name.c_str()).c_str()), -1);
        EXPECT_THAT(mLog.back(), HasSubstr("read-only and already set"));
    }
}

TEST_F(Properties, reader_sees_whole_values_while_they_change) {
    const std::string values[] = {std::string(91, 'a'), std::string(40, 'b')};
    ASSERT_EQ(property_set("e.value", values[0].c_str()), 0);
    std::atomic<bool> done{false};
    std::vector<std::thread> setters;
    for (const std::string& value : values) {
        setters.emplace_back([&] {
            while (!done) property_set("e.value", value.c_str());
        });
    }
    for (int i = 0; i < 2000; ++i) {
        const std::string seen = get("e.value");
        EXPECT_TRUE(seen == values[0] || seen == values[1]) << seen;
    }
    done = true;
    for (std::thread& setter : setters) setter.join();
    for (const auto& entry : std::filesystem::directory_iterator(board() / "run/properties")) {
        EXPECT_NE(entry.path().filename().string()[0], '.') << entry.path() << " was left";
    }
}

TEST(PropertiesDeathTest, without_a_board_nothing_is_set_and_defaults_are_read) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process that has no board yet
    unsetenv("TARQ_BOARD");
    EXPECT_EXIT(
            {
                const int result = property_set("f.value", "1");
                _exit(result == -1 && get("f.value") == "default" ? 0 : 1);
            },
            testing::ExitedWithCode(0), "TARQ_BOARD is not set");
}

}  // namespace
