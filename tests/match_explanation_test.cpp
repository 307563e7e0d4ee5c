// Holds what the tool knows of the daemon's log against the daemon: its own code is asked in this
// process, on a virtual board, and what it logged is read.
#include <gmock/gmock.h>
#include <string.h>
#include <utils/String16.h>

#include <set>

#include "hardware_info/peripheral_matching.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/timestamp_check.h"
#include "tests/captured_log.h"
#include "tests/test_board.h"
#include "tools/tarqctl/log/log_line.h"
#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/match/match_log.h"

using namespace tarq::tools;
using namespace testing;
using Items = Words;
using Lines = Words;

namespace {

// What is set, or made go wrong: a property, a part of the table, a path or name of the board's
// hardware, or one of "overlay" and "time".
using Board = std::vector<std::pair<std::string, std::string>>;

const std::string kTimes = "/vendor/etc/hardware_timestamp.txt";
const std::string kSkip = "ro.vendor.ota_skip_hw_info";
const std::string kCheckTime = "ro.vendor.ota_enter_timestamp_check";
// They are there when a case sets them.
const std::set<std::string> kOptional = {"touch_panel", "display_reg", "hwid_flag",
                                         "dsi_id1",     "dsi_id2",     "camera0"};

MatchLog logOf(const Lines& lines) {
    MatchLog log;
    for (const std::string& line : lines) log.add(line);
    return log;
}

Items joined(const std::vector<Items>& lists) {
    Items all;
    for (const Items& list : lists) all.insert(all.end(), list.begin(), list.end());
    return all;
}

// The texts, those of mistakes with a "!" in front.
Items textsOf(const std::vector<Doubt>& doubts) {
    Items texts;
    for (const Doubt& doubt : doubts) texts.push_back((doubt.isMistake ? "!" : "") + doubt.text);
    return texts;
}

struct MatchExplanation : Test {
    static const TestBoard& board() {
        static const TestBoard instance(
                "<touch_panel type='' id=''/><display reg='' hwid_flag='' id1_gpio='42' "
                "id2_gpio='43'/><gpio number='42'/><gpio number='43'/>"
                "<camera node='0' sensor=''/>");
        return instance;
    }

    void SetUp() override {
        if (!board().withoutFuse().empty()) GTEST_SKIP() << board().withoutFuse();
        for (const std::string& name : kOptional) board().command({"fault", name, "absent"});
    }
    void setUp(const Board& changes) {
        for (const std::string& name : std::exchange(mHardware, {}))
            board().command({"fault", name, kOptional.count(name) != 0 ? "absent" : "none"});
        std::filesystem::remove_all(board().properties());
        std::filesystem::remove(board().device(kTimes));
        for (PeripheralEntry& row : peripheralTable) strcpy(row.value, "null");
        boardIdentity = {};
        _setOtaTimestamp(0);
        for (const auto& [name, value] : changes) set(name, value);
    }
    void set(const std::string& name, const std::string& value) {
        if (name.rfind("ro.", 0) == 0) {
            writeFile(board().properties() + "/" + name, value);
        } else if (name == "overlay") {
            boardIdentity.overlayId = std::stoi(value);
        } else if (name == "time") {
            _setOtaTimestamp(std::stoll(value));
        } else if (name[0] == '/' || kOptional.count(name) != 0 || name == "gpio42") {
            board().command({"set", name, value});
            if (kOptional.count(name) == 0) return;
            board().command({"fault", name, "none"});
            mHardware.push_back(name);
        }
        for (PeripheralEntry& row : peripheralTable) {
            if (name == row.name) strcpy(row.value, value.c_str());
        }
    }

    // Asks the daemon's code; its log as it would be saved.
    bool ask(const Items& items, Lines* log) {
        std::vector<android::String16> list;
        for (const std::string& item : items) list.emplace_back(item.data(), item.size());
        const bool answer = _isMatchHardwareInfo(list);
        for (const std::string& entry : captured.take()) {
            const size_t text = entry.find(": ") + 2;
            for (const FactText& row : factTexts()) {
                if (printedArguments(row.pattern, entry.substr(text))) produced.insert(row.pattern);
            }
            const std::string prefix = "05-01 10:00:00.123   512   530 " + entry.substr(0, text);
            for (const std::string& line : asLogged(entry.substr(text)))
                log->push_back(prefix + line);
        }
        return answer;
    }

    // What the log tells who has asked, which must be the daemon's answer.
    Explanation ask(const Items& items) {
        Lines log;
        const Outcome answer = ask(items, &log) ? Outcome::kYes : Outcome::kNo;
        const MatchLog all = logOf(log);
        const std::vector<MatchRequest> ours = all.with(items);
        EXPECT_THAT(ours, ElementsAre(Field(&MatchRequest::outcome, answer)));
        EXPECT_FALSE(ours.at(0).disturbed);
        if (ours.at(0).items.empty()) return explain(ours[0]);
        EXPECT_THAT(all.with(Items(items.begin(), items.end() - 1)), IsEmpty());
        Items others = items;
        others[0].replace(0, 1, "!");
        EXPECT_THAT(all.with(others), IsEmpty());
        return explain(ours.at(0));
    }

    // Follows the advice, the first or the last of each, until the daemon says yes.
    void expectAdviceFits(Items items, bool first) {
        for (int tries = 0; tries < 3; ++tries) {
            const Explanation explanation = ask(items);
            if (explanation.verdict == "yes") return;
            for (const ExplainedRow& row : explanation.rows) {
                if (row.better.empty()) continue;
                items.erase(std::remove_if(items.begin(), items.end(),
                                           [&row](const std::string& item) {
                                               return itemFrom(item).name == row.name;
                                           }),
                            items.end());
                items.push_back(first ? row.better.front() : row.better.back());
            }
        }
        ADD_FAILURE() << PrintToString(items) << " still does not fit";
    }

    // A saved log may end anywhere, and miss any line. Without some of them it is the log of
    // another list, or of other hardware.
    void expectNothingWrong(const Items& items) {
        Lines silent = {"Fail to get internal camera", "flag: 0x", "Read hw id gpios", "zz"};
        silent.insert(silent.end(), items.begin(), items.end());
        Lines log;
        ask(items, &log);
        const Explanation truth = explain(logOf(log).all().at(0));
        EXPECT_NE(truth.verdict, "unknown");
        const size_t size = log.size();
        log.insert(log.end(), log.begin(), log.begin() + size);
        for (size_t i = 0; i <= size; ++i) {
            SCOPED_TRACE(log[i]);
            Lines lost = log;
            lost.erase(lost.begin() + i);
            const bool isSilent = std::any_of(silent.begin(), silent.end(), [&](const auto& text) {
                return log[i].find(": " + text) != text.npos;
            });
            expectRight(Lines(log.begin(), log.begin() + i), truth, true);
            expectRight(lost, truth, !isSilent);
        }
    }
    void expectRight(const Lines& log, const Explanation& truth, bool withReasons) {
        for (const MatchRequest& request : logOf(log).all()) {
            const Explanation told = explain(request);
            if (told.verdict == "unknown") continue;
            EXPECT_EQ(told.verdict, truth.verdict);
            if (withReasons) {
                EXPECT_EQ(asText(told), asText(truth));
            }
        }
    }

    CapturedLog captured;
    std::set<std::string> produced;      // the patterns of all that was logged
    std::vector<std::string> mHardware;  // what has to be put back
};

Board with(Board board, const Board& more) {
    board.insert(board.end(), more.begin(), more.end());
    return board;
}

const Board kGt = {{"tp", "gt"}, {"touch_panel", "type:GT\\nid:5\\n"}};
const Board kPins = {{"lcd", "A-1,B-2"}, {"dsi_id1", "0000002a"}, {"dsi_id2", "0000002b"}};
// A package that does not fit but for its time.
const Board kLate = {{"bt", "r"}, {kCheckTime, "true"}, {"time", "90"}, {"touch_panel", "id:5"}};

Board late(const std::string& times) {
    return with(kLate, {{kTimes, times}});
}
Board camera(const std::string& found) {
    return {{"internal_camera", "g"}, {"camera0", found}};
}

struct Case {
    Board board;
    Items items;
    std::string explained;
    std::string sentence = "\n";
};

// clang-format off
const Case kCases[] = {
        {{}, {}, "yes: the board lists no parts\n"},
        {{{kSkip, "true"}}, {"a"}, "yes: nothing was compared: " + kSkip + " is \"true\"\n"},
        {{{kSkip + "_no_hwid", "true"}}, {"a"}, "compared: the board has no overlay id, which"},
        {{{"overlay", "5"}}, {"overlay_id:1*5" + std::string(60, ',')}, "fits: 5 is listed"},
        {{{"overlay", "5"}, {"wifi", "w"}, {"bt", "r"}},
         {"overlay_id:15", "overlay_id:6", "bt:x", "zz:y"}, "does not fit: 5 is not listed\n"
         "  overlay_id  5       6            not examined\n"
         "  wifi        w       (not named)  not examined\n"
         "  bt          r       x            not examined\n"
         "  zz          (none)  y            not examined\n", "then ask again"},
        {{{"overlay", "5"}}, {"overlay_id:5," + std::string(64, '1')}, "than 63 bytes are not"},
        {{{"bt", "r"}}, {"overlay_id:1"}, "(none)  1            ignored: the board has no overlay"},
        {{{"bt", "r"}}, {"bt:" + std::string(98, 'r')}, "fits: has \"r\""},
        {{{"bt", "r"}}, {"bt:" + std::string(99, 'r')}, "than 101 bytes is not", "write bt:r\n"},
        {{{"bt", " *"}}, {"bt:x"}, "fits: the board's value has no word"},
        {{{"bt", "r\nzz"}}, {"bt:x"}, "no \"r\\nzz\" in \"x\""},
        {{{"bt", "r"}}, {"bt:x y flag is unmatch"}, "no \"r\" in \"x y flag is unmatch\""},
        {{{"bt", "r,s"}}, {"bt"}, "does not fit: no \"r\", \"s\" in \"\""},
        {{{"bt", "r,s"}}, {"bt:null"}, "no \"r\", \"s\" in \"null\"", "\n  write bt:r,s\n"},
        {{{"bt", "r *s"}}, {"bt:xrxs"}, "fits: has \"r\", \"s\""},
        {{{"bt", "r"}}, {"bt:r", "bt:s"}, "  s        does not fit"},
        {{{"bt", "r"}}, {"wifi:r", "x:y"}, "ignored: the board lists no wifi"},
        {{}, {"service  hardwareInfo inited:x", "isMatchoverlayId:y"}, "there is no such part"},
        {{{"tp", "gt"}}, {"tp:X"}, "no \"gt\" in \"X\"; the probe found nothing usable"},
        {{{"tp", "gt"}, {"touch_panel", "a"}}, {"tp:gt"}, "has \"gt\"; the probe found nothing us"},
        {kGt, {"tp:X,GT-5"}, "fits: probe says GT-5"},
        {kGt, {"tp:X, GT-5"}, "GT-5, not listed exactly so"},
        {{{"lcd", "A-1,B-1280"}, {"display_reg", "000005"}, {"bt", "r"}}, {"lcd:B-1280"},
         "fits: probe says B-1280 (panel id by reg), listed"},
        {{{"lcd", "A-1,,X,B-3"}, {"hwid_flag", "00000003"}}, {"lcd:C-1"},
         "; probe says B-3 (panel id 3 by hwid-flag), not listed",
         "  write lcd:C-1,B-3 or lcd:C-1,A-1,X,B-3\n"},
        {{{"lcd", "A-1,B-2"}, {"hwid_flag", "00000001"}}, {"lcd:B-2"},
         "; probe says A-1 (panel id 1 by hwid-flag), not listed", "  write lcd:B-2,A-1\n"},
        {{{"lcd", "A-1,B-2"}, {"hwid_flag", "00000003"}}, {"lcd:B-2"},
         "by hwid-flag) found no entry"},
        {with(kPins, {{"gpio42", "1"}}), {"lcd:B-2"}, "says B-2 (panel id 2 by dsi-id), listed"},
        {with(kPins, {{"dsi_id1", "ffffffff"}}), {"lcd:X"}, "probe found nothing usable"},
        {{{"lcd", "A-1"}}, {"lcd:X"}, "probe found nothing usable"},
        {{{"internal_camera", "g"}}, {"internal_camera:x"}, "; the probe found nothing usable"},
        {camera("gc5035"), {"internal_camera:null"}, "fits: what the probe found is listed"},
        {camera("ov"), {"internal_camera:null"}, "; what the probe found is not listed"},
        {camera("ov"), {"internal_camera:g"}, "has \"g\"\n"},
        {with(kLate, {{"camera0", "ov"}}), {}, "refused: it is only for boards",
         "1 of 1 board part does not fit, and the timestamp fallback is not for this camera\n"},
        {with(kLate, {{"time", "0"}}), {}, "refused: nobody has", "is no package time for"},
        {kLate, {}, "refused: \"Fail to open /vendor", "and the timestamp file is of no use"},
        {late("--\\n"), {}, "refused: \"Fail to find PeripheralType after"},
        {late("--Tp\\n"), {}, "refused: \"Fail to find Tp in borad\"", "file is of no use"},
        {late("--TP\\n\\n"), {}, "refused: \"Fail to parse /vendor"},
        {late("--TP\\nx,1\\n"), {}, "passed: the timestamp file lists none",
         "timestamp file lists none of them"},
        {late("--TP\\n-5,\\n-5,90"), {}, "90, is not later than the earliest time of TP, 90\n",
         "\n  or give a package time of 91 or later\n"},
        {with(kLate,
              {{"camera0", "gc5035"},
               {kTimes, "--TP\\n-5,80\\n--INTERNAL_CAMERA\\ngc5035,89\\n--TP\\n-5,89\\n-5,1"}}),
         {},
         "is later than the earliest time of INTERNAL_CAMERA, 89\n",
         "yes: 1 of 1 board part does not fit, but the package is late enough for"},
};
// clang-format on

TEST_F(MatchExplanation, every_text_is_known_and_every_answer_explained) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.explained + " " + PrintToString(c.items));
        setUp(c.board);
        const std::string text = asText(ask(c.items));
        EXPECT_THAT(text, AllOf(HasSubstr(c.explained), HasSubstr(c.sentence)));
        EXPECT_EQ(text.find("to make it fit") == text.npos, text.rfind("yes", 0) == 0);
        expectNothingWrong(c.items);
        for (const bool first : {true, false}) expectAdviceFits(c.items, first);
    }
    for (const FactText& row : factTexts())
        EXPECT_EQ(produced.count(row.pattern), 1) << row.pattern;
}

TEST_F(MatchExplanation, list_that_looks_like_a_log_is_told_from_one) {
    const Board hardware = with(kGt, {{"bt", "r"}});
    setUp(hardware);
    const std::string result = "isTpMatchByTpInfo: match";
    const std::string skipped = "skip  hw match,beacause x=true";
    const Items start = {"service get match peripherals,peripherals given:"};
    const Items board = {"service  hardwareInfo inited:", ">>>hardware info Dump Begin"};
    Lines log;
    ask({}, &log);
    Items whole;  // of a refusal
    for (const std::string& line : log) whole.push_back(line.substr(line.find(": ") + 2));
    const Items fitting = {"tp:gt", "bt:r"};
    const Items behind(whole.begin() + 1, whole.end());
    setUp(with(hardware, {{"overlay", "5"}}));
    for (const auto& [items, isKnown, isExplained] : std::vector<std::tuple<Items, bool, bool>>{
                 {joined({behind, start, fitting}), true, false},
                 {joined({behind, {skipped}, start, fitting}), true, false},
                 {joined({{"overlay_id:9"}, behind}), true, false},
                 {joined({{"x:y"}, start, fitting}), true, false},
                 {joined({fitting, board, {"bt:s"}}), true, false},
                 {{board[0], "tp:gt"}, true, false},
                 {{"tp:a\n" + result, result}, false, false},
                 {{"bt:s\n" + board[0] + "\n" + board[1], "bt:null"}, false, false},
                 {{"overlay_id:\n5:x", "bt:r", "tp:gt"}, true, true},
                 {{"bt:r\ntp:gt", "tp:gt"}, true, true},
                 {{"bt:r\nx", "\n", "", "tp:gt\n"}, true, true},
                 {{std::string(1100, 'x') + "\n" + board[0], "tp:" + std::string(99, 'x')},
                  true,
                  true},
         }) {
        SCOPED_TRACE(PrintToString(items));
        log.clear();
        const Outcome answer = ask(items, &log) ? Outcome::kYes : Outcome::kNo;
        EXPECT_THAT(logOf(log).with(items),
                    ElementsAre(Field(&MatchRequest::outcome,
                                      isKnown ? answer : Outcome::kNotExplained)));
        for (const MatchRequest& request : logOf(log).all()) {
            if (isExplained && request.outcome == answer) continue;
            EXPECT_GE(request.outcome, Outcome::kCutOff);
        }
    }
    // Nor is what stands in the list of another one the answer to ours.
    log.clear();
    ask({skipped}, &log);
    ask(fitting, &log);
    EXPECT_THAT(logOf(log).with(fitting), ElementsAre(Field(&MatchRequest::skippedBecause, "")));
}

TEST_F(MatchExplanation, state_that_another_request_has_changed_is_said) {
    setUp({{"tp", "gt"}, {"bt", "r"}});
    const auto isSaid = [](Outcome outcome) {
        return ElementsAre(AllOf(Field(&MatchRequest::outcome, outcome),
                                 Field(&MatchRequest::disturbed, true)));
    };
    Lines log;
    ask({}, &log);
    std::string& unmatched = log[log.size() - 2];
    unmatched.replace(unmatched.find("tp"), 2, "bt");
    Lines other;
    ask({"bt:r"}, &other);
    for (std::string& line : other) line.replace(line.find("  530 "), 6, "  531 ");
    log.insert(log.begin() + 2, other.begin(), other.end());
    EXPECT_THAT(logOf(log).with({}), isSaid(Outcome::kNo));
    EXPECT_EQ(logOf(log).all().at(0).outcome, Outcome::kBroken);  // or the line of an item is lost
    log.resize(log.size() - 2);
    EXPECT_THAT(logOf(log).with({}), isSaid(Outcome::kYes));
    EXPECT_EQ(logOf(log).all().at(0).outcome, Outcome::kCutOff);
}

TEST_F(MatchExplanation, doubts_are_about_what_is_probably_not_meant) {
    setUp({{"tp", "gt9"}, {"bt", "q,r"}});
    const auto doubts = ask({"overlay_id:1", "tp:gt911 gt9", "bt:rr", "bt:r", "bt:r", "camera:x",
                             "keybord_ic:x", "b:x", "wifi" + std::string(98, ':'), "codec",
                             "\xef\xbb\xbfoverlay_id:9"})
                                .doubts;
    EXPECT_THAT(textsOf(doubts),
                ElementsAre("bt: the board's \"r\" is found only inside \"rr\"",
                            "!bt is named more than once, the last one counts",
                            "!there is no part \"camera\", the nearest name is \"internal_camera\"",
                            "!there is no part \"keybord_ic\", the nearest name is \"keyboard_ic\"",
                            "!there is no part \"b\", the nearest name is \"bt\"",
                            "!wifi: the item is longer than 101 bytes and is not compared",
                            "\"codec\" has no colon, so it is a name without a value",
                            "!a byte order mark in front of \"overlay_id\" makes it another name"));
    EXPECT_EQ(doubts[1].item, 3u);
    setUp({{"bt", "r"}, {kCheckTime, "true"}, {"time", "1600000000000"}, {kTimes, ",1600000000"}});
    EXPECT_THAT(textsOf(ask({}).doubts),
                ElementsAre("the package's time 1600000000000 and the timestamp "
                            "file's 1600000000 seem to have different units, such "
                            "as s and ms"));
}

TEST_F(MatchExplanation, nothing_is_advised_that_cannot_be_had) {
    setUp({{"bt", std::string(99, 'r')},
           {kCheckTime, "true"},
           {"time", "1"},
           {kTimes, ",9223372036854775807"}});
    const Explanation explanation = ask({"bt:x", "overlay_id:1"});
    EXPECT_THAT(explanation.rows.back().better, IsEmpty());
    EXPECT_FALSE(explanation.requiredTime);
    EXPECT_THAT(explanation.notCompared, IsEmpty());  // that is about a yes
}

}  // namespace
