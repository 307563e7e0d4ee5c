// libradiokey on a host: the receiver is the virtual board's, at the other end of a socket.
#include "radiokey/radiokey.h"

#include <host/process_board.h>
#include <host/receiver_packets.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using tarq::host::ReceiverPacket;

constexpr milliseconds kPatience{1000};  // of a poll, and with a board that does not answer

// Shared: it must stay open while another thread waits for it.
class Connection {
  public:
    explicit Connection(int fd) : mFd(fd) {}
    ~Connection() { close(mFd); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Until there is something to read, or the other end is gone.
    void wait(milliseconds time) const {
        pollfd waited = {mFd, POLLIN, 0};
        ::poll(&waited, 1, static_cast<int>(time.count()));
    }
    // The next packet, which stays to be read once more. 0 when the other end is gone, negative
    // when there is none now.
    ssize_t peek(ReceiverPacket* packet) const {
        return recv(mFd, packet, sizeof(*packet), MSG_PEEK | MSG_DONTWAIT);
    }
    void skip() const {
        ReceiverPacket packet;
        recv(mFd, &packet, sizeof(packet), MSG_DONTWAIT);
    }
    // False when there is no room now.
    bool send(const ReceiverPacket& packet) const {
        return ::send(mFd, &packet, sizeof(packet), MSG_NOSIGNAL | MSG_DONTWAIT) == sizeof(packet);
    }

  private:
    const int mFd;
};

std::shared_ptr<Connection> connectToReceiver() {
    const std::string path =
            tarq::host::processBoard().directory + "/" + tarq::host::kReceiverSocket;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) return nullptr;
    memcpy(address.sun_path, path.c_str(), path.size());
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) return nullptr;
    auto connection = std::make_shared<Connection>(fd);
    const bool connected =
            connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    return connected ? connection : nullptr;
}

// The one receiver of this process. The socket is its only queue: a reception stays there until it
// is polled, and states behind it are not seen before.
class Receiver {
  public:
    // No frequency: off.
    void tune(std::optional<int32_t> frequency) {
        const std::lock_guard<std::mutex> lock(mLock);
        mFrequency = frequency;
        mIsTuningDue = true;
        ReceiverPacket reception;
        settle(&reception);
    }

    // 0 while there is no receiver.
    int32_t status() {
        const std::lock_guard<std::mutex> lock(mLock);
        ReceiverPacket reception;
        settle(&reception);
        return mStatus;
    }
    int32_t rssi() {
        const std::lock_guard<std::mutex> lock(mLock);
        ReceiverPacket reception;
        settle(&reception);
        return std::exchange(sPolledRssi, std::nullopt).value_or(mRssi);
    }

    // False when none came in time.
    bool poll(int32_t* value1, int32_t* value2, int32_t* value3) {
        std::unique_lock<std::mutex> lock(mLock);
        const auto deadline = steady_clock::now() + kPatience;
        sPolledRssi.reset();
        for (;;) {
            ReceiverPacket packet;
            if (settle(&packet)) {
                mConnection->skip();
                *value1 = packet.values[0];
                *value2 = packet.values[1];
                *value3 = packet.values[2];
                sPolledRssi = mRssi = packet.values[3];
                return true;
            }
            const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
            if (left.count() <= 0) return false;
            waitFor(left, &lock);
        }
    }

  private:
    // Makes sure of the connection, and takes what the receiver tells up to its next reception.
    // True when there is one, which stays.
    bool settle(ReceiverPacket* reception) {
        for (;;) {
            if (!mConnection && !connect()) return false;
            if (mIsTuningDue) sendTuning();
            const ssize_t size = mConnection->peek(reception);
            if (size < 0) return false;
            if (size == 0) {
                disconnect();
            } else if (reception->kind == ReceiverPacket::kReception) {
                return true;
            } else {
                takeState(*reception);
            }
        }
    }

    // The board greets whoever connects with its state. One that is slow may do so later, too.
    bool connect() {
        mConnection = connectToReceiver();
        if (!mConnection) return false;
        mConnection->wait(kPatience);
        mIsTuningDue = mFrequency.has_value();
        mConnected.notify_all();
        return true;
    }

    void disconnect() {
        mConnection = nullptr;
        mStatus = 0;
        mRssi = 0;
    }

    void takeState(const ReceiverPacket& packet) {
        mConnection->skip();
        mStatus = packet.values[0];
        mRssi = packet.values[1];
    }

    // Not waiting for room, which the receiver may not make before its receptions are polled: what
    // is not sent now is sent with the next call.
    void sendTuning() {
        const auto kind = mFrequency ? ReceiverPacket::kTune : ReceiverPacket::kOff;
        mIsTuningDue = !mConnection->send({kind, {mFrequency.value_or(0), 0, 0, 0}});
    }

    void waitFor(milliseconds time, std::unique_lock<std::mutex>* lock) {
        const std::shared_ptr<Connection> connection = mConnection;
        if (!connection) {
            mConnected.wait_for(*lock, time);
            return;
        }
        lock->unlock();
        connection->wait(time);
        lock->lock();
    }

    // Of the reception that the calling thread has polled, until it asks: what comes behind the
    // reception, a state or the receiver's end, must not change it.
    static thread_local std::optional<int32_t> sPolledRssi;

    std::mutex mLock;
    std::condition_variable mConnected;
    std::shared_ptr<Connection> mConnection;  // null without a receiver
    std::optional<int32_t> mFrequency;
    bool mIsTuningDue = false;
    int32_t mStatus = 0;
    int32_t mRssi = 0;
};

thread_local std::optional<int32_t> Receiver::sPolledRssi;

// Never destroyed: threads poll until the process is gone.
Receiver& receiver() {
    static Receiver& instance = *new Receiver;
    return instance;
}

}  // namespace

int32_t radiokey_init(int32_t frequency) {
    receiver().tune(frequency);
    return 0;
}

int32_t radiokey_reset(int32_t frequency) {
    receiver().tune(frequency);
    return 0;
}

int32_t radiokey_uninit() {
    receiver().tune(std::nullopt);
    return 0;
}

int32_t radiokey_detect_chip() {
    return receiver().status();
}

int32_t radiokey_get_rssi_dbm() {
    return receiver().rssi();
}

int32_t radiokey_recv_poll(int32_t* value1, int32_t* value2, int32_t* value3) {
    return receiver().poll(value1, value2, value3) ? 0 : -1;
}
