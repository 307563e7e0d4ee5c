// libradiokey on a host: the receiver is the virtual board's, and host/run/receiver_wire.h says how
// the two meet. Every call first sees to it that the board finds this process's socket where it
// belongs, so either may be switched off and on again. A reception waits in that socket, and
// nowhere else, until it is polled; only a poll waits, and it holds no lock meanwhile.
#include "radiokey/radiokey.h"

#include <fcntl.h>
#include <host/process_board.h>
#include <poll.h>

#include <mutex>
#include <optional>
#include <utility>

#include "host/run/descriptors.h"
#include "host/run/receiver_wire.h"

namespace {

using tarq::host::processBoard;
using tarq::host::Reception;

constexpr int kPatience = 1000;  // ms, of a poll
constexpr int kLooks = 10;       // meanwhile, for a board that has been switched on anew

// What the board says of its receiver; zeros while there is none.
struct State {
    int32_t status = 0;
    int32_t rssiDBm = 0;
};

// The one receiver of this process.
class Receiver {
  public:
    // Sees to it that this process's socket is at its place, which is tuned if that is given, else
    // the one it was last told. False while there is no receiver.
    bool settle(const std::string& tuned = "") {
        const std::lock_guard<std::mutex> lock(mLock);
        if (!tuned.empty()) mTuned = tuned;
        if (!tarq::host::isSocketOpen(processBoard().directory + tarq::host::kReceiverSocket))
            return false;
        // It is nowhere before the first call, and when the board has been switched on anew.
        const std::string place = processBoard().directory + mTuned;
        if (rename(mPlace.c_str(), place.c_str()) == 0 || replaceSocket(place)) mPlace = place;
        return true;
    }

    State state() {
        State state;
        if (!settle()) return state;
        FILE* const file =
                fopen((processBoard().directory + tarq::host::kReceiverState).c_str(), "re");
        if (file == nullptr) return state;
        if (fscanf(file, "%d %d", &state.status, &state.rssiDBm) != 2) state = {};
        fclose(file);
        return state;
    }

    // Waits, but not long for one and the same socket: it may be replaced meanwhile.
    bool poll(Reception* reception) {
        for (int looks = 0; looks < kLooks; ++looks) {
            settle();
            pollfd waited = {mFd, POLLIN, 0};
            ::poll(&waited, 1, kPatience / kLooks);
            const ssize_t size = recv(mFd, reception, sizeof(*reception), MSG_DONTWAIT);
            if (size == sizeof(*reception)) return true;
        }
        return false;
    }

  private:
    // Under the same number, on which a poll may be waiting. What was heard before the board was
    // switched on anew is polled first.
    bool replaceSocket(const std::string& place) const {
        char waiting;
        if (recv(mFd, &waiting, sizeof(waiting), MSG_PEEK | MSG_DONTWAIT) >= 0) return false;
        unlink(place.c_str());
        const int fd = tarq::host::bindTo(place, SOCK_DGRAM);
        const bool isReplaced = dup3(fd, mFd, O_CLOEXEC) == mFd;
        close(fd);
        return isReplaced;
    }

    const int mFd = tarq::host::aboveStandard(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    std::mutex mLock;
    std::string mTuned = tarq::host::kUntunedSocket;
    std::string mPlace;  // where it is, or was when the board was switched off
};

// Never destroyed: threads poll until the process is gone.
Receiver& receiver() {
    static Receiver& instance = *new Receiver;
    return instance;
}

// Of the reception that the calling thread has polled, until it asks: whatever the board says
// meanwhile must not change it.
thread_local std::optional<int32_t> polledRssi;

}  // namespace

int32_t radiokey_init(int32_t frequency) {
    receiver().settle(tarq::host::tunedSocket(frequency));
    return 0;
}

int32_t radiokey_reset(int32_t frequency) {
    return radiokey_init(frequency);
}

int32_t radiokey_uninit() {
    receiver().settle(tarq::host::kUntunedSocket);
    return 0;
}

int32_t radiokey_detect_chip() {
    return receiver().state().status;
}

int32_t radiokey_get_rssi_dbm() {
    return polledRssi ? *std::exchange(polledRssi, std::nullopt) : receiver().state().rssiDBm;
}

int32_t radiokey_recv_poll(int32_t* value1, int32_t* value2, int32_t* value3) {
    polledRssi.reset();
    Reception reception;
    if (!receiver().poll(&reception)) return -1;
    *value1 = reception.value1;
    *value2 = reception.value2;
    *value3 = reception.value3;
    polledRssi = reception.rssiDBm;
    return 0;
}
