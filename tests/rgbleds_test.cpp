// The LED service and its effect loader on a driver that answers, refuses, fails and is slow.
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <com/tarq/rgbleds/BnRgbLedsCallbacks.h>
#include <gmock/gmock.h>

#include <atomic>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

#include "rgbleds/effect_loader.h"
#include "rgbleds/rgbLedsService.h"
#include "tests/captured_log.h"
#include "tests/test_board.h"

using android::sp;
using android::String16;
using com::tarq::rgbleds::IRgbLedsService;
using com::tarq::rgbleds::rgbLedsService;
using namespace testing;

namespace {

// "setRgbEffect 1 2 3 4 5 6" -> its result, true being 1. The list are the first two numbers.
int callOn(rgbLedsService& service, const std::string& words) {
    std::istringstream in(words);
    std::string operation;
    in >> operation;
    const std::vector<int32_t> n{std::istream_iterator<int32_t>(in), {}};
    bool done = false;
    int32_t value = -1;
    const std::map<std::string, std::function<android::binder::Status()>> calls = {
            {"setRgbColor", [&] { return service.setRgbColor(n[0], n[1], &done); }},
            {"setRgbBrightness", [&] { return service.setRgbBrightness(n[0], n[1], &done); }},
            {"getRgbColor", [&] { return service.getRgbColor(n[0], &value); }},
            {"getRgbBrightness", [&] { return service.getRgbBrightness(n[0], &value); }},
            {"setLedList",
             [&] {
                 return service.setLedList({n[0], n[1]}, n[2], n[3], &done);
             }},
            {"setRgbEffect",
             [&] { return service.setRgbEffect(n[0], n[1], n[2], n[3], n[4], n[5], &value); }},
            {"stopLampEffect", [&] { return service.stopLampEffect(&value); }}};
    EXPECT_TRUE(calls.at(operation)().isOk());
    return value == -1 ? done : value;
}

struct RgbLeds : Test {
    void SetUp() override {
        if (!board().withoutFuse().empty()) GTEST_SKIP() << board().withoutFuse();
        records();
    }
    static const TestBoard& board() {
        static const TestBoard instance("<leds count='12'/>");
        return instance;
    }
    static void fault(const std::string& attribute, const std::string& kind) {
        board().command({"fault", attribute, kind});
    }
    // What the driver got since the last call, "set_color 3 ff8000;", with a "!" where it refused.
    static std::string records() {
        static int taken = 1;  // the first line tells the number of LEDs
        std::istringstream trace(readFile(board().directory() + "/run/leds.jsonl"));
        std::string records, line;
        for (int i = 0; std::getline(trace, line); ++i) {
            if (i < taken) continue;
            ++taken;
            const auto json = nlohmann::json::parse(line);
            records += (json.contains("refused") ? "!" : "") +
                       json["attribute"].get<std::string>() + " " +
                       json["text"].get<std::string>() + ";";
        }
        return std::regex_replace(records, std::regex("xml_effect_trans_"), "");
    }
    // The entries of the log since the last call, "E TEXT;", without the service's tag.
    std::string logged() {
        std::string text;
        for (const std::string& entry : log.take()) text += entry + ";";
        return std::regex_replace(text, std::regex(" rgbLedsService: "), " ");
    }
    int call(const std::string& words) { return callOn(*service, words); }
    // The log of an effect file with that content, which is loaded from outside of the board.
    std::string load(const std::string& content) {
        writeFile(effect, content);
        parseXmlFile(effect.c_str());
        return logged();
    }

    const TemporaryDirectory directory;
    const std::string effect = directory / "x.xml";
    const sp<rgbLedsService> service = new rgbLedsService;
    CapturedLog log;
};

std::string notOpened(const std::string& attribute) {
    return "E open file /sys/class/rgbled/" + attribute + " failed!\n;";
}

TEST_F(RgbLeds, operations_are_records_of_the_driver_and_lines_of_the_log) {
    const struct {
        std::string call;
        int result;
        std::string records, log;
    } kRows[] = {{"setRgbColor 3 16744448", 1, "set_color 3 ff8000;",
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
                 // What the driver refuses is no failure.
                 {"setRgbEffect -1 0 0 0 -1 -1", 1, "!standby_effect ffffffff 0 0 0 -1 ffffffff;",
                  "I setRgbEffect:id=-1,type=0,color=0,brightness=0,cont=-1,val=-1;"},
                 {"stopLampEffect", 1, "state 2;", "I stopLampEffect;"}};
    for (const auto& row : kRows) {
        EXPECT_EQ(call(row.call), row.result) << row.call;
        EXPECT_EQ(records(), row.records);
        EXPECT_EQ(logged(), row.log);
    }
    bool done = true;
    EXPECT_TRUE(service->setLedList({}, 255, 128, &done).isOk());
    EXPECT_FALSE(done);
    EXPECT_EQ(records() + logged(), "");
}

TEST_F(RgbLeds, attribute_that_fails_is_the_result_and_a_line_of_the_log) {
    const struct {
        std::string attribute, fault, call;
        int result, linesOfLog;
    } kRows[] = {{"set_color", "absent", "setRgbColor 1 2", 0, 1},
                 {"set_color", "unwritable", "setRgbColor 1 2", 0, 1},
                 {"set_brightness", "directory", "setRgbBrightness 1 2", 0, 1},
                 {"set_color", "absent", "setLedList 1 2 3 4", 1, 2},
                 {"set_brightness", "absent", "setLedList 1 2 3 4", 0, 2},
                 {"standby_effect", "absent", "setRgbEffect 1 1 1 1 1 1", 0, 1},
                 {"xml_effect_trans_state", "unwritable", "stopLampEffect", 0, 1},
                 {"get_color", "absent", "getRgbColor 1", 0, 2},
                 {"get_brightness", "unreadable", "getRgbBrightness 1", 0, 2},
                 {"get_color", "empty", "getRgbColor 1", 0, 0},
                 {"get_color", "garbage", "getRgbColor 1", 0, 0},
                 {"get_color", "huge", "getRgbColor 1", 0, 0},
                 {"set_color", "slow", "setRgbColor 1 2", 1, 0}};
    for (const auto& row : kRows) {
        fault(row.attribute, row.fault);
        EXPECT_EQ(call(row.call), row.result) << row.attribute << " " << row.fault;
        const std::vector<std::string> lines = log.take();
        const std::string line = "E rgbLedsService: " + notOpened(row.attribute).substr(2);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line.substr(0, line.size() - 1)),
                  row.linesOfLog);
        EXPECT_THAT(lines, Contains(HasSubstr(row.call.substr(0, row.call.find(' ')))));
        fault(row.attribute, "none");
    }
}

TEST_F(RgbLeds, other_operations_go_on_while_one_waits_for_the_driver) {
    board().command({"hold", "set_color"});
    std::atomic<int> result = -1;
    std::thread waiting([&] { result = call("setRgbColor 1 2"); });
    EXPECT_EQ(call("setRgbBrightness 1 3"), 1);
    EXPECT_EQ(call("setRgbEffect 1 0 0 0 0 1"), 1);
    EXPECT_EQ(result, -1);
    board().command({"release", "set_color"});
    waiting.join();
    EXPECT_EQ(result, 1);
    EXPECT_THAT(records(), EndsWith(";set_color 1 2;"));
}

const std::string kRoot = "<effect loop='1' interval='20' duration='3000'>";
const std::string kBegin = "state 1;vals loop 1;vals interval 20;vals duration 3000;";

TEST_F(RgbLeds, effect_is_transferred_as_it_stands_in_the_file) {
    EXPECT_EQ(load(kRoot + "<led id='0'><eff s='5'>ff0000</eff><eff s='5'>00ff00</eff></led>"
                           "<led id='1'><eff id='7'/><eff s='9'>0000ff</eff></led></effect>"),
              "I eff id =7 \n;");
    EXPECT_EQ(records(), kBegin + "data 0 ff0000 5;data 0 00ff00 5;data 1 0000ff 9;state 0;");
    // Blanks and entities; other elements; 10 MB that say nothing; LEDs without steps.
    EXPECT_EQ(load("<?xml version='1.0'?><!-- c --><x interval='&#50;0' loop='1' duration='3000'>"
                   "<!--" +
                   std::string(10'000'000, 'x') +
                   "-->"
                   "<led id='1'> <eff s='&#x35;'> f&amp;\n </eff><other s='1'>1</other></led>"
                   "<eff s='1'>1</eff><led/><led id='2'><!-- <eff s='1'>1</eff> --></led>"
                   "<led id='3'>\n<eff/><eff s='1'></eff></led></x>"),
              "I eff id =(null) \n;I eff id =(null) \n;");
    EXPECT_EQ(records(), kBegin + "!data 1  f&\n  5;state 0;");
}

TEST_F(RgbLeds, effect_that_is_incomplete_is_transferred_without_what_is_broken) {
    EXPECT_EQ(load("<e\n duration='1'><led><eff s='1'>1</eff></led>\n<led id='1'><eff>1</eff>"
                   "<eff s='2'>2</eff></led></e>"),
              "E " + effect + ":1: attribute loop of <e> is missing;" + "E " + effect +
                      ":1: attribute interval of <e> is missing;" + "E " + effect +
                      ":2: attribute id of <led> is missing;" + "E " + effect +
                      ":3: attribute s of <eff> is missing;");
    // This driver refuses the end without an interval.
    EXPECT_EQ(records(), "state 1;vals duration 1;data 1 2 2;!state 0;");
    fault("xml_effect_trans_vals", "absent");
    const std::string lost = notOpened("xml_effect_trans_vals");
    EXPECT_EQ(load(kRoot + "<led id='1'><eff s='2'>3</eff></led></effect>"), lost + lost + lost);
    EXPECT_EQ(records(), "state 1;data 1 3 2;!state 0;");
    fault("xml_effect_trans_vals", "none");
}

TEST_F(RgbLeds, effect_that_cannot_be_read_sends_nothing) {
    const std::string error = "E Error opening xml file .\n;";
    std::string deep;
    for (int i = 0; i < 100'000; ++i) deep += "<a>";
    for (const std::string& content :
         {std::string(), std::string("<!-- no element -->"), std::string("\xff\xfe<"), deep,
          std::string(10'000'000, 'x'), kRoot, kRoot + "</effect><led"}) {
        EXPECT_EQ(load(content), error) << content.substr(0, 99);
    }
    for (const std::string& path : {std::string("/nowhere"), std::string(), std::string("x.xml"),
                                    std::string("/vendor"), std::string(900, 'x')}) {
        int32_t result = -1;
        EXPECT_TRUE(service->loadXmlFile(String16(path.c_str()), &result).isOk());
        EXPECT_EQ(result, 0);
        EXPECT_EQ(logged(), error + "I loadXmlFile:path=" + path + ";");
    }
    EXPECT_EQ(records(), "");
}

struct Callback : com::tarq::rgbleds::BnRgbLedsCallbacks {
    android::binder::Status onValueChange(int32_t value) override {
        const std::lock_guard<std::mutex> guard(lock);
        values.push_back(value);
        return android::binder::Status::ok();
    }
    std::vector<int32_t> taken() {
        const std::lock_guard<std::mutex> guard(lock);
        return std::exchange(values, {});
    }
    std::mutex lock;
    std::vector<int32_t> values;
};

TEST_F(RgbLeds, last_registered_callback_alone_is_told_which_operation_was_carried_out) {
    const sp<Callback> first = new Callback, second = new Callback;
    const std::string registered = "E entery registerRgbLedsCallbacks  RgbLedsService : 191;";
    const std::string exists = "E registerRgbLedsCallbacks  already exist : 189;";
    service->registerRgbLedsCallbacks(first);
    EXPECT_EQ(logged(), registered);
    service->registerRgbLedsCallbacks(second);
    EXPECT_EQ(logged(), exists + registered);
    for (const std::string row : {"setRgbColor 1 2|63", "setRgbBrightness 1 2|81",
                                  "getRgbColor 1|100", "getRgbBrightness 1|120"}) {
        call(row.substr(0, row.find('|')));
        EXPECT_THAT(logged(),
                    HasSubstr("E entery " + row.substr(0, row.find(' ')) +
                              "  RgbLedsService : " + row.substr(row.find('|') + 1) + ";"));
    }
    for (const char* silent : {"setLedList 1 2 3 4", "setRgbEffect 1 0 0 0 0 1", "stopLampEffect"})
        call(silent);
    EXPECT_THAT(second->taken(), ElementsAre(64, 82, 101, 124));
    logged();
    service->registerRgbLedsCallbacks(nullptr);
    EXPECT_EQ(logged(), exists + registered);
    call("setRgbColor 1 2");
    EXPECT_THAT(logged(), HasSubstr("RgbLedsService : 66 +"));
    EXPECT_THAT(first->taken(), IsEmpty());
    EXPECT_THAT(second->taken(), IsEmpty());
}

TEST_F(RgbLeds, calls_at_the_same_time_lose_nothing) {
    writeFile(effect, kRoot + "</effect>");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 10; ++n) {
                parseXmlFile(effect.c_str());
                service->registerRgbLedsCallbacks(new Callback);
                call("setRgbColor 1 2");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    const std::string all = records();
    for (const char* record : {"state 1;", "vals loop 1;", "vals interval 20;", "state 0;",
                               "vals duration 3000;", "set_color 1 2;"}) {
        size_t count = 0;
        for (size_t at = 0; (at = all.find(record, at)) != std::string::npos; ++at) ++count;
        EXPECT_EQ(count, 40u) << record;
    }
}

sp<IRgbLedsService> leds() {
    return android::interface_cast<IRgbLedsService>(
            android::defaultServiceManager()->getService(IRgbLedsService::descriptor));
}

TEST_F(RgbLeds, callback_of_a_stopped_or_dead_process_disturbs_nobody) {
    const std::string file = directory / "log";
    const ChildProcess daemon({TARQD}, {"TARQ_LOG=" + file});
    ASSERT_TRUE(eventually([&] {  // its last module has started
        return readFile(file).find("ShellService: instantiate.....\n") != std::string::npos;
    }));
    const pid_t peer = fork();  // before this process itself is a client
    if (peer == 0) {
        leds()->registerRgbLedsCallbacks(new Callback);
        raise(SIGSTOP);
    }
    EXPECT_EQ(waitpid(peer, nullptr, WUNTRACED), peer);
    bool done = false;
    for (int i = 0; i < 400; ++i) {  // more than its socket takes
        ASSERT_TRUE(leds()->setRgbBrightness(1, 2, &done).isOk() && done) << i;
    }
    kill(peer, SIGKILL);
    EXPECT_EQ(waitpid(peer, nullptr, 0), peer);
    EXPECT_TRUE(leds()->setRgbColor(1, 2, &done).isOk() && done);
    const sp<Callback> next = new Callback;
    android::ProcessState::self()->startThreadPool();
    EXPECT_TRUE(leds()->registerRgbLedsCallbacks(next).isOk());
    EXPECT_EQ(leds()->registerRgbLedsCallbacks(nullptr).exceptionCode(),
              android::binder::Status::EX_NULL_POINTER);
    EXPECT_TRUE(leds()->setRgbColor(1, 2, &done).isOk() && done);
    std::vector<int32_t> values;
    EXPECT_TRUE(eventually([&] { return !(values = next->taken()).empty(); }));
    EXPECT_THAT(values, ElementsAre(64));
}

}  // namespace
