// The LEDs of a virtual board: their files, and what can be seen of them.
#include <gif_lib.h>
#include <gmock/gmock.h>
#include <pty.h>

#include "tests/test_board.h"

using namespace testing;

namespace {

const std::string kEffects = SOURCES "/host/board/boards/demo_panel/vendor/etc/leds/";

class Leds : public Test {
  protected:
    void SetUp() override {
        if (!mBoard.withoutFuse().empty()) GTEST_SKIP() << mBoard.withoutFuse();
    }
    std::string attribute(const std::string& name) {
        return mBoard.path("/sys/class/rgbled/" + name);
    }
    // As the daemon does it. False when the driver refuses.
    bool write(const std::string& name, const std::string& record) {
        FILE* file = fopen(attribute(name).c_str(), "w+e");
        fputs(record.c_str(), file);
        return fclose(file) == 0;
    }
    std::string seen(const std::vector<std::string>& words, int code = 0) {
        std::string said;
        EXPECT_EQ(mBoard.ask(words, &said), code);
        return said;
    }
    std::unique_ptr<ChildProcess> viewer(const std::string& words) {
        return std::make_unique<ChildProcess>(
                std::vector<std::string>{"sh", "-c", "exec " TARQCTL " " + words});
    }

    const TestBoard mBoard{"<leds count='12'/>"};
};

TEST_F(Leds, trace_has_each_write_as_a_record_in_the_order_of_the_driver) {
    EXPECT_TRUE(write("set_color", "3 ff8000"));
    EXPECT_FALSE(write("set_color", "c \xff\n"));
    EXPECT_TRUE(write("get_color", "3"));
    EXPECT_EQ(readFile(attribute("get_color")), "ff8000\n");
    mBoard.command({"hold", "set_color"});
    ChildProcess late({"sh", "-c", "printf '4 1' >" + attribute("set_color")});
    const std::string place = "/proc/" + std::to_string(late.pid()) + "/wchan";
    EXPECT_TRUE(eventually([&] { return readFile(place) == "request_wait_answer"; }));
    EXPECT_TRUE(write("set_brightness", "4 80"));
    const auto follower = viewer("trace -f");
    for (const char* line : {"set_color 3 ff8000", "set_color c \xef\xbf\xbd\\n (refused)",
                             "get_color 3", "set_brightness 4 80"}) {
        EXPECT_EQ(follower->readLine(), line);
    }
    mBoard.command({"release", "set_color"});
    EXPECT_EQ(follower->readLine(), "set_color 4 1");
    follower->kill(SIGINT);
    EXPECT_EQ(follower->wait(), 0);
    EXPECT_THAT(
            seen({"trace", "--json"}),
            MatchesRegex("\\{\"leds\":12\\}\n"
                         "\\{\"ms\":[0-9]+,\"attribute\":\"set_color\",\"text\":\"3 ff8000\"\\}\n"
                         "\\{[^}]*\"text\":\"c [^\"]*\\\\n\",\"refused\":true\\}\n(.*\n)*"));
}

TEST_F(Leds, colours_are_a_line_for_each_change_or_blocks_on_a_terminal_that_is_left_as_it_was) {
    const auto text = viewer("leds");
    const std::string dark = " 4:000000 5:000000 6:000000 7:000000 8:000000 9:000000 a:000000 b:";
    EXPECT_EQ(text->readLine(), "0:000000 1:000000 2:000000 3:000000" + dark + "000000");
    winsize size = {24, 17, 0, 0};  // three blocks in a row
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) execl(TARQCTL, TARQCTL, "leds", nullptr);
    fcntl(terminal, F_SETFL, O_NONBLOCK);
    std::string shown;
    const auto shows = [&](const std::string& what) {
        return eventually([&] {
            char chunk[4096];
            const ssize_t count = read(terminal, chunk, sizeof(chunk));
            if (count > 0) shown.append(chunk, static_cast<size_t>(count));
            return shown.find(what) != std::string::npos;
        });
    };
    EXPECT_TRUE(shows("  2  \x1b[0m\r\n"));
    EXPECT_TRUE(write("set_color", "b 80c0ff"));
    EXPECT_THAT(text->readLine(), EndsWith("b:80c0ff"));
    EXPECT_TRUE(shows("\x1b[48;2;128;192;255m  b  \x1b[0m"));
    size.ws_col = 100;
    ioctl(terminal, TIOCSWINSZ, &size);
    EXPECT_TRUE(shows("  b  \x1b[0m \r\n"));
    EXPECT_EQ(::write(terminal, "\x03", 1), 1);
    EXPECT_TRUE(shows("\x1b[0m\x1b[?25h\x1b[?1049l"));
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    close(terminal);
}

TEST_F(Leds, gif_shows_an_effect_in_its_time_and_is_small) {
    const std::string path = mBoard.directory() + "/x.gif";
    const struct {
        std::string name;
        int duration;
        int first;  // red of LED 0 in the first frame, never quite dark
    } kGifs[] = {{"wave_fast", 960, 0x91},
                 {"breathing", 3840, 0x24},
                 {"alert", 800, 0xff},
                 {"progress", 3000, 0x91},
                 {"rainbow", 2400, 0xff}};
    for (const auto& [name, duration, first] : kGifs) {
        EXPECT_EQ(seen({"leds", "--gif", path, "--effect", kEffects + name + ".xml"}), "");
        const std::string bytes = readFile(path);
        EXPECT_LT(bytes.size(), 200'000u) << name;
        if (name == "wave_fast") {
            EXPECT_TRUE(bytes == readFile(SOURCES "/docs/wave_fast.gif")) << "draw it anew";
        }
        EXPECT_EQ(bytes.find("NETSCAPE2.0") == std::string::npos, name == "progress");
        GifFileType* gif = DGifOpenFileName(path.c_str(), nullptr);
        ASSERT_EQ(DGifSlurp(gif), GIF_OK) << name;
        const int led = gif->SavedImages[0].RasterBits[36 * gif->SWidth + gif->SWidth / 2];
        EXPECT_EQ(gif->SColorMap->Colors[led].Red, first) << name;
        int time = 0;
        for (int i = 0; i < gif->ImageCount; ++i) {
            GraphicsControlBlock control;
            DGifSavedExtensionToGCB(gif, i, &control);
            time += control.DelayTime * 10;
        }
        EXPECT_EQ(time, duration) << name;
        DGifCloseFile(gif, nullptr);
    }
}

TEST_F(Leds, effect_that_cannot_be_drawn_is_one_error_line) {
    const std::string file = "/data/x.xml", gif = mBoard.directory() + "/x.gif";
    const struct {
        const char* xml;
        int code;
        const char* why;
    } kWrong[] = {{"<e>\n<led id='c'><eff s='1'>0</eff></led></e>", 1,
                   "x.xml:2: the driver refuses \"c 0 1\""},
                  {"<e loop='1' duration='9'/>", 1,
                   "x.xml: the driver needs loop, interval and duration"},
                  {"<e", 1, "x.xml: it is no XML"}};
    for (const auto& row : kWrong) {
        writeFile(mBoard.path(file), row.xml);
        EXPECT_THAT(seen({"leds", "--gif", gif, "--effect", file}, row.code), HasSubstr(row.why));
    }
    EXPECT_THAT(seen({"leds", "--gif", gif}, 2), HasSubstr("no effect runs"));
    EXPECT_FALSE(std::filesystem::exists(gif));
}

}  // namespace
