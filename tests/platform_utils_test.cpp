#include <gtest/gtest.h>
#include <utils/RefBase.h>
#include <utils/String16.h>
#include <utils/String8.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using android::RefBase;
using android::sp;
using android::String16;
using android::String8;
using android::wp;

namespace {

TEST(Strings, utf8_becomes_utf16_by_its_lead_bytes_alone) {
    const struct {
        std::string utf8;
        std::u16string utf16;
    } cases[] = {
            {"", u""},
            {"aä€😀", u"aä€😀"},
            {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
            {"\x85", u"\x85"},                       // a lone continuation byte is itself
            {"\xC0\x80", std::u16string(1, u'\0')},  // overlong
            {"\xED\xA0\x80", std::u16string(1, 0xD800)},
            {"\xE2\x41\x42", std::u16string(1, 0x2042)},  // bits are masked, not checked
            {"text\xE2\x82", u""},                        // past the end: nothing is left
            {"text\xF0\x9F\x98", u""},
            {"text\xC3", u""},
    };
    for (const auto& [utf8, utf16] : cases) {
        const String16 converted(utf8.data(), utf8.size());
        EXPECT_EQ(std::u16string(converted.string(), converted.size()), utf16) << utf8;
        EXPECT_EQ(String16(String8(utf8.data(), utf8.size())), converted) << utf8;
    }
}

TEST(Strings, utf16_becomes_utf8_without_lone_surrogates) {
    const struct {
        std::u16string utf16;
        std::string utf8;
    } cases[] = {
            {u"", ""},
            {u"aä€😀", "aä€😀"},
            {std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
            {{u'a', 0xD83D, u'b'}, "ab"},
            {{u'a', 0xDE00, u'b'}, "ab"},
            {{0xDE00, 0xD83D}, ""},
            {{0xD83D, 0xD83D, 0xDE00}, "😀"},
            {{u'a', 0xD83D}, "a"},
    };
    for (const auto& [utf16, utf8] : cases) {
        const String8 converted(String16(utf16.data(), utf16.size()));
        EXPECT_EQ(std::string(converted.string(), converted.size()), utf8);
    }
}

TEST(Strings, comparing_8_bit_text_ends_at_the_first_nul) {
    EXPECT_EQ(String8("a\0b", 3), String8("a"));
    EXPECT_NE(String16(u"a\0b", 3), String16(u"a"));
    EXPECT_STREQ(String8::format("%s-%d", std::string(300, 'x').c_str(), 7).string(),
                 (std::string(300, 'x') + "-7").c_str());
}

struct Counts {
    std::atomic<int> alive{0};
    std::atomic<int> firstRefs{0};
};

class Counted : public RefBase {
  public:
    explicit Counted(Counts* counts) : mCounts(counts) { ++mCounts->alive; }
    bool isAlive() const { return mCounts->alive == 1; }

  protected:
    ~Counted() override { --mCounts->alive; }
    void onFirstRef() override { ++mCounts->firstRefs; }

  private:
    Counts* const mCounts;
};

TEST(References, object_lives_until_its_last_strong_reference_goes) {
    Counts counts;
    sp<Counted> first = new Counted(&counts);
    EXPECT_EQ(counts.firstRefs, 1);
    sp<RefBase> second = first;
    first = first.get();
    EXPECT_EQ(counts.firstRefs, 1);
    first.clear();
    EXPECT_EQ(counts.alive, 1);
    second = nullptr;
    EXPECT_EQ(counts.alive, 0);
}

TEST(References, promotion_works_before_the_first_strong_reference_and_never_after_the_last) {
    Counts counts;
    const wp<Counted> weak = new Counted(&counts);
    sp<Counted> strong = weak.promote();
    ASSERT_TRUE(strong);
    EXPECT_EQ(counts.firstRefs, 1);
    EXPECT_EQ(weak.promote(), strong);

    const wp<Counted> copy = weak;
    strong.clear();
    EXPECT_EQ(counts.alive, 0);
    EXPECT_FALSE(weak.promote());
    EXPECT_FALSE(copy.promote());
    EXPECT_EQ(copy, weak);
    EXPECT_FALSE(wp<Counted>().promote());
}

TEST(References, promotion_that_races_the_last_release_gives_the_object_or_nothing) {
    Counts counts;
    for (int round = 0; round < 300; ++round) {
        sp<Counted> strong = new Counted(&counts);
        std::atomic<bool> started{false};
        std::vector<std::thread> promoters;
        for (int t = 0; t < 3; ++t) {
            promoters.emplace_back([&started, weak = wp<Counted>(strong)] {
                while (!started) {
                }
                for (int i = 0; i < 100; ++i) {
                    const sp<Counted> promoted = weak.promote();
                    if (promoted && !promoted->isAlive()) abort();
                }
            });
        }
        started = true;
        strong.clear();
        for (std::thread& promoter : promoters) promoter.join();
        ASSERT_EQ(counts.alive, 0);
    }
}

TEST(References, first_strong_references_that_race_announce_themselves_once) {
    Counts counts;
    for (int round = 1; round <= 300; ++round) {
        const wp<Counted> weak = new Counted(&counts);
        std::atomic<int> waiting{2};
        const auto promoteOnce = [&] {
            --waiting;
            while (waiting > 0) {
            }
            const sp<Counted> promoted = weak.promote();
        };
        std::thread other(promoteOnce);
        promoteOnce();
        other.join();
        ASSERT_EQ(counts.alive, 0);
        ASSERT_EQ(counts.firstRefs, round);
    }
}

}  // namespace
