
#include <gtest/gtest.h>

#include <sstream>

#include "host/board/leds/led_driver.h"

namespace {

using tarq::board::LedDriver;

// At that time the writes, "ATTRIBUTE RECORD; …" with a "!" before what is to be refused, and the
// colours of the three LEDs afterwards.
struct Row {
    int64_t now;
    const char* writes;
    const char* shown;
};

std::string read(const LedDriver& driver, const std::string& attribute) {
    std::string text;
    return driver.read(attribute, &text) ? text : "nothing";
}

void play(LedDriver& driver, const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        std::istringstream writes(row.writes);
        for (std::string write; std::getline(writes >> std::ws, write, ';');) {
            const bool isTaken = write[0] != '!';
            const size_t blank = write.find(' ');
            std::string attribute = write.substr(isTaken ? 0 : 1, blank - (isTaken ? 0 : 1));
            if (attribute.find('_') == std::string::npos)
                attribute = "xml_effect_trans_" + attribute;
            const std::string why = driver.write(attribute, write.substr(blank + 1), row.now);
            EXPECT_EQ(why.empty(), isTaken) << write << ": " << why;
        }
        std::ostringstream shown;
        for (const uint32_t colour : driver.shown(row.now)) shown << ' ' << std::hex << colour;
        EXPECT_EQ(shown.str().substr(1), row.shown) << row.writes << " at " << row.now;
    }
}

TEST(LedDriver, set_values_are_shown_and_read_back) {
    LedDriver driver(3);
    play(driver, {{0, "set_color 2 FF8000", "0 0 ff8000"}});
    EXPECT_EQ(read(driver, "get_color"), "0\n");
    play(driver, {{0, "get_color 2; set_brightness  2  80\n; get_brightness 02", "0 0 804000"}});
    EXPECT_EQ(read(driver, "get_color"), "ff8000\n");
    EXPECT_EQ(read(driver, "get_brightness"), "80\n");
    EXPECT_EQ(read(driver, "set_color"), "nothing");
}

TEST(LedDriver, record_that_makes_no_sense_is_refused_and_changes_nothing) {
    LedDriver driver(3);
    const char kNever[] =
            "!set_color ; !set_color 1; !set_color 3 1; !set_color 1 1000000; !set_color 1 0xff;"
            "!set_color -1 ff; !set_color 1 ff 0; !set_color 1 red; !set_color 1 10000000000000001;"
            "!set_brightness 1 100; !get_color 3; !get_brightness 1 1; !get_colour 1; !state 3;"
            "!state on; !standby_effect 1 4 ff ff 0 1; !standby_effect 1 1 ff ff 0;"
            "!standby_effect 1 1 ff ff 0 0; !standby_effect 1 1 ff ff a 1; !vals loop 2;"
            "!vals interval 0; !vals interval 10001; !vals duration 3600001; !vals interval 1f;"
            "!vals colour 1; !data 1 ff; !data 1 ff 0; !data 1 ff 100001; !data 3 ff 1; !state 0";
    play(driver, {{0, "set_color 1 ff8000; get_color 1", "0 ff8000 0"},
                  {0, kNever, "0 ff8000 0"},
                  {0, "!vals loop 1; !data 0 ff 5", "0 ff8000 0"},  // without a transfer
                  {0, "state 1; vals loop 1; vals interval 10000; data 0 ff 100000", "0 ff8000 0"},
                  {0, kNever, "0 ff8000 0"},
                  {0, "vals duration 3600000; state 0; !vals loop 1; !state 0", "ff ff8000 0"}});
    EXPECT_EQ(read(driver, "get_color"), "ff8000\n");
}

TEST(LedDriver, refusal_names_the_first_thing_that_is_wrong) {
    LedDriver driver(12);
    const std::tuple<const char*, const char*, const char*> kRows[] = {
            {"xml_effect_trans_vals", "loop 1", "no transfer has begun"},
            {"xml_effect_trans_state", "1", ""},
            {"set_color", "c 1", "LED 12 (hexadecimal c) is not within 0 to 11"},
            {"set_color", "ffffffffffffff red", "LED \"ffffffffffffff\" is no hexadecimal number"},
            {"set_color", "1", "the colour is missing"},
            {"set_color", "1 1000000", "\"1000000\" is no colour RRGGBB"},
            {"set_brightness", "3 12c", "brightness 300 (hexadecimal 12c) is not within 0 to 255"},
            {"get_color", "1 2", "\"2\" is one word too many"},
            {"standby_effect", "1 9 f f 0 1", "type 9 is not within 0 to 3"},
            {"standby_effect", "1 1 f f - 1", "cont \"-\" is no decimal number"},
            {"standby_effect", "1 1 f f 0 0", "val 0 is not within 1 to 4294967295"},
            {"xml_effect_trans_data", "1 f 1f", "s \"1f\" is no decimal number"},
            {"xml_effect_trans_vals", "colour 1", "\"colour\" is none of loop, interval, duration"},
            {"xml_effect_trans_vals", "interval 0", "interval 0 is not within 1 to 10000"},
            {"xml_effect_trans_vals", "loop 1", ""},
            {"xml_effect_trans_state", "0", "the effect has no duration, interval"},
            {"colour", "", "there is no such attribute"}};
    for (const auto& [attribute, record, why] : kRows)
        EXPECT_EQ(driver.write(attribute, record, 0), why) << record;
}

// Its LED 0 has steps of 30 ms in all, its LED 2 of 300 ms.
const std::string kEffect =
        "state 1; vals interval 10; vals duration 9; vals duration 100; data 0 aa 1;"
        "data 2 dd 30; data 0 bb 2; vals loop ";

TEST(LedDriver, effect_repeats_the_steps_of_each_led_until_its_duration_is_over) {
    const std::string again = kEffect + "1", once = kEffect + "0";
    for (const bool loops : {true, false}) {
        LedDriver driver(3);
        const char* const later = loops ? "bb 2 dd" : "aa 2 dd";
        play(driver,
             {{5, "set_color 0 1; set_color 1 2", "1 2 0"},
              {6, loops ? again.c_str() : once.c_str(), "1 2 0"},
              {1000, "state 0", "aa 2 dd"},
              {1009, "", "aa 2 dd"},
              {1010, "", "bb 2 dd"},
              {1029, "", "bb 2 dd"},
              {1030, "", "aa 2 dd"},
              {1099, "", "aa 2 dd"},
              {1110, "", later},
              {1190, "", "aa 2 dd"},
              {91'010, "", later},
              {91'010, once.c_str(), later},  // goes on while the next is transferred
              {91'010, "state 1; !state 0; set_brightness 2 0", loops ? "bb 2 0" : "aa 2 0"},
              {91'010, "state 2", "1 2 0"}});
    }
}

TEST(LedDriver, stand_by_effect_is_shown_by_type_until_its_periods_are_over) {
    const std::pair<const char*, std::vector<Row>> kEffects[] = {
            {"1 1 ff00 80 2 a", {{0, "", "0 8000 0"}, {1999, "", "0 8000 0"}, {2000, "", "0 3 0"}}},
            {"1 2 ff00 ff 0 2", {{99, "", "0 ff00 0"}, {100, "", "0 0 0"}, {9000, "", "0 ff00 0"}}},
            {"1 3 ff00 ff -1 2", {{0, "", "0 0 0"}, {50, "", "0 7f00 0"}, {950, "", "0 7f00 0"}}},
            {"1 3 ff00 80 1 2", {{100, "", "0 8000 0"}, {200, "", "0 3 0"}}},
            {"1 1 ff00 ff 2147483647 ffffffff", {{int64_t{1} << 61, "", "0 ff00 0"}}},
            {"1 0 ff00 ff 0 1", {{0, "", "0 3 0"}}}};
    for (const auto& [record, rows] : kEffects) {
        LedDriver driver(3);
        play(driver, {{-7, "set_color 1 3; standby_effect 1 1 1 1 0 1", "0 0 0"}});
        EXPECT_EQ(driver.write("standby_effect", record, 0), "");
        play(driver, rows);
        const std::string named = kEffect + "1; data 1 cc 1; state 0";
        play(driver, {{300, named.c_str(), "aa cc dd"}});
    }
}

}  // namespace
