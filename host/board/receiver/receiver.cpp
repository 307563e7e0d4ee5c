#include "host/board/receiver/receiver.h"

#include <errno.h>
#include <fcntl.h>
#include <host/receiver_packets.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "host/board/hardware/attributes.h"
#include "host/run/socket.h"
#include "host/run/text.h"

namespace tarq::board {

using host::ReceiverPacket;
using Words = std::vector<std::string>;

static int32_t toInt32(const std::string& text) {
    int32_t number = 0;
    const std::string why = host::parseInt32(text, &number);
    if (!why.empty()) throw std::invalid_argument(why);
    return number;
}

static constexpr int kPatience = 1000;  // ms, with a program that takes nothing

// Waits for room. False when there was none, or the program is gone.
static bool send(int fd, const ReceiverPacket& packet, int patience) {
    const auto isSent = [&] {
        return ::send(fd, &packet, sizeof(packet), MSG_NOSIGNAL | MSG_DONTWAIT) == sizeof(packet);
    };
    if (isSent()) return true;
    pollfd writable = {fd, POLLOUT, 0};
    return errno == EAGAIN && ::poll(&writable, 1, patience) > 0 && isSent();
}

Receiver::Receiver(int32_t status, int32_t rssiDBm)
    : mWake(eventfd(0, EFD_CLOEXEC)), mStatus(status), mRssiDBm(rssiDBm) {}

Receiver::~Receiver() {
    {
        const std::lock_guard lock(mMutex);
        mEnding = true;
    }
    wake();
    if (mThread.joinable()) mThread.join();
    hangUp();
    close(mWake);
}

void Receiver::wake() const {
    eventfd_write(mWake, 1);
}

void Receiver::open(const host::Board& board) {
    const std::lock_guard lock(mMutex);
    mBoard = board.directory;
    listen();
    mThread = std::thread([this] { serve(); });
}

void Receiver::listen() {
    mSocketFd = host::listenAt(mBoard / host::kReceiverSocket, 0600);
    fcntl(mSocketFd, F_SETFL, O_NONBLOCK);
}

void Receiver::hangUp() {
    for (const Listener& listener : mListeners) close(listener.fd);
    mListeners.clear();
    if (mSocketFd < 0) return;
    unlink((mBoard / host::kReceiverSocket).c_str());
    close(mSocketFd);
    mSocketFd = -1;
}

// Waits without the lock, so a descriptor may be another one's by the time it is reported: which
// of them it was does not count, only that something came.
void Receiver::serve() {
    std::unique_lock lock(mMutex);
    while (!mEnding) {
        takeWhatCame();
        std::vector<pollfd> waited = {{mWake, POLLIN, 0}};
        if (mSocketFd >= 0) waited.push_back({mSocketFd, POLLIN, 0});
        for (const Listener& listener : mListeners) waited.push_back({listener.fd, POLLIN, 0});
        lock.unlock();
        ::poll(waited.data(), waited.size(), -1);
        if (eventfd_t count; waited[0].revents != 0) eventfd_read(mWake, &count);
        lock.lock();
    }
}

void Receiver::takeWhatCame() {
    for (int fd;
         mSocketFd >= 0 && (fd = accept4(mSocketFd, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        mListeners.push_back({fd, {}});
        send(fd, {ReceiverPacket::kState, {mStatus, mRssiDBm, 0, 0}}, 0);
    }
    const auto isGone = [this](Listener& listener) {
        const bool isThere = take(&listener);
        if (!isThere) close(listener.fd);
        return !isThere;
    };
    mListeners.erase(std::remove_if(mListeners.begin(), mListeners.end(), isGone),
                     mListeners.end());
}

// False for one that is gone, or sends what is no packet. One that never stops sending has to wait.
bool Receiver::take(Listener* listener) const {
    for (int packets = 0; packets < 64; ++packets) {
        ReceiverPacket packet = {};
        const ssize_t size = recv(listener->fd, &packet, sizeof(packet), MSG_DONTWAIT | MSG_TRUNC);
        if (size < 0 && errno == EAGAIN) return true;
        if (size != sizeof(packet)) return false;
        listener->frequency.reset();
        if (packet.kind == ReceiverPacket::kTune) listener->frequency = packet.values[0];
    }
    return true;
}

// Who takes nothing is hung up on: when it connects again, it is greeted with the state.
void Receiver::tellState() const {
    const ReceiverPacket state = {ReceiverPacket::kState, {mStatus, mRssiDBm, 0, 0}};
    for (const Listener& listener : mListeners) {
        if (!send(listener.fd, state, kPatience)) shutdown(listener.fd, SHUT_RDWR);
    }
}

Words Receiver::names() const {
    return {"receiver", "receiver_status", "receiver_rssi"};
}

bool Receiver::perform(const Words& words) {
    const Words own = names();
    const bool isKey = words[0] == "key" && (words.size() == 5 || words.size() == 6);
    const bool isNamed =
            words.size() == 3 && std::find(own.begin(), own.end(), words[1]) != own.end();
    if (!isKey && !isNamed) return false;
    const std::lock_guard lock(mMutex);
    takeWhatCame();
    if (isKey) {
        std::vector<int32_t> key;
        for (size_t i = 1; i < words.size(); ++i) key.push_back(toInt32(words[i]));
        receive(key);
    } else if (words[0] == "set" && words[1] != "receiver") {
        set(words[1], toInt32(words[2]));
    } else if (words[0] == "fault" && words[1] == "receiver") {
        setFault(words[2]);
    } else {
        throw std::invalid_argument(
                "can only be set: receiver_status, receiver_rssi; or have a "
                "fault: receiver");
    }
    wake();
    return true;
}

void Receiver::set(const std::string& name, int32_t value) {
    (name == "receiver_status" ? mStatus : mRssiDBm) = value;
    tellState();
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
    if (found->second == Fault::absent) hangUp();
    if (found->second != Fault::absent && mFault == Fault::absent) listen();
    mFault = found->second;
}

// key: three values, the frequency, and perhaps the signal strength in dBm.
void Receiver::receive(const std::vector<int32_t>& key) {
    const auto refuse = [](const std::string& why) {
        throw std::runtime_error("not heard: " + why);
    };
    if (mFault == Fault::absent) refuse("the receiver is absent");
    if (mFault == Fault::mute) refuse("the receiver is muted");
    std::string frequencies;
    size_t heard = 0;
    size_t tuned = 0;
    const int32_t rssiDBm = key.size() > 4 ? key[4] : mRssiDBm;
    for (const Listener& listener : mListeners) {
        if (!listener.frequency) continue;
        frequencies += (frequencies.empty() ? "" : " and ") + std::to_string(*listener.frequency);
        if (*listener.frequency != key[3]) continue;
        ++tuned;
        heard += send(listener.fd, {ReceiverPacket::kReception, {key[0], key[1], key[2], rssiDBm}},
                      kPatience);
    }
    if (frequencies.empty()) refuse("no program listens");
    if (tuned == 0) refuse("the receiver is tuned to " + frequencies);
    if (heard < tuned) refuse("nobody takes what it receives");
    mRssiDBm = rssiDBm;
}

}  // namespace tarq::board
