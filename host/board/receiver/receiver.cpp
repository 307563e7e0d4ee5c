// Nobody connects to the receiver: it leaves its state in a file, where libradiokey looks when it
// is asked, and a key goes to the socket of the program that listens at its frequency. The kernel
// knows whether there is one and whether it has room, so a key that was not refused is in its
// queue.
#include "host/board/receiver/receiver.h"

#include <errno.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "host/board/attributes.h"
#include "host/run/receiver_wire.h"

namespace tarq::board {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

static constexpr timeval kPatience = {1, 0};  // with a program that takes nothing

Receiver::~Receiver() {
    if (mSocket >= 0) close(mSocket);
}

void Receiver::open(const fs::path& board) {
    mBoard = board;
    mkdir((mBoard + host::kRadio).c_str(), 0700);
    tellState();  // the first that needs it
    mSocket = host::openSocket(mBoard + host::kReceiverSocket, bind);
    if (mSocket == -ENAMETOOLONG) {
        throw std::runtime_error(mBoard + ": the path of a board has at most 91 characters");
    }
    if (mSocket < 0) throw std::system_error(-mSocket, std::system_category(), mBoard);
}

Words Receiver::names() const {
    return {"receiver", "receiver_status", "receiver_rssi"};
}

bool Receiver::perform(const Words& words) {
    if (words[0] == "key" && (words.size() == 5 || words.size() == 6)) {
        std::vector<int32_t> key;
        for (size_t i = 1; i < words.size(); ++i) key.push_back(toInt32(words[i]));
        receive(key);
        return true;
    }
    const Words own = names();
    if (words.size() != 3 || std::find(own.begin(), own.end(), words[1]) == own.end()) return false;
    const std::string what = words[0] + " " + words[1];
    if (what == "fault receiver") {
        setFault(words[2]);
    } else if (what == "set receiver_status") {
        mStatus = toInt32(words[2]);
    } else if (what == "set receiver_rssi") {
        mRssiDBm = toInt32(words[2]);
    } else {
        throw std::invalid_argument(
                "can only be set: receiver_status, receiver_rssi; or have a "
                "fault: receiver");
    }
    tellState();
    return true;
}

void Receiver::setFault(const std::string& name) {
    const std::pair<const char*, Fault> faults[] = {
            {"none", Fault::none}, {"mute", Fault::mute}, {"absent", Fault::absent}};
    const auto* found = std::find_if(std::begin(faults), std::end(faults),
                                     [&](const auto& fault) { return name == fault.first; });
    if (found == std::end(faults)) {
        throw std::invalid_argument("a receiver has no fault \"" + name +
                                    "\"; there are: none mute absent");
    }
    mFault = found->second;
}

// An absent one has the state of none.
void Receiver::tellState() const {
    const bool isAbsent = mFault == Fault::absent;
    const std::string next = mBoard + host::kRadio + "/next";
    std::ofstream out(next);
    out << (isAbsent ? 0 : mStatus) << ' ' << (isAbsent ? 0 : mRssiDBm) << '\n';
    if (!out.flush()) throw std::system_error(errno, std::system_category(), next);
    fs::rename(next, mBoard + host::kReceiverState);
}

// key: three values, the frequency, and perhaps the signal strength in dBm.
void Receiver::receive(const std::vector<int32_t>& key) {
    const auto refuse = [](const std::string& why) {
        throw std::runtime_error("not heard: " + why);
    };
    if (mFault == Fault::absent) refuse("the receiver is absent");
    if (mFault == Fault::mute) refuse("the receiver is muted");
    const int32_t rssiDBm = key.size() > 4 ? key[4] : mRssiDBm;
    const host::Reception reception = {key[0], key[1], key[2], rssiDBm};
    const int program = host::openSocket(mBoard + host::tunedSocket(key[3]), connect);
    setsockopt(program, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof(kPatience));
    const bool isTaken = send(program, &reception, sizeof(reception), 0) == sizeof(reception);
    const bool isLate = errno == EAGAIN;
    close(program);
    if (!isTaken) refuse(isLate ? "nobody takes what it receives" : whoListens());
    mRssiDBm = rssiDBm;
    tellState();
}

std::string Receiver::whoListens() const {
    for (const fs::directory_entry& entry : fs::directory_iterator(mBoard + host::kRadio)) {
        uint32_t frequency = 0;
        const std::string name = entry.path().filename();
        if (sscanf(name.c_str(), "%8x", &frequency) == 1 && host::isSocketOpen(entry.path())) {
            return "the receiver is tuned to " + std::to_string(static_cast<int32_t>(frequency));
        }
    }
    return "no program listens";
}

}  // namespace tarq::board
