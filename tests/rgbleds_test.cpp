// The LED service and its effect loader on a driver that answers, refuses, fails and is slow.
#include <com/tarq/rgbleds/BnRgbLedsCallbacks.h>
#include <gmock/gmock.h>

#include <future>
#include <regex>
#include <thread>

#include "rgbleds/rgbLedsService.h"
#include "tests/captured_log.h"
#include "tests/test_board.h"

using android::sp;
using android::String16;
using android::binder::Status;
using com::tarq::rgbleds::rgbLedsService;
using namespace testing;

namespace {

struct RgbLeds : Test {
    void SetUp() override {
        if (!board().withoutFuse().empty()) GTEST_SKIP() << board().withoutFuse();
        records();
    }
    static const TestBoard& board() {
        static const TestBoard instance("<leds count='12'/>");
        return instance;
    }
    // What the driver got since the last call: "set_color 3 ff8000;state 3 (refused);".
    static std::string records() {
        static size_t taken = 0;
        const std::string trace = board().ask({"trace"});
        const std::string records = trace.substr(std::exchange(taken, trace.size()));
        return std::regex_replace(
                std::regex_replace(records, std::regex("xml_effect_trans_|: [^\n]*(?=\\)\n)"), ""),
                std::regex("\n"), ";");
    }
    // The entries of the log since the last call, "E TEXT;", without the service's tag.
    std::string logged() {
        std::string text;
        for (const std::string& entry : log.take()) text += entry + ";";
        return std::regex_replace(text, std::regex(" rgbLedsService: "), " ");
    }
    // "setRgbEffect 1 2 3 4 5 6" -> its result, true being 1. A list ends before the last two.
    int call(const std::string& words) {
        std::istringstream in(words);
        std::string name;
        in >> name;
        const String16 rest(words.substr(std::min(words.size(), name.size() + 1)).c_str());
        const std::vector<int32_t> n{std::istream_iterator<int32_t>(in), {}};
        bool done = false;
        int32_t value = -1;
        Status status = Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT);
        if (name == "setRgbColor") status = service->setRgbColor(n[0], n[1], &done);
        if (name == "setRgbBrightness") status = service->setRgbBrightness(n[0], n[1], &done);
        if (name == "getRgbColor") status = service->getRgbColor(n[0], &value);
        if (name == "getRgbBrightness") status = service->getRgbBrightness(n[0], &value);
        if (name == "setLedList")
            status = service->setLedList({n.begin(), n.end() - 2}, *(n.end() - 2), n.back(), &done);
        if (name == "setRgbEffect")
            status = service->setRgbEffect(n[0], n[1], n[2], n[3], n[4], n[5], &value);
        if (name == "loadXmlFile") status = service->loadXmlFile(rest, &value);
        if (name == "stopLampEffect") status = service->stopLampEffect(&value);
        EXPECT_TRUE(status.isOk()) << words;
        return value == -1 ? done : value;
    }

    const TemporaryDirectory directory;
    const std::string effect = directory / "x.xml";
    const sp<rgbLedsService> service = new rgbLedsService;
    CapturedLog log;
};

const std::string kRoot = "<effect loop='1' interval='20' duration='3000'>";
const std::string kBegin = "state 1;vals loop 1;vals interval 20;vals duration 3000;";

TEST_F(RgbLeds, operations_are_records_of_the_driver_and_lines_of_the_log) {
    const struct {
        std::string call;
        int result;
        std::string records, log;
    } kRows[] = {
            {"setRgbColor 3 16744448", 1, "set_color 3 ff8000;",
             "I setRgbColor:id=3,reg=16744448;"
             "E entery setRgbColor  RgbLedsService : 66 +++++++++++++++++;"},
            {"setRgbBrightness 10 128", 1, "set_brightness a 80;",
             "I setRgbBrightness:id=10,reg=128;"
             "E entery setRgbBrightness  RgbLedsService : 84 f+++++++++++++++++;"},
            {"getRgbColor 3", 0xff8000, "get_color 3;",
             "E entery getRgbColor  RgbLedsService : 103 +++++++++++++;"
             "I getRgbColor:id=3,reg=0xff8000;"},
            {"getRgbBrightness 10", 128, "get_brightness a;",
             "E entery getRgbBrightness  RgbLedsService : 123  +++++++;"
             "I getRgbBrightness:id=10,reg=0x80;"},
            {"setLedList 4 5 255 0", 1,
             "set_color 4 ff;set_brightness 4 0;set_color 5 ff;set_brightness 5 0;",
             "I setLedList:id=4, color=255, brightness=0;"
             "I setLedList:id=5, color=255, brightness=0;"},
            {"setRgbEffect 1 2 16711680 255 10 16", 1, "standby_effect 1 2 ff0000 ff 10 10;",
             "I setRgbEffect:id=1,type=2,color=16711680,brightness=255,cont=10,val=16;"},
            {"setLedList 255 128", 0, "", ""},
            // What the driver refuses is no failure.
            {"setRgbEffect -1 0 0 0 -1 -1", 1,
             "standby_effect ffffffff 0 0 0 -1 ffffffff (refused);",
             "I setRgbEffect:id=-1,type=0,color=0,brightness=0,cont=-1,val=-1;"},
            {"stopLampEffect", 1, "state 2;", "I stopLampEffect;"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(call(row.call), row.result) << row.call;
        EXPECT_EQ(records(), row.records);
        EXPECT_EQ(logged(), row.log);
    }
}

TEST_F(RgbLeds, attribute_that_fails_is_the_result_and_a_line_of_the_log) {
    const struct {
        std::string attribute, fault, call;
        int result;
        std::string log;  // "!" that it cannot be opened, "." any other entry
    } kRows[] = {
            {"set_color", "unwritable", "setRgbColor 1 2", 0, "!.."},
            {"set_brightness", "directory", "setRgbBrightness 1 2", 0, "!.."},
            {"set_color", "absent", "setLedList 1 2 3 4", 1, "!.!."},
            {"set_brightness", "absent", "setLedList 1 2 3 4", 0, "!.!."},
            {"standby_effect", "absent", "setRgbEffect 1 1 1 1 1 1", 0, "!."},
            {"xml_effect_trans_state", "unreadable", "stopLampEffect", 0, "!."},
            {"xml_effect_trans_state", "absent", "loadXmlFile " + effect, 0, "!!."},
            {"xml_effect_trans_vals", "absent", "loadXmlFile " + effect, 0, "!!!."},
            {"xml_effect_trans_data", "absent", "loadXmlFile " + effect, 0, "!!."},
            {"get_color", "absent", "getRgbColor 1", 0, "!!.."},
            {"get_brightness", "unreadable", "getRgbBrightness 1", 0, "!!.."},
            {"get_color", "empty", "getRgbColor 1", 0, ".."},
            {"get_color", "garbage", "getRgbColor 1", 0, ".."},
            {"get_color", "huge", "getRgbColor 1", 0, ".."},
    };
    writeFile(effect, kRoot + "<led id='1'><eff s='2'>3</eff><eff s='2'>4</eff></led></effect>");
    for (const auto& row : kRows) {
        board().command({"fault", row.attribute, row.fault});
        EXPECT_EQ(call(row.call), row.result) << row.attribute << " " << row.fault;
        const std::regex missing("E open file /sys/class/rgbled/" + row.attribute + " failed!\n;");
        const std::regex other("[EI] [^;]*;");
        EXPECT_EQ(std::regex_replace(std::regex_replace(logged(), missing, "!"), other, "."),
                  row.log);
        board().command({"fault", row.attribute, "none"});
    }
}

TEST_F(RgbLeds, effect_is_transferred_as_it_stands_in_the_file_without_what_is_broken) {
    const std::string at = "E " + effect + ":", error = "E Error opening xml file .\n;";
    std::string large, deep;
    large.resize(10'000'000, 'x');
    for (int i = 0; i < 100'000; ++i) deep += "<a>";
    const struct {
        std::string file, log, records;
    } kRows[] = {
            {kRoot + "<led id='0'><eff s='5'>ff0000</eff><eff s='5'>00ff00</eff></led>"
                     "<led id='1'><eff id='7'/><eff s='9'>0000ff</eff></led></effect>",
             "I eff id =7 \n;",
             kBegin + "data 0 ff0000 5;data 0 00ff00 5;data 1 0000ff 9;state 0;"},
            // Blanks and entities; other elements; LEDs without steps.
            {"<?xml version='1.0'?><!--" + large +
                     "--><x interval='&#50;0' loop='1' duration='3000'>"
                     "<led id='1'> <eff s='&#x35;'> f&amp;\n </eff><other s='1'>1</other></led>"
                     "<o><eff s='1'>1</eff></o><led/><led id='2'><!-- <eff s='1'>1</eff> --></led>"
                     "<led id='3'>\n<eff/><eff s='1'></eff></led></x>",
             "I eff id =(null) \n;I eff id =(null) \n;",
             kBegin + "data 1  f&\\n  5 (refused);state 0;"},
            {"<e\n duration='1'><led><eff s='1'>1</eff></led>\n<led id='1'><eff>1</eff>"
             "<eff s='2'>2</eff></led></e>",
             at + "1: attribute loop of <e> is missing;" + at +
                     "1: attribute interval of <e> is missing;" + at +
                     "2: attribute id of <led> is missing;" + at +
                     "3: attribute s of <eff> is missing;",
             "state 1;vals duration 1;data 1 2 2;state 0 (refused);"},
            {"", error, ""},
            {"<!-- no element -->", error, ""},
            {deep, error, ""},
            {large, error, ""},
            {kRoot + "</effect><led", error, ""},
    };
    for (const auto& row : kRows) {
        writeFile(effect, row.file);
        call("loadXmlFile " + effect);
        EXPECT_EQ(logged(), row.log + "I loadXmlFile:path=" + effect + ";");
        EXPECT_EQ(records(), row.records) << row.file.substr(0, 99);
    }
    for (const std::string path : {"/nowhere", "", "x.xml", "/vendor"}) {
        EXPECT_EQ(call("loadXmlFile " + path), 0);
        EXPECT_EQ(logged() + records(), error + "I loadXmlFile:path=" + path + ";");
    }
}

struct Callback : com::tarq::rgbleds::BnRgbLedsCallbacks {
    Status onValueChange(int32_t value) override {
        const std::lock_guard<std::mutex> guard(lock);
        values.push_back(value);
        return Status::fromStatusT(android::DEAD_OBJECT);  // nobody minds
    }
    std::mutex lock;
    std::vector<int32_t> values;
};

TEST_F(RgbLeds, last_registered_callback_alone_is_told_which_operation_was_carried_out) {
    const sp<Callback> first = new Callback, second = new Callback;
    const std::string registered = "E entery registerRgbLedsCallbacks  RgbLedsService : 191;";
    const std::string exists = "E registerRgbLedsCallbacks  already exist : 189;";
    service->registerRgbLedsCallbacks(first);
    service->registerRgbLedsCallbacks(second);
    EXPECT_EQ(logged(), registered + exists + registered);
    for (const char* line :
         {"setRgbColor 1 2", "setRgbBrightness 1 2", "getRgbColor 1", "getRgbBrightness 1",
          "setLedList 1 2 3 4", "setRgbEffect 1 0 0 0 0 1", "stopLampEffect"}) {
        call(line);
    }
    EXPECT_EQ(std::regex_replace(logged(), std::regex("I [^;]*;|  RgbLedsService"), ""),
              "E entery setRgbColor : 63;E entery setRgbBrightness : 81;"
              "E entery getRgbColor : 100;E entery getRgbBrightness : 120;");
    service->registerRgbLedsCallbacks(nullptr);
    EXPECT_EQ(logged(), exists + registered);
    call("setRgbColor 1 2");
    EXPECT_THAT(logged(), HasSubstr(" : 66 +"));
    // The log names the next one before it can be told of anything.
    tarq::host::setLogSink([&, count = first->getStrongCount()](auto&&...) {
        EXPECT_EQ(first->getStrongCount(), count + 1);  // the argument
    });
    service->registerRgbLedsCallbacks(first);
    EXPECT_THAT(first->values, IsEmpty());
    EXPECT_THAT(second->values, ElementsAre(64, 82, 101, 124));
}

TEST_F(RgbLeds, calls_at_the_same_time_neither_lose_a_record_nor_wait_for_each_other) {
    board().command({"hold", "set_color"});
    auto held = std::async(std::launch::async, [&] { return call("setRgbColor 9 9"); });
    writeFile(effect, kRoot + "</effect>");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 10; ++n) {
                call("loadXmlFile " + effect);
                service->registerRgbLedsCallbacks(new Callback);
                call("setRgbBrightness 1 2");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(held.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    std::istringstream all(std::regex_replace(records(), std::regex(" \\(refused\\)"), ""));
    std::map<std::string, int> counts;
    for (std::string record; std::getline(all, record, ';');) ++counts[record];
    EXPECT_THAT(counts, AllOf(SizeIs(6), Each(Pair(_, 40))));
    board().command({"release", "set_color"});
    EXPECT_EQ(held.get(), 1);
    EXPECT_EQ(records(), "set_color 9 9;");
}

}  // namespace
