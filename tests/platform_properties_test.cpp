#include <cutils/properties.h>
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "tests/captured_log.h"
#include "tests/plain_board.h"

using namespace testing;

namespace {

struct Properties : Test {
    const PlainBoard board;
    CapturedLog log;
};

std::string get(const char* name, const char* fallback = "default") {
    char value[PROPERTY_VALUE_MAX];
    const int length = property_get(name, value, fallback);
    EXPECT_EQ(static_cast<size_t>(length), strlen(value));
    return value;
}

TEST_F(Properties, value_comes_back_byte_for_byte_or_the_default_cut_at_91_bytes) {
    const std::string longest(91, 'v');
    for (const std::string& value : {std::string("1"), longest, std::string(" \n😀")}) {
        EXPECT_EQ(property_set("azAZ09_-@:.b", value.c_str()), 0);
        EXPECT_EQ(get("azAZ09_-@:.b"), value);
    }
    EXPECT_EQ(property_set("a.empty", nullptr), 0);
    EXPECT_EQ(get("a.empty"), "default");
    EXPECT_EQ(get("a.missing", nullptr), "");
    EXPECT_EQ(get("a.missing", (longest + "v").c_str()), longest);
    EXPECT_EQ(get("../../root/../run/properties/azAZ09_-@:.b"), "default");
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Properties, illegal_names_and_values_are_refused_with_a_reason) {
    const struct {
        std::string name, value, reason;
    } refused[] = {
            {"ro.c", std::string(92, 'v'), "longer than 91"},
            {"", "1", "a name is made of"},
            {".c", "1", "a name is made of"},
            {"c.", "1", "a name is made of"},
            {"c..c", "1", "a name is made of"},
            {"c/c", "1", "a name is made of"},
            {"ctl.start", "tarqd", "commands to init"},
            {"c.past_the_end", "\xE2\x82", "not UTF-8"},
            {"c.overlong", "\xC1\x81", "not UTF-8"},
            {"c.surrogates", "\xED\xA0\x80\xED\xB0\x80", "not UTF-8"},
            {std::string(300, 'c'), "1", "File name too long"},
    };
    for (const auto& [name, value, reason] : refused) {
        EXPECT_EQ(property_set(name.c_str(), value.c_str()), -1) << name;
        EXPECT_THAT(log.take(), ElementsAre(AllOf(StartsWith("W libc: cannot set property"),
                                                  HasSubstr(reason))));
        EXPECT_EQ(get(name.c_str()), "default");
    }
    EXPECT_EQ(property_set(nullptr, "1"), -1);
}

TEST_F(Properties, persistent_value_is_saved_and_set_even_when_it_cannot_be_saved) {
    std::filesystem::create_directories(board.device("/data/property/persist.blocked"));
    for (const char* value : {"1", "2"}) EXPECT_EQ(property_set("persist.d", value), 0);
    EXPECT_EQ(readFile(board.device("/data/property/persist.d")), "2");
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(property_set("persist.blocked", "3"), 0);
    EXPECT_EQ(get("persist.blocked"), "3");
    EXPECT_THAT(log.take(),
                ElementsAre(HasSubstr("E libc: cannot save property \"persist.blocked\"")));
}

// Threads stand for processes: what they share is the directory.
TEST_F(Properties, racing_setters_set_whole_values_and_a_read_only_one_once) {
    const std::string values[] = {std::string(91, 'a'), std::string(40, 'b')};
    std::atomic<int> ready{0};
    std::atomic<int> done{0};
    const auto setMany = [&](const char* value) {
        for (int i = 1; i <= 100; ++i) {
            for (++ready; ready < 2 * i;)
                std::this_thread::yield();  // both begin the round together
            done += property_set(("ro.race." + std::to_string(i)).c_str(), value) == 0 ? 1 : 0;
            property_set("e.value", value);
            EXPECT_THAT(get("e.value"), AnyOfArray(values));
        }
    };
    std::thread other(setMany, values[0].c_str());
    setMany(values[1].c_str());
    other.join();
    EXPECT_EQ(done, 100);
    EXPECT_THAT(log.take(), AllOf(SizeIs(100), Each(HasSubstr("read-only and already set"))));
    for (const auto& entry : std::filesystem::directory_iterator(board / "run/properties"))
        EXPECT_NE(entry.path().filename().string()[0], '.') << entry.path() << " was left";
}

TEST(PropertiesDeathTest, without_a_board_nothing_is_set_and_defaults_are_read) {
    FLAGS_gtest_death_test_style = "threadsafe";  // a process that has no board yet
    unsetenv("TARQ_BOARD");
    EXPECT_EXIT(_exit(property_set("f", "1") == -1 && get("f") == "default" ? 0 : 1),
                ExitedWithCode(0), "TARQ_BOARD is not set");
}

}  // namespace
