#include <gtest/gtest.h>
#include <utils/RefBase.h>
#include <utils/String16.h>
#include <utils/String8.h>

#include <atomic>
#include <string>
#include <thread>

using namespace android;

namespace {

using Utf16 = std::u16string;

TEST(Strings, utf8_becomes_utf16_by_its_lead_bytes_alone_and_goes_back_without_lone_surrogates) {
    const struct {
        std::string utf8;
        Utf16 utf16;
        std::string back;
    } cases[] = {
            {"aä€😀", u"aä€😀", "aä€😀"},
            {{"a\0b", 3}, {u"a\0b", 3}, {"a\0b", 3}},
            {"\x85", u"\x85", "\xC2\x85"},          // a lone continuation byte is itself
            {"\xC0\x80", {u"\0", 1}, {"\0", 1}},    // overlong
            {"\xE2\x41\x42", u"\x2042", "\u2042"},  // bits are masked, not checked
            {"text\xC3", u"", ""},                  // past the end: nothing is left
            {"text\xF0\x9F\x98", u"", ""},
            {"\xED\xA0\xBD", {0xD83D}, ""},
            {"a\xED\xA0\xBD!", {u'a', 0xD83D, u'!'}, "a!"},
            {"\xED\xB8\x80\xED\xA0\xBD", {0xDE00, 0xD83D}, ""},
            {"\xED\xA0\xBD😀", {0xD83D, 0xD83D, 0xDE00}, "😀"},
    };
    for (const auto& [utf8, utf16, back] : cases) {
        const String16 converted(utf8.data(), utf8.size());
        EXPECT_EQ(Utf16(converted.string(), converted.size()), utf16) << utf8;
        EXPECT_EQ(String16(String8(utf8.data(), utf8.size())), converted) << utf8;
        const String8 returned(converted);
        EXPECT_EQ(std::string(returned.string(), returned.size()), back) << utf8;
    }
}

TEST(Strings, comparing_8_bit_text_ends_at_the_first_nul) {
    EXPECT_EQ(String8("a\0b", 3), String8("a"));
    EXPECT_NE(String16(u"a\0b", 3), String16(u"a"));
    const std::string longText(300, 'x');
    EXPECT_EQ(String8::format("%s-%d", longText.c_str(), 7).string(), longText + "-7");
}

struct Counts {
    std::atomic<int> alive{0};
    std::atomic<int> firstRefs{0};
};

struct Counted : RefBase {
    explicit Counted(Counts* counts) : mCounts(counts) { ++mCounts->alive; }
    ~Counted() override { --mCounts->alive; }
    void onFirstRef() override { ++mCounts->firstRefs; }
    Counts* const mCounts;
};

TEST(References, object_lives_until_its_last_strong_reference_goes) {
    Counts counts;
    const wp<Counted> weak = new Counted(&counts);
    sp<Counted> first = weak.promote();
    ASSERT_TRUE(first);
    sp<RefBase> second = first;
    first = first.get();
    EXPECT_EQ(weak.promote(), first);
    first.clear();
    EXPECT_EQ(counts.alive, 1);
    second = nullptr;
    EXPECT_EQ(counts.alive, 0);
    EXPECT_EQ(counts.firstRefs, 1);

    const wp<Counted> copy = weak;
    EXPECT_FALSE(copy.promote());
    EXPECT_FALSE(wp<Counted>().promote());
}

// While the last strong reference goes, a promotion gives the object or nothing; where there has
// been none yet, the first of two announces the object.
TEST(References, promotion_may_race_the_last_release_and_another_promotion) {
    Counts counts;
    for (int round = 1; round <= 300; ++round) {
        const wp<Counted> weak = new Counted(&counts);
        sp<Counted> strong = round % 2 == 0 ? weak.promote() : nullptr;
        std::atomic<int> waiting{2};
        const auto race = [&](sp<Counted>* released) {
            --waiting;
            while (waiting > 0) {
            }
            if (released != nullptr) released->clear();
            for (int i = 0; i < 50; ++i) {
                const sp<Counted> promoted = weak.promote();
                if (promoted && counts.alive != 1) abort();
            }
        };
        std::thread other(race, nullptr);
        race(&strong);
        other.join();
        ASSERT_EQ(counts.alive, 0);
        ASSERT_EQ(counts.firstRefs, round);
    }
}

}  // namespace
