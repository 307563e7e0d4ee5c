// The co-processor of a virtual board, asked on its port as the daemon asks it.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <termios.h>

#include "tests/test_board.h"
#include "tools/tarqctl/view/frames.h"
#include "tools/tarqctl/view/hex_text.h"

using namespace testing;
using tarq::board::ash::asHex;
using tarq::tools::bytesFromText;

namespace {

namespace fs = std::filesystem;

const std::string kReset = "1a c0 38 bc 7e";
const std::string kResetDone = "1a c1 02 0b 0a 52 7e";
const std::string kVersion = "00 42 21 a8 53 dd 4f 7e";
const std::string kVersionIs = "01 42 a1 a8 53 28 16 d8 65 03 7e";
const std::string kQuery = "11 43 21 57 54 39 51 2b 7e";
const std::string kQueryIs = "02 43 a1 57 54 39 15 b0 49 97 20 f4 b9 7e";  // as the first answer

class Port {
  public:
    explicit Port(const std::string& path)
        : mFd(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}
    ~Port() { close(mFd); }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    void send(const std::string& hex) const {
        const auto bytes = bytesFromText(hex);
        EXPECT_EQ(write(mFd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    // What comes until it is as long as the expected.
    std::string read(const std::string& expected) const {
        tarq::board::ash::Bytes all;
        pollfd event = {mFd, POLLIN, 0};
        uint8_t chunk[256];
        const int patience = static_cast<int>(std::chrono::milliseconds(kDeadline).count());
        while (asHex(all).size() < expected.size() && poll(&event, 1, patience) == 1) {
            const ssize_t size = ::read(mFd, chunk, sizeof(chunk));
            if (size <= 0) break;
            all.insert(all.end(), chunk, chunk + size);
        }
        return asHex(all);
    }
    bool isHungUp() const {
        pollfd event = {mFd, 0, 0};
        return poll(&event, 1, 0) == 1 && (event.revents & POLLHUP) != 0;
    }

  private:
    const int mFd;
};

class CoprocessorTest : public Test {
  protected:
    static constexpr char kDevice[] = "<coprocessor manufacturer='1002' version='6.10.3'/>";

    // Each question of the table gets its answer.
    static void converse(const TestBoard& board) {
        const Port port(board.device("/dev/ttyS3"));
        const std::pair<std::string, std::string> kTalk[] = {
                {kReset, kResetDone},
                {kVersion, kVersionIs},
                {kQuery, "12 43 a1 57 54 39 15 b0 49 97 20 a1 84 7e"},
                {"80 70 78 7e", ""},              // its acknowledgement
                {"c0 38 bd 7e", ""},              // damaged
                {"00 42 21 82 50 04 01 7e", ""},  // no command that it knows
                {"55 aa " + kReset, kResetDone}};
        for (const auto& [question, answer] : kTalk) {
            port.send(question);
            EXPECT_EQ(port.read(answer), answer) << question;
        }
    }
    // How much the record has of a sender.
    static int chunks(const TestBoard& board, const std::string& from) {
        std::istringstream record(readFile(board.serialRecords()));
        int count = 0;
        for (std::string line; std::getline(record, line);) count += line.find(from) != line.npos;
        return count;
    }
    // How often the co-processor has written.
    static int writes(const TestBoard& board) { return chunks(board, "coprocessor"); }
    static bool hasWritten(const TestBoard& board, int times) {
        return eventually([&] { return writes(board) == times; });
    }
};

// How frames read is ash_test's.
TEST_F(CoprocessorTest, conversation_is_answered_recorded_and_readable) {
    const TestBoard board(kDevice);
    EXPECT_TRUE(fs::is_symlink(board.device("/dev/ttyS3")));
    converse(board);
    converse(board);  // whoever comes next finds it as it was
    EXPECT_TRUE(hasWritten(board, 8));
    EXPECT_THAT(board.ask({"serial"}),
                MatchesRegex("[0-9:. -]{18} host         RST\n(.*\n)*"
                             "host: 12 frames, 4 damaged, 12 bytes skipped\n"
                             "coprocessor: 8 frames, 0 damaged, 0 bytes skipped\n"));
    EXPECT_THAT(board.ask({"serial", "--json"}), StartsWith("{\"ms\":"));
    ChildProcess follower({TARQCTL, "serial", "-f", "--json"});
    EXPECT_THAT(follower.readLine(),
                HasSubstr("\"from\":\"host\",\"bytes\":\"1ac038bc7e\",\"type\":\"RST\""));
    follower.kill(SIGINT);
    EXPECT_EQ(follower.wait(), 0);
}

TEST_F(CoprocessorTest, fault_is_as_its_name_says_and_over_with_none) {
    const TestBoard board(kDevice);
    const std::string again = "0a 43 a1 57 54 39 15 b0 49 97 20 56 37 7e";
    std::string tenTimes = kQueryIs;
    for (int i = 1; i < 10; ++i) tenTimes += " " + kQueryIs;
    const struct {
        std::string fault, question, answer;
        int writes;
    } kFaults[] = {{"silent", kReset + " " + kQuery, "", 0},
                   {"silent_after_reset", kQuery + " " + kReset, kResetDone, 1},
                   {"late", kQuery, kQueryIs, 1},
                   {"pieces", kQuery, kQueryIs, 5},
                   {"merged", kQuery, kQueryIs + " " + again, 1},
                   {"garbage", kQuery, "00 ff 55 aa " + kQueryIs, 1},
                   {"too_long", kQuery, tenTimes, 1},
                   {"acknowledged", kQuery, "82 50 3a 7e " + kQueryIs, 1},
                   {"too_short", kQuery, "82 50 3a 7e 7e", 1}};
    const Port port(board.device("/dev/ttyS3"));
    for (const auto& row : kFaults) {
        board.command({"fault", "coprocessor", row.fault});
        const int before = writes(board);
        const int asked = chunks(board, "host");
        const auto start = std::chrono::steady_clock::now();
        port.send(row.question);
        EXPECT_EQ(port.read(row.answer), row.answer) << row.fault;
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        EXPECT_TRUE(took.count() >= 1.5 || row.fault != "late");
        EXPECT_TRUE(hasWritten(board, before + row.writes)) << row.fault;
        EXPECT_TRUE(eventually([&] { return chunks(board, "host") > asked; })) << row.fault;
        board.command({"fault", "coprocessor", "none"});
        port.send(kReset);
        EXPECT_EQ(port.read(kResetDone), kResetDone) << "after " << row.fault;
        EXPECT_TRUE(hasWritten(board, before + row.writes + 1));
    }
    board.command({"fault", "coprocessor", "absent"});
    EXPECT_TRUE(port.isHungUp());
    EXPECT_FALSE(fs::is_symlink(board.device("/dev/ttyS3")));
    board.command({"fault", "coprocessor", "none"});
    converse(board);
}

TEST_F(CoprocessorTest, manufacturer_and_version_can_be_set_and_nonsense_is_refused) {
    const TestBoard board(kDevice);
    board.command({"set", "coprocessor_manufacturer", "CC"});
    board.command({"set", "coprocessor_version", "15.1.255"});
    const Words kWrong[] = {{"set", "coprocessor_manufacturer", "10020"},
                            {"set", "coprocessor_manufacturer", "x"},
                            {"set", "coprocessor_version", "16.0.0"},
                            {"set", "coprocessor_version", "1.2.3 "},
                            {"set", "coprocessor", "1002"},
                            {"fault", "coprocessor", "slow"},
                            {"hold", "coprocessor"}};
    for (const Words& words : kWrong) board.ask(words, 1);
    const Port port(board.device("/dev/ttyS3"));
    port.send(kQuery);
    port.read("02 43 a1 57 54 39 15 7d 5e 59 6b bb 0d 33 7e");  // a 7e in it is escaped
    EXPECT_TRUE(hasWritten(board, 1));
    EXPECT_THAT(board.ask({"serial"}), HasSubstr("manufacturer 00cc, version 15.1.255\n"));
}

TEST_F(CoprocessorTest, live_capture_is_decoded_while_it_comes) {
    const TemporaryDirectory folder;
    ASSERT_EQ(mkfifo((folder / "line").c_str(), 0600), 0);
    ChildProcess tool({TARQCTL, "ash", folder / "line"});
    std::ofstream line(folder / "line");
    line << "1ac038bc7e" << std::flush;
    EXPECT_EQ(tool.readLine(), "RST");
    line.close();
    EXPECT_EQ(tool.wait(), 0);
}

TEST_F(CoprocessorTest, stopped_board_is_named_by_what_it_does_not_answer) {
    const TestBoard board(kDevice);
    board.signal(SIGSTOP);
    const std::string said =
            board.ask({"--timeout", "0.2", "set", "coprocessor_version", "1.2.3"}, 2);
    board.signal(SIGCONT);
    EXPECT_THAT(said, HasSubstr("no answer after 0.2 s: the board is stopped (process "));
}

TEST_F(CoprocessorTest, pasted_frames_need_no_board_and_a_mistake_is_told_with_its_place) {
    const TemporaryDirectory folder;
    const std::string file = folder / "x.hex";
    const auto ash = [&](const std::string& text, const std::string& words, int code) {
        writeFile(file, text);
        ChildProcess tool({"sh", "-c", "exec " TARQCTL " ash " + words + " <$0 2>&1", file});
        const std::string said = tool.readAll();
        EXPECT_EQ(tool.wait(), code) << said;
        return said;
    };
    const std::string frame =
            "{\"bytes\":\"8160597e\",\"type\":\"ACK\",\"checksum\":\"good\","
            "\"busy\":false,\"ack\":1}\n";
    for (const std::string words : {"", "-", file.c_str()}) {
        EXPECT_EQ(ash("8160597e 00", words + " --json", 0),
                  frame + "{\"bytes\":\"00\",\"damage\":\"no flag at the end\"}\n");
    }
    EXPECT_THAT(ash("1ac0\n38 z", file, 2), HasSubstr(": " + file + ":2:4: only"));
    const std::string of = R"({"ms":1,"time":"01-02 03:04:05.006","from":")";
    EXPECT_EQ(ash("#\n" + of + "host\",\"bytes\":\"1ac038\"}\n " + of +
                          "coprocessor\",\"bytes\":\"8160597e\"}\n" + of +
                          "host\",\"bytes\":\"bc7e\"}\n81 60 59 7e",
                  "", 0),
              "01-02 03:04:05.006 coprocessor  ACK 1\n01-02 03:04:05.006 host         RST\nACK 1\n"
              "host: 1 frame, 0 damaged, 0 bytes skipped\n"
              "coprocessor: 1 frame, 0 damaged, 0 bytes skipped\n"
              "1 frame, 0 damaged, 0 bytes skipped\n");
    for (const std::string wrong : {"{", "{\"bytes\":1}", "{\"bytes\":\"0\"}", "{\"error\":{}}",
                                    "{\"from\":\"x\",\"bytes\":\"\"}"}) {
        EXPECT_THAT(ash("1a\n" + wrong, "", 2), HasSubstr(": -:2: no line of tarqctl serial"));
    }
    EXPECT_THAT(ash("\xef\xbb\xbf"
                    "8160597e",
                    "", 0),
                StartsWith("ACK 1\n"));
    for (const auto& [bytes, why] :
         {std::pair(std::string("\xff\xfe\x38\0", 4),
                    "1: it is text in UTF-16\nhint: iconv -f UTF-16 -t UTF-8 FILE | tarqctl ash\n"),
          {std::string("\xff\xfe\0\0", 4), "1: it is text in UTF-32\nhint: iconv "},
          {std::string("8\0", 2), "1:2: a byte of value 0, as UTF-16 "},
          {"\xff"
           "8",
           "1:1: only hexadecimal digits"}}) {
        EXPECT_THAT(ash(bytes, "", 2), HasSubstr(": -:" + std::string(why)));
    }
    EXPECT_THAT(ash("", "1a C0", 2),
                HasSubstr("come on standard input\nhint: echo '1a C0' | tarqctl ash\n"));
    EXPECT_THAT(ash("", "1a file", 2), HasSubstr("one file is read, 2 were given\n"));
    EXPECT_THAT(ash("", file + ".none", 2), HasSubstr(".none: No such file or directory\n"));
}

}  // namespace
