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
    void SetUp() override { mBoard.skipWithoutFuse(); }
    std::string attribute(const std::string& name) {
        return mBoard.device("/sys/class/rgbled/" + name);
    }
    // As the daemon does it. False when the driver refuses.
    bool write(const std::string& name, const std::string& record) {
        FILE* file = fopen(attribute(name).c_str(), "w+e");
        fputs(record.c_str(), file);
        return fclose(file) == 0;
    }
    std::unique_ptr<ChildProcess> viewer(const std::string& words) {
        return std::make_unique<ChildProcess>(Words{"sh", "-c", "exec " TARQCTL " " + words});
    }

    TestBoard mBoard{"<leds count='12'/>"};
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
    const std::string kNotTaken =
            "set_color c \xef\xbf\xbd\\n (refused: LED 12 (hexadecimal c) is not within 0 to 11)";
    const auto follower = viewer("trace -f");
    for (const char* line :
         {"set_color 3 ff8000", kNotTaken.c_str(), "get_color 3", "set_brightness 4 80"}) {
        EXPECT_EQ(follower->readLine(), line);
    }
    mBoard.command({"release", "set_color"});
    EXPECT_EQ(follower->readLine(), "set_color 4 1");
    follower->kill(SIGINT);
    EXPECT_EQ(follower->wait(), 0);
    EXPECT_THAT(
            mBoard.ask({"trace", "--json"}),
            MatchesRegex("\\{\"leds\":12\\}\n"
                         "\\{\"ms\":[0-9]+,\"attribute\":\"set_color\",\"text\":\"3 ff8000\"\\}\n"
                         "\\{[^}]*\"text\":\"c [^\"]*\\\\n\",\"refused\":true,\"why\":\"LED "
                         "12[^\"]*\"\\}\n(.*\n)*"));
}

TEST_F(Leds, colours_are_a_line_for_each_change_or_blocks_on_a_terminal_that_is_left_as_it_was) {
    const auto text = viewer("leds");
    const std::string dark = " 4:000000 5:000000 6:000000 7:000000 8:000000 9:000000 10:000000 11:";
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
    EXPECT_TRUE(shows("   2 \x1b[0m\r\n"));
    EXPECT_TRUE(write("set_color", "b 80c0ff"));
    EXPECT_THAT(text->readLine(), EndsWith("11:80c0ff"));
    EXPECT_TRUE(shows("\x1b[48;2;128;192;255m  11 \x1b[0m"));
    size.ws_col = 100;
    ioctl(terminal, TIOCSWINSZ, &size);
    EXPECT_TRUE(shows("  11 \x1b[0m \r\n"));
    EXPECT_TRUE(shows("LEDs of " + mBoard.directory + "\x1b[K\r\nno effect plays; Ctrl-C ends"));
    EXPECT_THAT(mBoard.ask({"leds", "--once"}), AllOf(StartsWith("0:0"), EndsWith(" 11:80c0ff\n")));
    EXPECT_EQ(::write(terminal, "\x03", 1), 1);
    EXPECT_TRUE(shows("\x1b[0m\x1b[?25h\x1b[?1049l"));
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    close(terminal);
    mBoard.end(SIGKILL);
    EXPECT_EQ(text->wait(), 2);
}

TEST_F(Leds, gif_shows_an_effect_in_its_time_and_is_small) {
    const std::string path = mBoard.directory + "/x.gif";
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
        EXPECT_EQ(mBoard.ask({"leds", "--gif", path, "--effect", kEffects + name + ".xml"}), "");
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

// It has seventy colours of 20 ms, white, and black for 10 ms.
TEST_F(Leds, gif_without_a_board_is_drawn_and_says_what_it_lacks) {
    const TemporaryDirectory directory;
    std::string xml = "<e loop='0' interval='10' duration='1440'><led id='a'>";
    for (int i = 0; i < 70; ++i) xml += "<eff s='2'>" + std::to_string(100 + i) + "</eff>";
    writeFile(directory / "x.xml", xml + "<eff s='3'>ffffff</eff><eff s='1'>0</eff></led></e>");
    ChildProcess tool({"sh", "-c",
                       "cd " + directory.path() +
                               "; exec " TARQCTL " --board /nowhere leds --gif "
                               "x.gif --effect x.xml 2>&1"});
    EXPECT_THAT(
            tool.readAll(),
            AllOf(HasSubstr(": no board tells how many LEDs there are; LEDs 0 to 10 are drawn,"),
                  HasSubstr(": Not all is shown: it has steps shorter than 20 ms.\n"),
                  HasSubstr(": Its 72 colours are rounded: a GIF has fewer.\n")));
    EXPECT_EQ(tool.wait(), 0);
    GifFileType* gif = DGifOpenFileName((directory / "x.gif").c_str(), nullptr);
    ASSERT_EQ(DGifSlurp(gif), GIF_OK);
    int white = 0;
    for (int i = 0; i < gif->SColorMap->ColorCount; ++i) {
        const GifColorType& colour = gif->SColorMap->Colors[i];
        white += colour.Red == 0xff && colour.Green == 0xff && colour.Blue == 0xff;
    }
    EXPECT_EQ(white, 1);
    DGifCloseFile(gif, nullptr);
}

TEST_F(Leds, effect_that_cannot_be_drawn_is_told_with_each_cause) {
    const std::string file = "/data/x.xml", gif = mBoard.directory + "/x.gif";
    const std::string wrong =
            "<e loop='1' interval='1' duration='x'><led id='c'>\n"
            "<eff s='1'>0</eff></led></e>";
    const std::pair<std::string, std::vector<const char*>> kWrong[] = {
            {wrong,
             {"x.xml:1: the driver refuses \"duration x\": duration \"x\" is no decimal number\n",
              "x.xml:2: the driver refuses \"c 0 1\": LED 12 (hexadecimal c) is not within 0 to "
              "11\n",
              "x.xml: the driver refuses to play it: the effect has no duration\nhint: "}},
            {"<e>\n  <led>\n</e>",
             {"x.xml:2: an element is not closed", ": <led>; the daemon would send nothing"}}};
    for (const auto& [xml, why] : kWrong) {
        writeFile(mBoard.device(file), xml);
        const std::string said = mBoard.ask({"leds", "--gif", gif, "--effect", file}, 1);
        for (const char* line : why) EXPECT_THAT(said, HasSubstr(line));
    }
    EXPECT_THAT(mBoard.ask({"leds", "--gif", gif}, 2), HasSubstr("no effect runs"));
    EXPECT_FALSE(std::filesystem::exists(gif));
}

}  // namespace
