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
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "host/run/receiver_wire.h"
#include "host/run/socket.h"
#include "host/run/text.h"

namespace tarq::board {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

static constexpr timeval kPatience = {1, 0};  // with a program that takes nothing

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

Words Receiver::names() const {
    return {"receiver", "receiver_status", "receiver_rssi"};
}

bool Receiver::perform(const Words& words) {
    if (words[0] == "key" && (words.size() == 5 || words.size() == 6)) {
        std::vector<int32_t> key;
        for (size_t i = 1; i < words.size(); ++i) key.push_back(numberFrom(words[i]));
        receive(key);
        return true;
    }
    const Words own = names();
    if (words.size() != 3 || std::find(own.begin(), own.end(), words[1]) == own.end()) return false;
    const std::string what = words[0] + " " + words[1];
    if (what == "fault receiver") {
        require(host::findFault(host::kReceiverFaults, words[2], &mFault));
    } else if (what == "set receiver_status") {
        mStatus = numberFrom(words[2]);
    } else if (what == "set receiver_rssi") {
        mRssiDBm = numberFrom(words[2]);
    } else {
        throw std::invalid_argument(
                "can only be set: receiver_status, receiver_rssi; or have a "
                "fault: receiver");
    }
    tellState();
    return true;
}

void Receiver::tell(std::vector<host::NodeState>* nodes) const {
    const bool isAbsent = mFault == host::ReceiverFault::kAbsent;
    nodes->push_back({host::kReceiver, "", isAbsent ? host::kNotThere : host::kThere,
                      host::nameOf(host::kReceiverFaults, mFault)});
}

// An absent one has the state of none.
void Receiver::tellState() const {
    const bool isAbsent = mFault == host::ReceiverFault::kAbsent;
    const std::string next = mBoard.directory + host::kRadio + "/next";
    std::ofstream out(next);
    out << (isAbsent ? 0 : mStatus) << ' ' << (isAbsent ? 0 : mRssiDBm) << '\n';
    if (!out.flush()) throw std::system_error(errno, std::system_category(), next);
    fs::rename(next, mBoard.directory + host::kReceiverState);
}

// key: three values, the frequency, and perhaps the signal strength in dBm.
void Receiver::receive(const std::vector<int32_t>& key) {
    const auto refuse = [](const std::string& why) {
        throw std::runtime_error("not heard: " + why);
    };
    if (mFault == host::ReceiverFault::kAbsent) refuse("the receiver is absent");
    if (mFault == host::ReceiverFault::kMute) refuse("the receiver is muted");
    const int32_t rssiDBm = key.size() > 4 ? key[4] : mRssiDBm;
    const host::Reception reception = {key[0], key[1], key[2], rssiDBm};
    const int program = host::connectTo(mBoard.directory + host::tunedSocket(key[3]), SOCK_DGRAM);
    setsockopt(program, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof(kPatience));
    const bool isTaken = send(program, &reception, sizeof(reception), 0) == sizeof(reception);
    const bool isLate = errno == EAGAIN;
    close(program);
    if (!isTaken) refuse(isLate ? "nobody takes what it receives" : whoListens());
    mRssiDBm = rssiDBm;
    tellState();
}

std::string Receiver::whoListens() const {
    for (const fs::directory_entry& entry :
         fs::directory_iterator(mBoard.directory + host::kRadio)) {
        uint32_t frequency = 0;
        const std::string name = entry.path().filename();
        if (sscanf(name.c_str(), "%8x", &frequency) == 1 && host::isSocketOpen(entry.path())) {
            return "the receiver is tuned to " + std::to_string(static_cast<int32_t>(frequency));
        }
    }
    return "no program listens";
}

}  // namespace tarq::board
