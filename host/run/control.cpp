#include "host/run/control.h"

#include <errno.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "host/run/socket.h"

namespace tarq::host {

static constexpr size_t kMaxSize = 1 << 20;  // of a command or an answer, in bytes

static bool sendPacket(int fd, const std::string& text) {
    return send(fd, text.data(), text.size(), MSG_NOSIGNAL) >= 0;
}

// Empty when none comes; errno is EAGAIN then if the time was over. The time begins anew in a
// process that was stopped and goes on: the kernel ends such a wait with EINTR.
static std::string receivePacket(int fd) {
    ssize_t size;
    do {
        errno = 0;
        size = recv(fd, nullptr, 0, MSG_PEEK | MSG_TRUNC);
    } while (size < 0 && errno == EINTR);
    if (size <= 0 || static_cast<size_t>(size) > kMaxSize) return "";
    std::string text(static_cast<size_t>(size), '\0');
    recv(fd, text.data(), text.size(), 0);
    return text;
}

Answer askBoard(const Board& board, const std::vector<std::string>& words, int patience) {
    std::string request;
    for (const std::string& word : words) request += word + '\0';
    const int fd = connectTo(board.controlSocket());
    if (fd < 0) return {-fd};
    const timeval time = {patience, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time));
    Answer answer;
    if (!sendPacket(fd, request)) {
        answer.error = errno;
    } else if (const std::string result = receivePacket(fd); result.empty()) {
        answer.error = errno == EAGAIN ? EAGAIN : ECONNRESET;
    } else {
        answer.isDone = result[0] == '+';
        (answer.isDone ? answer.text : answer.reason) = result.substr(1);
    }
    close(fd);
    return answer;
}

std::vector<std::string> receiveCommand(int fd) {
    const std::string request = receivePacket(fd);
    std::vector<std::string> words;
    for (size_t begin = 0, end; (end = request.find('\0', begin)) != std::string::npos;) {
        words.push_back(request.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

void sendAnswer(int fd, const Answer& answer) {
    sendPacket(fd, answer.isDone ? "+" + answer.text : "-" + answer.reason);
}

}  // namespace tarq::host
