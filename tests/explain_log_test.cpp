// Saved logs, as the daemon writes them, and what the tool makes of them.
#include <gmock/gmock.h>
#include <zip.h>
#include <zlib.h>

#include "tests/run_tarqctl.h"
#include "tests/temporary_directory.h"
#include "tools/tarqctl/log/log_source.h"

using namespace testing;

namespace {

const std::string kPrefix = "05-01 10:00:00.123   512   530 I HardwareInfoService: ";
const std::string kTitle = "05-01 10:00:00.123  pid 512  tid 530\n";

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

Words linesOf(const std::string& texts, const std::string& prefix = kPrefix) {
    Words lines;
    std::istringstream in(texts);
    for (std::string text; std::getline(in, text);) lines.push_back(prefix + text);
    return lines;
}

std::string joined(const Words& lines, const std::string& end = "\n") {
    std::string text;
    for (const std::string& line : lines) text += line + end;
    return text;
}

std::string logOf(const std::string& texts, const std::string& prefix = kPrefix) {
    return joined(linesOf(texts, prefix));
}

Result explainLog(const std::string& log, const Words& words = {"explain-log"}) {
    return tarqctl(words, log);
}

std::string without(std::string texts, const std::string& line) {
    return texts.erase(texts.find(line + "\n"), line.size() + 1);
}

TEST(explain_log, refusal_is_a_table_with_what_would_fit) {
    const std::string log = logOf(kRefused);
    const std::string text = kTitle + kRefusedTable;
    EXPECT_EQ(explainLog(log).out, text);
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
    const auto cut = EndsWith(
            "\nunknown: the request was cut off at the end of the log, or lines of it are "
            "missing\n");
    const auto missing = EndsWith(
            "\nunknown: lines of the request are missing, or are not what this tool knows\n");
    const auto list = HasSubstr(
            "\nunknown: the list holds lines like the daemon's own, so it is not explained\n");
    const std::string result = "isInternalCameraMatch: match";
    for (const auto& [texts, explained] : std::vector<std::pair<std::string, Matcher<std::string>>>{
                 {kAccepted,
                  HasSubstr("\nyes: all 3 board parts fit; the overlay was not compared\n")},
                 {without(kAccepted, result),
                  EndsWith(R"(cut off at the end of the log, or lines of it are missing

  part             board    package  verdict
  tp               gt9xx    GT-5     fits: probe says GT-5, listed
  internal_camera  gc5035   null     unknown
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
        EXPECT_THAT(explainLog(logOf(texts)).out, explained) << texts;
    }
}

TEST(explain_log, requests_of_threads_and_daemons_are_told_apart) {
    Words log = {"--------- beginning of main"};
    const Words first = linesOf(kRefused);
    const Words second =
            linesOf(kAccepted, "05-01 10:00:00.124   512   531 I HardwareInfoService: ");
    const Words third = linesOf("skip  hw match,beacause ro.vendor.ota_skip_hw_info=true\n",
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
    const std::string refused = kTitle + kRefusedTable;
    EXPECT_THAT(out, StartsWith("05-01 10:00:00.124  pid 512  tid 531\nunknown: the request began "
                                "before the log does, or its first line is missing\n\n" +
                                refused + "\n05-01 10:00:00.124  pid 512  tid 531\nyes: all 3"));
    EXPECT_THAT(out, EndsWith("\n" + refused +
                              "\n05-01 10:00:00.125  pid 600  tid 531\nyes: nothing was compared: "
                              "ro.vendor.ota_skip_hw_info is \"true\"\n"));
}

// A refusal with the prefix and the suffix of a format, as logcat prints them.
std::string refusalIn(const std::string& prefix, const std::string& suffix = "\n") {
    return joined(linesOf(kRefused, prefix), suffix);
}

TEST(explain_log, every_format_of_logcat_is_read) {
    const std::string tag = "HardwareInfoService";
    const std::string time = "05-01 10:00:00.123";
    const std::string longHeader = "[ " + time + "   512:  530 I/" + tag + " ]\n";
    for (const auto& [log, title] : std::vector<std::pair<std::string, std::string>>{
                 {refusalIn("I/" + tag + "(  512): "), "pid 512"},
                 {refusalIn("I/" + tag + "( 1000:  512): "), "pid 512"},
                 {refusalIn("I/" + tag + ": "), "a request"},
                 {refusalIn("I(  512) ", "  (" + tag + ")\n"), "pid 512"},
                 {refusalIn(time + " I/" + tag + "(  512): "), time + "  pid 512"},
                 {refusalIn(time + "   512   530 I " + tag + ": "), ""},
                 {refusalIn(time + "  1000   512   530 I " + tag + ": "), ""},
                 {refusalIn(time + " system   512   530 I " + tag + ": "), ""},
                 {refusalIn("2018-" + time + "456 +0200   512   530 I " + tag + ": "),
                  "2018-" + time + "456  pid 512  tid 530"},
                 {refusalIn("         1525168800.123   512   530 I " + tag + ": "),
                  "1525168800.123  pid 512  tid 530"},
                 {refusalIn("\x1b[38;5;40m" + time + "   512   530 I " + tag + ": ", "\x1b[0m\n"),
                  ""},
                 {refusalIn(longHeader, "\n\n"), ""},
                 // One message of several lines has one header.
                 {longHeader + "a\n\nb\n\n" + longHeader + kRefused + "\n", ""},
                 {refusalIn("> [ " + time + " system:  512:  530 I/" + tag + " ]\n> ", "\n>\n"),
                  ""},
                 {"He wrote:\n\n" + refusalIn("> > " + time + "   512   530 I " + tag + ": "), ""},
         }) {
        const std::string expected = title.empty() ? time + "  pid 512  tid 530" : title;
        EXPECT_EQ(explainLog(log).out, expected + "\n" + kRefusedTable) << log.substr(0, 200);
    }
}

TEST(explain_log, requests_that_no_thread_tells_apart_are_unknown) {
    const std::string brief = "I/HardwareInfoService(  512): ";
    const std::string refused = refusalIn(brief);
    const std::string accepted = logOf(kAccepted, brief);
    const auto verdicts = [](const std::string& log) {
        std::string words;
        std::istringstream out(explainLog(log).out);
        for (std::string line; std::getline(out, line);) {
            for (const char* word : {"yes", "no", "unknown"}) {
                if (line.rfind(word + std::string(": "), 0) == 0) words += word + std::string(" ");
            }
        }
        return words;
    };
    EXPECT_EQ(verdicts(accepted + refused + accepted), "yes no yes ");
    // The one that waits for its hardware gets its last lines into the next one or behind it.
    for (const char* waits : {"take tp info", "isPeripheralMatch,typeName:codec", "tp flag"}) {
        const size_t at = refused.find(brief + waits);
        for (const std::string& other : {accepted, refused}) {
            for (size_t end = 0; (end = other.find('\n', end) + 1) != 0;) {
                const std::string log = refused.substr(0, at) + other.substr(0, end) +
                                        refused.substr(at) + other.substr(end);
                const std::string told = verdicts(log);
                const bool isWhole = end == other.size() && at == refused.size();
                EXPECT_TRUE(isWhole || told.find("yes") == told.npos) << log;
                EXPECT_THAT(told, HasSubstr("unknown ")) << log;
            }
        }
    }
}

// It tells of the board as well, and of the overlay id by which its description was chosen.
TEST(explain_log, start_of_the_daemon_is_no_request) {
    const std::string start =
            "isMatchoverlayId:1\n" + without(kBoard, "service  hardwareInfo inited:");
    const std::string prefix = "05-01 10:00:00.001   512   512 I HardwareInfoService: ";
    EXPECT_THAT(explainLog(logOf(start, prefix) + logOf(kAccepted)).out,
                StartsWith(kTitle + "yes: all 3"));
}

TEST(explain_log, gaps_are_named_and_nothing_is_said_of_what_was_not_seen) {
    const std::string chatty = "05-01 10:00:00.123   512   530 I chatty  : uid=1000(system) ";
    const std::string lost = "05-01 10:00:00.123   512   531 W tarq-host: 12 log lines lost";
    const Words accepted = linesOf(kAccepted);
    const std::string whole = joined(accepted);
    const std::pair<std::string, std::string> gaps[] = {
            {chatty + "expire 12 lines", "the device has dropped 12 lines (chatty)"},
            {lost, "the daemon could not write its log (12 log lines lost)"},
    };
    for (size_t i = 1; i <= accepted.size(); ++i) {
        const auto& [line, cause] = gaps[i % 2];
        const std::string gap = "\nunknown: " + cause + " before the end of the request was seen\n";
        Words log(accepted.begin(), accepted.begin() + i);
        log.push_back(line);
        log.insert(log.end(), accepted.begin() + std::min(i + 3, accepted.size()), accepted.end());
        const Result result = explainLog(joined(log) + whole);
        EXPECT_THAT(result.out, HasSubstr(gap));
        EXPECT_THAT(result.out, Not(HasSubstr("not named")));
        EXPECT_THAT(result.out, HasSubstr("\nyes: all 3"));
        EXPECT_EQ(result.code, 2);
        // What is left of it, alone.
        const Result rest = explainLog(joined(Words(accepted.begin() + i, accepted.end())));
        EXPECT_EQ(rest.code, 2);
        EXPECT_THAT(rest.out + rest.err,
                    AnyOf(EndsWith("\nunknown: the request began before the log does, or its first "
                                   "line is missing\n"),
                          HasSubstr("no match request is in it"), HasSubstr("it is empty")));
    }
    // A refusal is told before the gap; what repeats itself is dropped, too.
    EXPECT_EQ(explainLog(logOf(kRefused) + chatty + "expire 1 line\n" + whole).code, 1);
    Words log(accepted.begin(), accepted.begin() + 2);
    log.push_back(chatty + "identical 3 lines");
    log.insert(log.end(), accepted.begin() + 2, accepted.end());
    EXPECT_THAT(explainLog(joined(log)).out, HasSubstr("dropped 3 lines (chatty) before the end"));
    // The line of an item is lost, and the log ends: it may have been named.
    const std::string cut = explainLog(logOf(without(kAccepted, "bt:rtl8723"))).out;
    EXPECT_THAT(cut, HasSubstr("unknown: no item of that name was seen"));
    EXPECT_THAT(cut, Not(HasSubstr("to make it fit")));
}

std::string utf16(const std::string& ascii, bool bigEndian) {
    std::string text = bigEndian ? "\xfe\xff" : "\xff\xfe";
    for (const char c : ascii) text += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    return text;
}

std::string gzipped(const std::string& bytes) {
    const TemporaryDirectory directory;
    const gzFile file = gzopen((directory / "gz").c_str(), "wb");
    EXPECT_EQ(gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size())), bytes.size());
    EXPECT_EQ(gzclose(file), Z_OK);
    return readFile(directory / "gz");
}

std::string zipped(const std::vector<std::pair<std::string, std::string>>& members) {
    const TemporaryDirectory directory;
    zip_t* archive = zip_open((directory / "zip").c_str(), ZIP_CREATE, nullptr);
    for (const auto& [name, content] : members) {
        zip_file_add(archive, name.c_str(),
                     zip_source_buffer(archive, content.data(), content.size(), 0), 0);
    }
    EXPECT_EQ(zip_close(archive), 0);
    return readFile(directory / "zip");
}

TEST(explain_log, log_is_read_as_other_systems_write_it_and_people_pack_it) {
    const std::string log = logOf(kRefused);
    const std::string text = kTitle + kRefusedTable;
    const size_t half = log.find('\n', log.size() / 2) + 1;
    for (const std::string& bytes :
         {"\xef\xbb\xbf" + log, utf16(log, false), utf16(joined(linesOf(kRefused), "\r\n"), true),
          gzipped(log), gzipped(log.substr(0, half)) + gzipped(log.substr(half)),
          gzipped(utf16(log, false))}) {
        EXPECT_EQ(explainLog(bytes).out, text);
    }
    const std::string report = zipped({{"version.txt", "2.0"},
                                       {"bugreport.txt", "== dumpstate\n" + log},
                                       {"FS/last.gz", gzipped(logOf(kAccepted))}});
    EXPECT_THAT(
            explainLog(report).out,
            AllOf(StartsWith("05-01 10:00:00.123  pid 512  tid 530  in bugreport.txt\nno: 2"),
                  HasSubstr("\n05-01 10:00:00.123  pid 512  tid 530  in FS/last.gz\nyes: all")));
    std::istringstream surrogates(std::string("\xff\xfe\x3d\xd8\x00\xde\x3d\xd8\x21\x00", 10));
    std::string line;
    tarq::tools::readLog(surrogates, {[](const auto&) {}, [&](const auto& l) { line = l; }});
    EXPECT_EQ(line, "\xf0\x9f\x98\x80\xef\xbf\xbd!");
}

TEST(explain_log, what_is_no_log_is_said) {
    const std::string log = logOf(kRefused);
    const std::string packed = gzipped(log);
    std::string damaged = packed;
    damaged[damaged.size() / 2] = static_cast<char>(~damaged[damaged.size() / 2]);
    for (const auto& [bytes, why] : std::vector<std::pair<std::string, std::string>>{
                 {"", "standard input: it is empty\n"},
                 {logOf("hello"), "it is a log, but no match request is in it\n"},
                 {"I(  512:  530) service get match\n", "it is a log without tags, such as"},
                 {"text\n", "no line of any logcat format; it is text that begins with \"text\"\n"},
                 {"\x1b[m\xff", "it is text that begins with \"\\x1b[m\\xff\"\n"},
                 {std::string("\0\1\2", 3), "it is no text, its first bytes are 000102\n"},
                 {"\xff\1", "it is no text, its first bytes are ff01\n"},
                 {std::string("\xff\xfe\0\0t\0\0", 8), "it is text in UTF-32\n"},
                 {std::string("\xfe\xff\0t", 4), "it is text in UTF-16\n"},
                 {"BZh9", "it is bzip2, unpack it first\n"},
                 {zipped({{"a", "b"}}), "no line of any logcat format; it is a zip archive\n"},
                 {packed.substr(0, packed.size() / 2), "its gzip data is cut off\n"},
                 {damaged, "its gzip data is damaged\n"},
                 {zipped({{"a", log}}).substr(0, 200), "its zip archive is damaged or cut off: "},
         }) {
        const Result result = explainLog(bytes);
        EXPECT_EQ(result.code, 2);
        EXPECT_THAT(result.err,
                    AllOf(HasSubstr(why), HasSubstr("\nhint: tarqctl explain-log --help\n")));
    }
    EXPECT_THAT(explainLog("", {"explain-log", "/"}).err, HasSubstr("/: Is a directory\nhint: "));
    EXPECT_THAT(explainLog("", {"explain-log", "/no"}).err,
                StartsWith("tarqctl: explain-log /no: No such file or "));
    for (const std::string& bomb :
         {gzipped(std::string(3000, 'x')), zipped({{"a", std::string(3000, 'x')}}),
          zipped({{"a", std::string(1500, 'x')}, {"b", log}})}) {
        std::istringstream in(bomb);
        const tarq::tools::LogSink ignored = {[](const auto&) {}, [](const auto&) {}};
        EXPECT_THAT([&] { tarq::tools::readLog(in, ignored, 2000); },
                    ThrowsMessage<std::runtime_error>("it unpacks to more than 2000 bytes"));
    }
}

}  // namespace
