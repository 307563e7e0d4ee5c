// What happens to the board: remote keys, and a process that changes and breaks what is fitted,
// holds it, and stops the programs behind it. It leaves the board as it found it.
#include <host/process_board.h>
#include <signal.h>

#include "bench/soak/soak.h"
#include "host/run/control.h"

namespace soak {

using tarq::host::Answer;

static Answer ask(const std::vector<std::string>& words) {
    return tarq::host::askBoard(tarq::host::processBoard(), words);
}

// Clients tune the receiver to one of two frequencies; a key at the other one is not heard. A key
// that nobody took keeps its number for the next try.
int runKeys(Random random) {
    while (!isOver()) {
        for (int burst = random.number(1, 40); burst > 0 && !isOver(); --burst) {
            const int32_t number = shared->keysTaken + 1;
            shared->keysBegun = number;
            for (const char* frequency : {"433", "315"}) {
                const Answer answer = ask({"key", std::to_string(number),
                                           std::to_string(2 * number), std::to_string(3 * number),
                                           frequency, std::to_string(-(number % 100))});
                if (answer.error != 0) finding("keys", "the board is gone: %d", answer.error);
                if (!answer.isDone) continue;
                shared->keysTaken = number;
                break;
            }
            pauseMs(random.number(0, 3));
        }
        pauseMs(random.number(0, 700));
    }
    return 0;
}

namespace {

class Disturber {
  public:
    Disturber(const Random& random, pid_t daemon, pid_t board)
        : mRandom(random), mProcesses{daemon, board} {}

    void disturb() {
        switch (mRandom.number(1, 6)) {
            case 1:
                return forAWhile("hold", {}, "release", {}, 1500, true);
            case 2:
                return forAWhile("fault", {"slow"}, "fault", {"none"}, 1500, true);
            case 3:
                return stopProcess();
            case 4:
                return muteReceiver();
            case 5:
                return change();
            default:
                return forAWhile("fault",
                                 {mRandom.oneOf({"absent", "empty", "garbage", "directory",
                                                 "unreadable", "unwritable"})},
                                 "fault", {"none"}, 500, false);
        }
    }

    void heal() {
        order({"set", "touch_panel", "type:GT\nid:5\n"});
        order({"set", "hwid_flag", "00000003"});
    }

  private:
    using Words = std::vector<std::string>;

    void order(const Words& words) {
        ++shared->changes;
        const Answer answer = ask(words);
        if (answer.isDone) return;
        finding("disturber", "the board refuses %s %s: %s", words[0].c_str(), words[1].c_str(),
                answer.reason.c_str());
    }

    // Some node, or two at once; slows: calls may wait for it meanwhile.
    void forAWhile(const char* begin, const Words& how, const char* end, const Words& howEnded,
                   int mostMs, bool slows) {
        const std::string node =
                mRandom.oneOf({"touch_panel", "hwid_flag", "camera0", "set_color", "get_color",
                               "set_brightness", "standby_effect", "xml_effect_trans_state"});
        const auto say = [&](const char* command, const Words& more) {
            Words words = {command, node};
            words.insert(words.end(), more.begin(), more.end());
            order(words);
        };
        if (slows) ++shared->disturbances;
        say(begin, how);
        pauseMs(mRandom.number(20, mostMs));
        say(end, howEnded);
        if (slows) --shared->disturbances;
    }

    void stopProcess() {
        const pid_t process = mProcesses[mRandom.number(0, 1)];
        ++shared->disturbances;
        ++shared->changes;
        kill(process, SIGSTOP);
        pauseMs(mRandom.number(10, 400));
        kill(process, SIGCONT);
        --shared->disturbances;
    }

    void muteReceiver() {
        order({"fault", "receiver", mRandom.oneOf({"mute", "absent"})});
        pauseMs(mRandom.number(10, 300));
        order({"fault", "receiver", "none"});
    }

    void change() {
        order({"set", "touch_panel", mRandom.oneOf({"type:FT\nid:3\n", "type:", "nothing"})});
        order({"set", "hwid_flag", mRandom.oneOf({"00000001", "00000002", "ffffffff"})});
        order({"set", "receiver_rssi", std::to_string(mRandom.number(-120, 0))});
    }

    Random mRandom;
    const pid_t mProcesses[2];
};

}  // namespace

int runDisturber(Random random, pid_t daemon, pid_t board) {
    Disturber disturber(random, daemon, board);
    while (!isOver()) {
        disturber.disturb();
        pauseMs(random.number(20, 400));
    }
    disturber.heal();
    return 0;
}

}  // namespace soak
