// One thread waits for bytes of the host, for the time of the next write, or for its end. What is
// read goes into the record and through the reader; the answers of each frame wait in a queue
// ordered by time, so that a late or chopped answer holds up nothing else.
#include "host/board/coprocessor/coprocessor_port.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>

#include "host/run/records.h"

namespace tarq::board {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// The slave is held open here too, so that nobody's closing it hangs up the line.
SerialLine::SerialLine(Answer answer, const host::RecordFile& record)
    : mAnswer(std::move(answer)), mRecord(record) {
    char name[64] = {};
    mEnd = eventfd(0, EFD_CLOEXEC);
    mMaster = ::open("/dev/ptmx", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    const bool isUnlocked = mMaster >= 0 && grantpt(mMaster) == 0 && unlockpt(mMaster) == 0 &&
                            ptsname_r(mMaster, name, sizeof(name)) == 0;
    if (isUnlocked) mSlave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    if (mEnd < 0 || mSlave < 0 || tcgetattr(mSlave, &settings) != 0) {
        const int error = errno;
        closeAll();
        throw std::system_error(error, std::system_category(), "a pseudo-terminal");
    }
    cfmakeraw(&settings);
    tcsetattr(mSlave, TCSANOW, &settings);
    mTerminal = name;
    mThread = std::thread([this] { run(); });
}

SerialLine::~SerialLine() {
    eventfd_write(mEnd, 1);
    mThread.join();
    closeAll();
}

void SerialLine::closeAll() const {
    for (const int fd : {mMaster, mSlave, mEnd}) {
        if (fd >= 0) close(fd);
    }
}

// A signal may wake it as well, which is why a poll that fails is tried again.
void SerialLine::run() {
    pollfd events[] = {{mMaster, POLLIN, 0}, {mEnd, POLLIN, 0}};
    while (events[1].revents == 0) {
        if (poll(events, 2, untilNext()) < 0) continue;
        if (events[0].revents != 0) receive();
        sendWhatIsDue();
    }
}

// A frame may come in many chunks and a chunk have many frames; answers are counted from the chunk
// that ends the question.
void SerialLine::receive() {
    uint8_t chunk[4096];
    const ssize_t size = read(mMaster, chunk, sizeof(chunk));
    if (size <= 0) return;
    const int64_t ms = host::nowMs();
    const auto time = steady_clock::now();
    for (const ash::Frame& frame : mReader.read(chunk, static_cast<size_t>(size))) {
        for (Coprocessor::Sending& sending : mAnswer(frame)) {
            mDue.push_back({time + sending.after, std::move(sending.bytes)});
        }
    }
    // Now that it is decided what the bytes bring about: whoever reads the record may set a fault.
    mRecord.add(host::serialLine({ms, true, ash::Bytes(chunk, chunk + size)}));
    std::stable_sort(mDue.begin(), mDue.end(),
                     [](const Due& one, const Due& other) { return one.time < other.time; });
}

// In ms, rounded up; -1 when nothing is to be sent.
int SerialLine::untilNext() const {
    if (mDue.empty()) return -1;
    const auto left = mDue.front().time - steady_clock::now();
    return std::max(0, static_cast<int>(std::chrono::ceil<milliseconds>(left).count()));
}

void SerialLine::sendWhatIsDue() {
    while (!mDue.empty() && mDue.front().time <= steady_clock::now()) {
        send(mDue.front().bytes);
        mDue.erase(mDue.begin());
    }
}

// A line does not wait for somebody who does not read: what finds no space is lost.
void SerialLine::send(const ash::Bytes& bytes) const {
    const ssize_t size = write(mMaster, bytes.data(), bytes.size());
    if (size > 0)
        mRecord.add(host::serialLine(
                {host::nowMs(), false, ash::Bytes(bytes.begin(), bytes.begin() + size)}));
}

}  // namespace tarq::board
