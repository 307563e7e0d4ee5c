// What the kernel promises for each kind of file that the virtual board plays.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/ioctl.h>

#include "tests/test_board.h"

namespace {

class BoardContract : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        sBoard = new TestBoard(
                "<touch_panel type='gt9xx' id='5'/><display reg='000005' id1_gpio='42'/>"
                "<gpio number='42' level='1' direction='out'/><gpio number='43' level='1'/>"
                "<camera node='0' sensor='gc5035'/>");
    }
    static void TearDownTestSuite() { delete sBoard; }
    void SetUp() override {
        if (!sBoard->withoutFuse().empty()) GTEST_SKIP() << sBoard->withoutFuse();
    }
    static TestBoard* sBoard;
};
TestBoard* BoardContract::sBoard = nullptr;

TEST_F(BoardContract, camera_answers_with_its_sensor) {
    const int fd = open(sBoard->path("/dev/v4l-subdev0").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    std::string answer(3766, 'x');
    EXPECT_EQ(ioctl(fd, 0x8EB656C0, answer.data()), 0);
    EXPECT_EQ(answer, std::string("gc5035") + std::string(3760, '\0'));
    close(fd);
    EXPECT_EQ(readFile(sBoard->path("/sys/class/tpinfo/tpinfo_ic_info")), "type:gt9xx\nid:5\n");
}

}  // namespace
