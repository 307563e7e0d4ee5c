// The Zigbee check against a twin of the co-processor at the other end of a pty. The twin acts
// whenever the check pauses, so nothing here waits.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <termios.h>
#include <unistd.h>

#include <deque>
#include <sstream>

#include "common/pause.h"
#include "tests/captured_log.h"
#include "tests/child_process.h"
#include "tests/plain_board.h"
#include "tools/tarqctl/view/frames.h"
#include "tools/tarqctl/view/hex_text.h"
#include "zigbee/ash.h"
#include "zigbee/serial_port.h"
#include "zigbee/zigbee_check_module.h"

using namespace testing;
using Bytes = std::vector<uint8_t>;

namespace {

const auto bytesOf = tarq::tools::bytesFromText;

std::function<void()> duringPause;
std::chrono::milliseconds paused{0};
uint8_t acknowledgements = 0;        // that this process has sent
std::function<void(termios*)> line;  // what the driver makes of the settings that it is given

}  // namespace

void pauseFor(std::chrono::milliseconds time) {
    paused += time;
    if (duringPause && time == std::chrono::seconds(1)) duringPause();
}

extern "C" int __real_tcsetattr(int, int, const termios*);
extern "C" int __wrap_tcsetattr(int fd, int when, const termios* wanted) {
    termios taken = *wanted;
    if (line) line(&taken);
    return __real_tcsetattr(fd, when, &taken);
}

namespace {

// The port of a board of plain files. Its other end is the test's.
struct Port : PlainBoard {
    explicit Port(const std::string& enabled = "true") {
        grantpt(master);
        unlockpt(master);
        std::filesystem::create_directories(device("/dev"));
        std::filesystem::create_symlink(ptsname(master), device("/dev/ttyS3"));
        setProperty("ro.vendor.zigbee_check_enable", enabled);
    }
    ~Port() {
        duringPause = nullptr;
        close(master);
    }
    void write(const Bytes& bytes) const {
        ASSERT_EQ(::write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    // One read may get only the first of two writes.
    Bytes read() const {
        Bytes bytes;
        for (uint8_t byte; ::read(master, &byte, 1) == 1;) bytes.push_back(byte);
        return bytes;
    }
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
};

TEST(Ash, frames_are_those_of_the_protocol) {
    EXPECT_EQ(ash::resetFrame(), bytesOf("1A C0 38 BC 7E"));
    EXPECT_EQ(ash::acknowledgement(0), bytesOf("80 70 78 7E"));
    EXPECT_EQ(ash::acknowledgement(1), bytesOf("81 60 59 7E"));
    EXPECT_EQ(ash::acknowledgement(0xFA), bytesOf("82 50 3A 7E"));
    EXPECT_EQ(ash::dataFrame(0, bytesOf("00 00 00 07")), bytesOf("00 42 21 A8 53 DD 4F 7E"));
    EXPECT_EQ(ash::dataFrame(1, bytesOf("01 00 FF 00 13")), bytesOf("11 43 21 57 54 39 51 2B 7E"));
    EXPECT_EQ(ash::dataFrame(0xFF0A, {})[0], 0x22);
    Bytes zeros(7);
    ash::randomise(zeros.data(), zeros.size());
    EXPECT_EQ(zeros, bytesOf("42 21 A8 54 2A 15 B2"));
}

TEST(SerialPort, is_set_up_as_asked_or_told_why_not) {
    const Port port;
    const auto descriptors = openDescriptors();
    const struct {
        int32_t baud;
        uint8_t stopBits;
        bool rtsCts, flowControl;
        std::function<void(termios*)> line;
        std::string said;  // and -1
        tcflag_t control = 0, input = 0;
        const char* path = "/dev/ttyS3";
    } cases[] = {
            {115200, 1, true, true, nullptr, "", CRTSCTS | B115200},
            {600, 2, true, false, nullptr, "", CSTOPB | B600},
            {230400, 1, false, true, nullptr, "", B230400, IXON | IXOFF},
            {115200, 1, true, true, [](termios* t) { t->c_cflag &= ~CRTSCTS; }, "", B115200},
            {115200, 1, true, true, [](termios* t) { t->c_cflag &= ~(CRTSCTS | CLOCAL); },
             "Termios cflag(s) in error: 0x0800\r\n"},
            {115200, 1, false, true, [](termios* t) { t->c_iflag ^= IXOFF; },
             "Termios c_iflag(s) in error: 0x1000\r\n"},
            {115200, 1, true, true, [](termios* t) { t->c_lflag |= ICANON | ECHO; },
             "Termios c_lflag(s) in error: 0x000A\r\n"},
            {115200, 1, true, true, [](termios* t) { t->c_oflag |= OPOST; },
             "Termios c_oflag(s) in error: 0x0001\r\n"},
            {115200, 1, true, true, [](termios* t) { t->c_cc[VSTOP] = 1; }, "silent"},
            {115200, 1, true, true, [](termios* t) { cfsetspeed(t, B9600); },
             "Could not set baud rate to 115200 bps\r\n"},
            {100000, 3, true, true, nullptr, "Invalid baud rate 100000 bps\r\n"},
            {9600, 3, true, true, nullptr, "Invalid number of stop bits:3.\r\n"},
            {9600, 1, true, true, nullptr, "Serial port open failed:No such file or directory\r\n",
             0, 0, "/dev/ttyS4"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.said + std::to_string(&c - cases));
        line = c.line;
        internal::CaptureStdout();
        const int32_t result =
                ezspSetupSerialPort(c.path, c.baud, c.stopBits, c.rtsCts, c.flowControl);
        const std::string said = internal::GetCapturedStdout();
        EXPECT_EQ(said, c.said == "silent" ? "" : c.said);
        EXPECT_EQ(result, c.said.empty() ? 0 : -1);
        EXPECT_EQ(serialPort >= 0, c.said.empty());
        EXPECT_EQ(openDescriptors(), descriptors + (c.said.empty() ? 1 : 0));
        if (!c.said.empty()) continue;
        termios found = {};
        tcgetattr(serialPort, &found);
        EXPECT_EQ(found.c_cflag & (CBAUD | CSIZE | CSTOPB | PARENB | CRTSCTS | CREAD | CLOCAL),
                  CS8 | CREAD | CLOCAL | c.control);
        EXPECT_EQ(found.c_iflag & (ICRNL | IXON | IXANY | IXOFF), c.input);
        EXPECT_EQ(found.c_lflag & (ICANON | ECHO | ISIG), 0U);
        const cc_t* const characters = found.c_cc;
        EXPECT_EQ(
                Bytes({characters[VSTART], characters[VSTOP], characters[VTIME], characters[VMIN]}),
                bytesOf("11 13 00 01"));
        EXPECT_EQ(fcntl(serialPort, F_GETFL) & O_NONBLOCK, O_NONBLOCK);
        EXPECT_EQ(fcntl(serialPort, F_GETFD), FD_CLOEXEC);
        close(serialPort);
    }
    line = nullptr;
}

TEST(SerialPort, hands_back_what_came_and_acknowledges_it) {
    const Port port;
    ASSERT_EQ(ezspSetupSerialPort("/dev/ttyS3", 115200, 1, true, true), 0);
    const std::string much(kMaxReceived * 5, '5');  // as hexadecimal digits
    const struct {
        std::string sent, received;  // "" with nothing handed back
        bool acknowledged;
        bool discard = false;
    } cases[] = {
            {"", "", false},
            {"C1 02 02 7E", "", false},
            {"C1 02 02 9B 7B 7E", "C1 02 02 9B 7B 7E", true},
            {"81 60 59 7E 01", "01", true},
            {"81 60 59 7E 01 02 7E", "01 02 7E", true},
            {"81 60 7E 59 7E 02", "81 60 7E 59 7E 02", true},
            {"C1 02 02 9B 7B 7E", "", true, true},
            {much, much.substr(0, kMaxReceived * 2), true},
    };
    for (const auto& c : cases) {
        for (const bool whole : {true, false}) {
            SCOPED_TRACE(c.sent + (whole ? "" : " byte by byte"));
            const Bytes sent = bytesOf(c.sent);
            duringPause = [&] {
                if (whole) return port.write(sent);
                for (const uint8_t byte : sent) port.write({byte});
            };
            Bytes frame(kMaxReceived + 1, 0xEE);
            uint32_t length = 0;
            uart_recv_hand(c.discard, frame.data(), &length);
            EXPECT_EQ(Bytes(frame.begin(), frame.begin() + length), bytesOf(c.received));
            EXPECT_EQ(frame[length], 0xEE);
            EXPECT_EQ(port.read(),
                      c.acknowledged ? ash::acknowledgement(acknowledgements++) : Bytes());
        }
    }
    close(serialPort);
}

// What the twin plays: what must come from one pause to the next, and what it answers. The length
// of all pauses tells how often it was polled in vain.
using Conversation = std::deque<std::pair<std::string, std::string>>;

// The bytes of "ack version": frames, numbered on through all conversations of this process.
Bytes frames(const std::string& names) {
    static uint8_t number = 0;
    Bytes all;
    std::istringstream words(names);
    for (std::string word; words >> word;) {
        Bytes frame;
        if (word == "reset") frame = bytesOf("1A C0 38 BC 7E");
        if (word == "ack") frame = ash::acknowledgement(acknowledgements++);
        if (word == "version") frame = ash::dataFrame(number, {number, 0x00, 0x00, 0x07});
        if (word == "query") frame = ash::dataFrame(number, {number, 0x00, 0xFF, 0x00, 0x13});
        if (word == "version" || word == "query") ++number;
        all.insert(all.end(), frame.begin(), frame.end());
    }
    return all;
}

const std::string kResetAnswer = "C1 02 02 9B 7B 7E";
const std::string kVersionAnswer = "01 42 A1 A8 5C 28 05 B4 B3 7E";

Conversation answeredBy(const std::string& answer) {
    Conversation conversation = {
            {"reset", kResetAnswer}, {"ack version", kVersionAnswer}, {"ack query", answer}};
    if (bytesOf(answer).size() >= 5) conversation.emplace_back("ack", "");
    return conversation;
}

// The content of an answer to the query, as it travels. Nobody looks at the checksum.
std::string answerWith(const std::string& content) {
    Bytes bytes = bytesOf(content);
    ash::randomise(bytes.data(), bytes.size());
    return "12 " + tarq::board::ash::asHex(bytes) + " 00 00 7E";
}

struct Check {
    std::string name;
    Conversation conversation;
    std::string told;  // between "begin" and "set property", each entry with a "|" before it
    std::string property = "exist=0;COOID=0000;version=0.0.0";
    int64_t milliseconds = 3020;  // of pauses
};

void run(const Check& check) {
    SCOPED_TRACE(check.name);
    const Port port;
    if (check.name == "no port") std::filesystem::remove(port.device("/dev/ttyS3"));
    Conversation left = check.conversation;
    duringPause = [&] {
        const Bytes question = port.read();
        if (question.empty()) return;
        ASSERT_THAT(left, Not(IsEmpty()));
        const auto [expected, answer] = left.front();
        left.pop_front();
        EXPECT_EQ(question, frames(expected)) << expected;
        port.write(bytesOf(answer));
    };
    paused = {};
    CapturedLog log;
    const auto descriptors = openDescriptors();
    const int32_t result = zigbee_check_module();
    EXPECT_EQ(openDescriptors(), descriptors);
    duringPause();  // what was sent after the last pause
    std::string told;
    for (const std::string& entry : log.take()) told += "|" + entry;
    EXPECT_EQ(told, "|I zigbee_check: zigbee_check_module begin" + check.told +
                            "|I zigbee_check: set property -> " + check.property);
    EXPECT_THAT(left, IsEmpty());
    EXPECT_EQ(result, told.find("COO manuId") != std::string::npos ? 0 : -1);
    EXPECT_EQ(port.property("ro.vendor.zigbee.info"), check.property);
    EXPECT_EQ(paused.count(), check.milliseconds);
    EXPECT_EQ(serialPort, -1);
}

TEST(ZigbeeCheck, publishes_what_the_conversation_gave) {
    const Conversation onlyReset = {{"reset", kResetAnswer},
                                    {"ack version", ""},
                                    {"version", ""},
                                    {"version", ""},
                                    {"version", ""}};
    const Conversation second = {{"reset", ""},
                                 {"reset", kResetAnswer},
                                 {"ack version", ""},
                                 {"version", kVersionAnswer},
                                 {"ack query", ""}};
    const std::string isReset = "|I zigbee_check: Ncp reset success.";
    const std::string version = isReset + "|I zigbee_check: Ncp set version success.\n";
    const std::string found = version + "|I zigbee_check: COO manuId:";
    const std::string notThere = "|I zigbee_check: zigbee not exist";
    const std::string noAnswer = version + "|E zigbee_check: COO error.\n" + notThere;
    const std::string noReset = "|E zigbee_check: Ncp reset error." + notThere;
    const std::string noVersion = isReset + "|E zigbee_check: Ncp set version error." + notThere;
    const std::string noPort = "|I zigbee_check: ezspSetupSerialPort init error.\n";
    const std::string nobody = Check{}.property;
    constexpr int64_t kSilence = int64_t{4} * 201 * 1010;
    const Check checks[] = {
            {"answered", answeredBy(answerWith("01 80 FF 00 13 00 02 10 03 6A")),
             found + "1002, version:6.10.3.\n", "exist=1;COOID=1002;version=6.10.3"},
            {"what is not reached reads as 0", answeredBy(answerWith("01 80 FF 00 13 00 02")),
             found + "0002, version:0.0.0.\n", "exist=1;COOID=0002;version=0.0.0"},
            {"acknowledgement in front",
             answeredBy("82 50 3A 7E " + answerWith("00 00 00 00 00 00 FF FF FF FF")),
             found + "ffff, version:15.15.255.\n", "exist=1;COOID=ffff;version=15.15.255"},
            {"longest answer", answeredBy(answerWith(std::string(64, '0'))),
             found + "0000, version:0.0.0.\n", "exist=1;COOID=0000;version=0.0.0"},
            {"no answer to the query", answeredBy(""), noAnswer},
            {"3 bytes to the query", answeredBy("82 50 3A 7E 12 00 7E"), noAnswer},
            {"no answer at all", Conversation(4, {"reset", ""}), noReset, nobody, kSilence},
            {"only the reset answered", onlyReset, noVersion, nobody, 1010 + kSilence},
            {"answered at the second attempt", second, noAnswer, nobody, 3020 + kSilence / 2},
            {"no port", {}, noPort, nobody, 0},
    };
    for (const Check& check : checks) run(check);
}

TEST(ZigbeeCheck, an_answer_that_does_not_fit_is_fatal) {
    const Port port;
    const Bytes answer = bytesOf(answerWith(std::string(66, '0')));
    duringPause = [&] { port.write(answer); };
    EXPECT_EXIT(zigbee_check_module(), KilledBySignal(SIGABRT), "F zigbee_check: .* has 37 bytes");
}

TEST(ZigbeeCheck, does_nothing_unless_enabled) {
    for (const char* value : {"", "TRUE", "1", "true "}) {
        const Port port(value);
        CapturedLog log;
        EXPECT_EQ(zigbee_check_module(), 0);
        EXPECT_THAT(log.take(),
                    ElementsAre("I zigbee_check: zigbee_check_module skip check zigbee"));
        EXPECT_EQ(port.property("ro.vendor.zigbee.info"), "");
    }
}

}  // namespace
