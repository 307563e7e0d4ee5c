#include "host/board/control.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <stdexcept>

#include "host/board/board_socket.h"

namespace tarq::board {

namespace fs = std::filesystem;

static constexpr char kSocket[] = "run/board.sock";
static constexpr size_t kMaxSize = 1 << 20;   // of a command or an answer, in bytes
static constexpr timeval kPatience = {5, 0};  // with whoever connects and then says nothing

static bool sendPacket(int fd, const std::string& text) {
    return send(fd, text.data(), text.size(), MSG_NOSIGNAL) >= 0;
}

// Empty when none comes.
static std::string receivePacket(int fd) {
    const ssize_t size = recv(fd, nullptr, 0, MSG_PEEK | MSG_TRUNC);
    if (size <= 0 || static_cast<size_t>(size) > kMaxSize) return "";
    std::string text(static_cast<size_t>(size), '\0');
    recv(fd, text.data(), text.size(), 0);
    return text;
}

// ---- the board ----

ControlServer::ControlServer(const fs::path& board, Perform perform)
    : mPerform(std::move(perform)),
      mListener(listenAt(board, kSocket)),
      mThread([this] { serve(); }) {}

ControlServer::~ControlServer() {
    shutdown(mListener, SHUT_RDWR);  // the thread's accept returns
    mThread.join();
    close(mListener);
}

void ControlServer::serve() const {
    int connection;
    while ((connection = accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
        setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof(kPatience));
        answer(connection);
        close(connection);
    }
}

void ControlServer::answer(int connection) const {
    const std::string request = receivePacket(connection);
    std::vector<std::string> words;
    for (size_t begin = 0, end; (end = request.find('\0', begin)) != std::string::npos;) {
        words.push_back(request.substr(begin, end - begin));
        begin = end + 1;
    }
    std::string result = "+";
    try {
        mPerform(words);
    } catch (const std::exception& refusal) {
        result = std::string("-") + refusal.what();
    }
    sendPacket(connection, result);
}

// ---- the user ----

bool ask(const fs::path& board, const std::vector<std::string>& words, std::string* reason) {
    std::string request;
    for (const std::string& word : words) request += word + '\0';
    if (request.size() > kMaxSize) throw std::runtime_error("a value has at most 64 KiB");
    const int fd = connectTo(board, kSocket);
    const bool sent = fd >= 0 && sendPacket(fd, request);
    const std::string why = sent ? "it ended without an answer" : strerror(errno);
    const std::string result = sent ? receivePacket(fd) : "";
    if (fd >= 0) close(fd);
    if (result.empty()) {
        throw std::runtime_error("no board can be asked in " + board.string() + ": " + why);
    }
    *reason = result.substr(1);
    return result[0] == '+';
}

}  // namespace tarq::board
