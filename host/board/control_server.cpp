#include "host/board/control_server.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <stdexcept>

#include "host/run/control.h"
#include "host/run/socket.h"

namespace tarq::board {

static constexpr timeval kPatience = {5, 0};  // with whoever connects and then says nothing

static int listen(const host::Board& board) {
    const int fd = host::listenAt(board.controlSocket(), 0600);
    if (fd >= 0) return fd;
    throw std::runtime_error(board.directory + ": " + host::socketError(-fd));
}

ControlServer::ControlServer(const host::Board& board, Perform perform)
    : mPerform(std::move(perform)), mListener(listen(board)), mThread([this] { serve(); }) {}

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
    host::Answer answer;
    try {
        answer.text = mPerform(host::receiveCommand(connection));
        answer.isDone = true;
    } catch (const std::exception& refusal) {
        answer.reason = refusal.what();
    }
    host::sendAnswer(connection, answer);
}

}  // namespace tarq::board
