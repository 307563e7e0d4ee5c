// Saved logs, as the daemon writes them, and what the tool makes of them.
#include <gmock/gmock.h>

#include <sstream>

#include "tests/temporary_directory.h"
#include "tools/tarqctl/tarqctl.h"

using namespace testing;
using Lines = std::vector<std::string>;

namespace {

const std::string kPrefix = "05-01 10:00:00.123   512   530 I HardwareInfoService: ";

// The board of most cases: parts that fit, that do not, and that the package does not name.
const std::string kBoard = R"(service  hardwareInfo inited:
>>>hardware info Dump Begin
wifi:null
codec:null
tp:gt9xx
internal_camera:gc5035
usb_camera:null
bt:rtl8723
lcd:null
switch:null
emmc:null
led_ic:null
keyboard_ic:null
hw overLayId:5
read xml overLayId:1,5,7
read xml hwVersion:V1.2
index:3
product:demo_panel
<<<hardware info Dump End
)";

const std::string kRefused =
        "service get match peripherals,peripherals given:\n"
        "overlay_id:1,5\ntp:gt911\nbt:rtl8723ds\ncodec:es8316\n" +
        kBoard + R"(isMatchoverlayId:1
isPeripheraloneByOneMatch:peripheralNameInited:gt9xx not match peripheralNameOta:gt911
isPeripheralMatch,typeName:tp,gt9xx inited,gt911 given
get tp info from /sys/class/tpinfo/tpinfo_ic_info
tp_ic_info: key=type, value=GT
tp_ic_info: key=id, value=5
take tp info: GT-5
isTpMatchByTpInfo: unmatch
isPeripheralMatch,typeName:codec,es8316 given,null inited,add abiltiy...
tp flag is unmatch
skip hw timestamp check, beacause ro.vendor.ota_enter_timestamp_check is not set to true
)";

const std::string kRefusedTable =
        R"(no: 2 of 3 board parts do not fit, and the timestamp fallback is off

  part             board    package      verdict
  overlay_id       5        1,5          fits: 5 is listed
  codec            (none)   es8316       ignored: the board lists no codec
  tp               gt9xx    gt911        does not fit: no "gt9xx" in "gt911"; probe says GT-5, not listed
  internal_camera  gc5035   (not named)  does not fit: a package must name every part of the board
  bt               rtl8723  rtl8723ds    fits: has "rtl8723"
  fallback         off: ro.vendor.ota_enter_timestamp_check is not "true"

to make it fit:
  write tp:gt911,gt9xx or tp:gt911,GT-5
  add internal_camera:gc5035
note: bt: the board's "rtl8723" is found only inside "rtl8723ds"
)";

// A yes has no line of its own.
const std::string kAccepted =
        "service get match peripherals,peripherals given:\n"
        "tp:GT-5\nbt:rtl8723\ninternal_camera:null\n" +
        kBoard +
        R"(isPeripheraloneByOneMatch:peripheralNameInited:gt9xx not match peripheralNameOta:GT-5
isPeripheralMatch,typeName:tp,gt9xx inited,GT-5 given
take tp info: GT-5
isTpMatchByTpInfo: match
isPeripheraloneByOneMatch:peripheralNameInited:gc5035 not match peripheralNameOta:null
isPeripheralMatch,typeName:internal_camera,gc5035 inited,null given
isInternalCameraMatch: match
)";

Lines linesOf(const std::string& texts, const std::string& prefix = kPrefix) {
    Lines lines;
    std::istringstream in(texts);
    for (std::string text; std::getline(in, text);) lines.push_back(prefix + text);
    return lines;
}

std::string joined(const Lines& lines, const std::string& end = "\n") {
    std::string text;
    for (const std::string& line : lines) text += line + end;
    return text;
}

struct Result {
    int code;
    std::string out;
    std::string err;
};

Result explainLog(const std::string& log, const Lines& words = {"explain-log"}) {
    std::istringstream in(log);
    std::ostringstream out;
    std::ostringstream err;
    const int code = tarq::tools::runTarqctl(words, false, in, out, err);
    return {code, out.str(), err.str()};
}

std::string without(std::string texts, const std::string& line) {
    return texts.erase(texts.find(line + "\n"), line.size() + 1);
}

TEST(explain_log, refusal_is_a_table_with_what_would_fit) {
    const std::string log = joined(linesOf(kRefused));
    const std::string text = "05-01 10:00:00.123  pid 512  tid 530\n" + kRefusedTable;
    EXPECT_EQ(explainLog(log).out, text);
    EXPECT_EQ(explainLog(joined(linesOf(kRefused), "\r\n")).out, text);
    std::string withCr = log;
    withCr.insert(withCr.find("\n", withCr.find("codec:es8316")), "\r");
    EXPECT_THAT(explainLog(withCr).out, HasSubstr("  es8316\\r     "));
    const TemporaryDirectory directory;
    writeFile(directory / "log", log);
    EXPECT_EQ(explainLog("", {"explain-log", directory / "log"}).out, text);
    EXPECT_THAT(
            explainLog(log, {"explain-log", "-", "--json"}).out,
            AllOf(StartsWith("{\"time\":\"05-01 10:00:00.123\",\"pid\":512,\"tid\":530,"
                             "\"verdict\":\"no\",\"sentence\":\"2 of 3 board parts do not fit"),
                  HasSubstr("{\"name\":\"internal_camera\",\"board\":\"gc5035\",\"package\":"
                            "null,\"verdict\":\"does_not_fit\",\"reason\":\"a package must name "
                            "every part of the board\",\"better\":[\"internal_camera:gc5035\"]"),
                  EndsWith("is found only inside \\\"rtl8723ds\\\"\"]}\n")));
}

TEST(explain_log, what_is_not_proved_is_unknown) {
    const std::string off = "skip hw timestamp check, beacause x is not set to true\n";
    const auto cut = EndsWith("\nunknown: the request was cut off at the end of the log\n");
    const auto missing = EndsWith(
            "\nunknown: lines of the request are missing, or are not what this tool knows\n");
    const auto list = HasSubstr(
            "\nunknown: the list holds lines like the daemon's own, so it is not explained\n");
    const std::string result = "isInternalCameraMatch: match";
    for (const auto& [texts, explained] : std::vector<std::pair<std::string, Matcher<std::string>>>{
                 {kAccepted, HasSubstr("\nyes: all 3 board parts fit\n")},
                 {without(kAccepted, result), EndsWith(R"(cut off at the end of the log

  part             board    package  verdict
  tp               gt9xx    GT-5     fits: probe says GT-5, listed
  internal_camera  gc5035   null     not examined
  bt               rtl8723  rtl8723  fits: has "rtl8723"
)")},
                 {kAccepted.substr(0, kAccepted.find("<<<")), cut},
                 {kAccepted.substr(0, kAccepted.find(">>>")), cut},
                 {without(kAccepted, "<<<hardware info Dump End") + kAccepted.substr(0, 50),
                  HasSubstr("lines of the request are missing")},
                 {without(kAccepted, "lcd:null"), missing},
                 {without(kAccepted, result) + kAccepted,
                  HasSubstr("lines of the request are missing")},
                 {kAccepted + "Fail to get tpinfo\n", missing},
                 {kAccepted + "tp flag is unmatch\notaTimeStamp Match failed: otaTimeStamp(5) "
                              "earlier than  maxEarliestSupportTime(9)\n",
                  missing},
                 {without(kAccepted, "service  hardwareInfo inited:"), missing},
                 {without(kAccepted, ">>>hardware info Dump Begin") + kAccepted, list},
                 {kAccepted + "tp flag is unmatch\n" + off,
                  HasSubstr("\nno: all 3 board parts fit, and the timestamp fallback is off; "
                            "another request "
                            "at the same time got in between, ask again\n")},
         }) {
        EXPECT_THAT(explainLog(joined(linesOf(texts))).out, explained) << texts;
    }
}

TEST(explain_log, requests_of_threads_and_daemons_are_told_apart) {
    Lines log = {"--------- beginning of main"};
    const Lines first = linesOf(kRefused);
    const Lines second =
            linesOf(kAccepted, "05-01 10:00:00.124   512   531 I HardwareInfoService: ");
    const Lines third = linesOf("skip  hw match,beacause ro.vendor.ota_skip_hw_info=true\n",
                                "05-01 10:00:00.125   600   531 I HardwareInfoService: ");
    log.insert(log.end(), second.end() - 3, second.end());  // of a request before
    for (size_t i = 0; i < std::max(first.size(), second.size()); ++i) {
        if (i < first.size()) log.push_back(first[i]);
        log.push_back("05-01 10:00:00.124   512   530 I ShellService: tp:other");
        log.push_back(i < first.size() ? first[i].substr(0, 30) : "");
        if (i < second.size()) log.push_back(second[i]);
    }
    log.insert(log.end(), first.begin(), first.end());
    log.insert(log.end(), third.begin(), third.end());
    EXPECT_THAT(explainLog(joined(log), {"explain-log", "--json"}).out, Not(HasSubstr("\n\n")));
    const std::string out = explainLog(joined(log)).out;
    const std::string refused = "05-01 10:00:00.123  pid 512  tid 530\n" + kRefusedTable;
    EXPECT_THAT(out, StartsWith(refused + "\n05-01 10:00:00.124  pid 512  tid 531\nyes: all 3"));
    EXPECT_THAT(out, EndsWith("\n" + refused +
                              "\n05-01 10:00:00.125  pid 600  tid 531\nyes: nothing was compared: "
                              "ro.vendor.ota_skip_hw_info is \"true\"\nnote: nothing was compared: "
                              "ro.vendor.ota_skip_hw_info is \"true\"\n"));
}

TEST(explain_log, log_without_requests_is_told_from_one_that_cannot_be_read) {
    const std::string nothing = "tarqctl: explain-log: no match request is in it\n";
    EXPECT_EQ(explainLog("").err, nothing);
    EXPECT_EQ(explainLog(joined(linesOf(kBoard))).err, nothing);
    EXPECT_EQ(explainLog("").code, 0);
    const Result other = explainLog("I/HardwareInfoService(  512): tp:gt9xx\n");
    EXPECT_EQ(other.code, 2);
    EXPECT_EQ(other.err,
              "tarqctl: explain-log: standard input: no line is one of `logcat -v "
              "threadtime`\nhint: tarqctl explain-log --help\n");
    EXPECT_THAT(explainLog("", {"explain-log", "/"}).err, HasSubstr("/: Is a directory\nhint: "));
    EXPECT_THAT(explainLog("", {"explain-log", "/no"}).err, HasSubstr("/no: No such file or "));
}

}  // namespace
