#include "host/board/control.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace tarq::board {

namespace fs = std::filesystem;

static constexpr size_t kMaxSize = 1 << 20;   // of a command or an answer, in bytes
static constexpr timeval kPatience = {5, 0};  // with whoever connects and then says nothing

static std::system_error failed(const fs::path& path) {
    return {errno, std::system_category(), path};
}

static sockaddr_un addressOf(const fs::path& board) {
    const std::string path = board / "run/board.sock";
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        throw std::runtime_error(board.string() +
                                 ": the path of a board has at most 91 characters");
    }
    memcpy(address.sun_path, path.c_str(), path.size());
    return address;
}

static int openSocket() {
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) throw failed("socket");
    return fd;
}

static bool sendPacket(int fd, const std::string& text) {
    return send(fd, text.data(), text.size(), MSG_NOSIGNAL) >= 0;
}

// Empty when none comes.
static std::string receivePacket(int fd) {
    std::string text(kMaxSize, '\0');
    const ssize_t size = recv(fd, text.data(), text.size(), 0);
    text.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return text;
}

// ---- the board ----

static int listenAt(const fs::path& board) {
    const sockaddr_un address = addressOf(board);
    const int fd = openSocket();
    // Nobody can connect before the mode is right, because nobody listens.
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        chmod(address.sun_path, 0600) != 0 || listen(fd, SOMAXCONN) != 0) {
        const std::system_error error = failed(address.sun_path);
        close(fd);
        throw error;
    }
    return fd;
}

ControlServer::ControlServer(const fs::path& board, Perform perform)
    : mPerform(std::move(perform)), mListener(listenAt(board)), mThread([this] { serve(); }) {}

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
    const sockaddr_un address = addressOf(board);
    const int fd = openSocket();
    const bool sent =
            connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
            sendPacket(fd, request);
    const std::string why = sent ? "it ended without an answer" : strerror(errno);
    const std::string result = sent ? receivePacket(fd) : "";
    close(fd);
    if (result.empty()) {
        throw std::runtime_error("no board can be asked in " + board.string() + ": " + why);
    }
    *reason = result.substr(1);
    return result[0] == '+';
}

}  // namespace tarq::board
