// Both ends of the control socket stand here, so that a packet is written and read in one file. The
// socket keeps packets apart (SOCK_SEQPACKET), so no length goes ahead of one: its size is asked of
// the kernel before it is taken.
#include "host/run/control.h"

#include <errno.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "host/run/descriptors.h"

namespace tarq::host {

static constexpr size_t kMaxSize = 1 << 20;  // of a command or an answer, in bytes

static bool sendPacket(int fd, const std::string& text) {
    return send(fd, text.data(), text.size(), MSG_NOSIGNAL) >= 0;
}

// Empty when none comes; errno is EAGAIN then if the time was over. The time begins anew in a
// process that was stopped and goes on: the kernel ends such a wait with EINTR. The packet's size
// is asked for first, because what finds no room in a buffer is cut off without a word.
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

// A board that ends while it is asked closes the connection, which reads as an empty packet.
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

// A word without its zero byte was cut off, and is none.
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

using Json = nlohmann::ordered_json;

// What has no name or no reason is null to programs and "" here.
static Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

static std::string orEmpty(const Json& json) {
    return json.is_null() ? "" : json.get<std::string>();
}

std::string boardStateLine(const BoardState& board) {
    Json nodes = Json::array();
    for (const NodeState& node : board.nodes) {
        nodes.push_back({{"name", orNull(node.name)},
                         {"path", orNull(node.path)},
                         {"state", node.state},
                         {"fault", node.fault},
                         {"held", node.isHeld}});
    }
    const Json json = {{"played_by", board.withoutFuse.empty() ? "fuse" : "plain_files"},
                       {"reason", orNull(board.withoutFuse)},
                       {"nodes", nodes}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool parseBoardState(const std::string& line, BoardState* board) {
    try {
        const Json json = Json::parse(line);
        *board = {orEmpty(json.at("reason"))};
        for (const Json& node : json.at("nodes")) {
            board->nodes.push_back({orEmpty(node.at("name")), orEmpty(node.at("path")),
                                    node.at("state").get<std::string>(),
                                    node.at("fault").get<std::string>(),
                                    node.at("held").get<bool>()});
        }
        return true;
    } catch (const Json::exception&) {
        return false;
    }
}

}  // namespace tarq::host
