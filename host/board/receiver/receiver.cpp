// Nobody connects to the receiver: it leaves its state in a file, where libradiokey looks when it
// is asked, and a key goes to the socket of the program that listens at its frequency. The kernel
// knows whether there is one and whether it has room, so a key that was not refused is in its
// queue.
#include "host/board/receiver/receiver.h"

#include <errno.h>
#include <stdio.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "host/run/descriptors.h"
#include "host/run/receiver_wire.h"
#include "host/run/text.h"

namespace tarq::board {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

static constexpr timeval kPatience = {1, 0};  // with a program that takes nothing

// A program that runs already sees ten times a second that the board has been switched on.
static constexpr std::chrono::milliseconds kUntilFound{500};

static int32_t numberFrom(const std::string& text) {
    int32_t number = 0;
    require(host::parseInt32(text, &number));
    return number;
}

Receiver::~Receiver() {
    if (mSocket >= 0) close(mSocket);
}

void Receiver::open(const host::Board& board) {
    mBoard = board;
    mkdir((mBoard.directory + host::kRadio).c_str(), 0700);
    tellState();  // the first that needs it
    mSocket = host::bindTo(mBoard.directory + host::kReceiverSocket, SOCK_DGRAM);
    if (mSocket >= 0) return;
    throw std::runtime_error(mBoard.directory + ": " + host::socketError(-mSocket));
}

Words Receiver::names(const std::string& command) const {
    if (command == "fault") return {host::kReceiver};
    return command == "set" ? Words{"receiver_status", "receiver_rssi"} : Words{};
}

// A wrong number changes nothing; a state that was set is told at once.
bool Receiver::perform(const Words& words) {
    if (words[0] == "key" && (words.size() == 5 || words.size() == 6)) {
        std::vector<int32_t> key;
        for (size_t i = 1; i < words.size(); ++i) key.push_back(numberFrom(words[i]));
        receive(key);
        return true;
    }
    if (words.size() < 2 || words[1].rfind(host::kReceiver, 0) != 0) return false;
    const std::string what = words[0] + " " + words[1];
    if (what == "fault receiver" && words.size() == 3) {
        require(host::findFault(host::kReceiverFaults, words[2], &mFault));
    } else if (what == "set receiver_status" && words.size() == 3) {
        mStatus = numberFrom(words[2]);
    } else if (what == "set receiver_rssi" && words.size() == 3) {
        mRssiDBm = numberFrom(words[2]);
    } else {
        throw std::invalid_argument(
                "of a receiver, receiver_status and receiver_rssi can be set, and receiver can "
                "have a fault");
    }
    tellState();
    return true;
}

void Receiver::tell(std::vector<host::NodeState>* nodes) const {
    const bool isAbsent = mFault == host::ReceiverFault::kAbsent;
    nodes->push_back({host::kReceiver, "", isAbsent ? host::kNotThere : host::kThere,
                      host::nameOf(host::kReceiverFaults, mFault)});
}

// An absent one has the state of none. A reader must never see half of it, so a new file is moved
// into the place of the old one.
void Receiver::tellState() const {
    const bool isAbsent = mFault == host::ReceiverFault::kAbsent;
    const std::string next = mBoard.directory + host::kRadio + "/next";
    std::ofstream out(next);
    out << (isAbsent ? 0 : mStatus) << ' ' << (isAbsent ? 0 : mRssiDBm) << '\n';
    if (!out.flush()) throw std::system_error(errno, std::system_category(), next);
    fs::rename(next, mBoard.directory + host::kReceiverState);
}

// key: three values, the frequency, and perhaps the signal strength in dBm. A key that arrives
// changes what the receiver hears, until the next one.
void Receiver::receive(const std::vector<int32_t>& key) {
    const auto refuse = [](const std::string& why) {
        throw std::runtime_error("not heard: " + why);
    };
    if (mFault == host::ReceiverFault::kAbsent) refuse("the receiver is absent");
    if (mFault == host::ReceiverFault::kMute) refuse("the receiver is muted");
    const int32_t rssiDBm = key.size() > 4 ? key[4] : mRssiDBm;
    const host::Reception reception = {key[0], key[1], key[2], rssiDBm};
    const int program = connectToListener(key[3]);
    setsockopt(program, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof(kPatience));
    ssize_t sent;
    do {  // a board that was stopped meanwhile and goes on gets EINTR
        sent = send(program, &reception, sizeof(reception), 0);
    } while (sent < 0 && errno == EINTR);
    const bool isTaken = sent == sizeof(reception);
    const bool isLate = !isTaken && errno == EAGAIN;
    close(program);
    if (isLate) refuse("nobody takes what it receives");
    if (!isTaken) refuse(whyNobodyListens(key[3]));
    mRssiDBm = rssiDBm;
    tellState();
}

// A descriptor, or -1 where nobody listens at the frequency. Where nobody listens at any, one that
// is about to is waited for.
int Receiver::connectToListener(int32_t frequency) const {
    const auto end = std::chrono::steady_clock::now() + kUntilFound;
    for (;;) {
        const int fd = host::connectTo(mBoard.directory + host::tunedSocket(frequency), SOCK_DGRAM);
        const std::optional<int32_t> tuned = tunedFrequency();
        const bool isOver =
                (tuned && *tuned != frequency) || std::chrono::steady_clock::now() > end;
        if (fd >= 0 || isOver) return std::max(fd, -1);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

// A socket that nobody has open was left by a program that was killed, and tells nothing.
std::optional<int32_t> Receiver::tunedFrequency() const {
    for (const fs::directory_entry& entry :
         fs::directory_iterator(mBoard.directory + host::kRadio)) {
        uint32_t frequency = 0;
        const std::string name = entry.path().filename();
        if (sscanf(name.c_str(), "%8x", &frequency) == 1 && host::isSocketOpen(entry.path())) {
            return static_cast<int32_t>(frequency);
        }
    }
    return std::nullopt;
}

// The commonest mistake is a key at another frequency, which the refusal names.
std::string Receiver::whyNobodyListens(int32_t frequency) const {
    const std::optional<int32_t> tuned = tunedFrequency();
    if (!tuned) return "no program listens";
    return "the receiver is tuned to " + std::to_string(*tuned) + ", the key was sent at " +
           std::to_string(frequency);
}

}  // namespace tarq::board
