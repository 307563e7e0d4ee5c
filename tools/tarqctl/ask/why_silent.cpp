// The process behind a socket is known to the kernel, and its state is in /proc. So a stopped
// process is found without asking it anything, whoever started it, and is the cause for certain. A
// node that is held is one only if the call came to it, so it is named beside what is likely.
#include "tools/tarqctl/ask/why_silent.h"

#include <errno.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <optional>
#include <sstream>

#include "host/run/control.h"
#include "host/run/descriptors.h"
#include "host/run/faults.h"

namespace tarq::tools {

// Who listens at the socket; 0 when nobody does. The kernel takes connections for a stopped one,
// and never makes this one wait.
static pid_t listenerOf(const std::string& path) {
    const int fd = host::connectTo(path, SOCK_SEQPACKET | SOCK_NONBLOCK);
    if (fd < 0) return 0;
    ucred listener = {};
    socklen_t size = sizeof(listener);
    getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &listener, &size);
    close(fd);
    return listener.pid;
}

// It stands behind the name, which may hold anything.
char stateOf(pid_t process) {
    std::ostringstream text;
    text << std::ifstream("/proc/" + std::to_string(process) + "/stat").rdbuf();
    const size_t name = text.str().rfind(") ");
    return name == std::string::npos ? '?' : text.str()[name + 2];
}

// A debugger is told apart, since going on is not what its user wants: who it is comes as the hint.
static std::optional<Cause> findStopped(const std::string& who, const std::string& socket) {
    const pid_t process = listenerOf(socket);
    if (process == 0) return std::nullopt;
    const std::string number = std::to_string(process);
    switch (stateOf(process)) {
        case 'T': {
            const bool isOthers = kill(process, 0) != 0 && errno == EPERM;
            return Cause{who + " is stopped (process " + number + ")",
                         (isOthers ? "sudo kill -CONT " : "kill -CONT ") + number};
        }
        case 't':
            return Cause{who + " is held by a debugger (process " + number + ")",
                         "grep TracerPid /proc/" + number + "/status"};
        default:
            return std::nullopt;
    }
}

// Nothing when there is none, or the board does not tell within a second. Of several nodes the
// first is told; when it is released the next one is.
static std::optional<Cause> findHeld(const host::Board& board) {
    host::BoardState state;
    if (!host::parseBoardState(host::askBoard(board, {"board"}, 1).text, &state)) return {};
    for (const host::NodeState& node : state.nodes) {
        const std::string name = shellQuoted(node.name.empty() ? node.path : node.name);
        if (node.isHeld) return Cause{name + " is held", "release " + name};
        if (node.fault == host::nameOf(host::kNodeFaults, host::NodeFault::kSlow)) {
            return Cause{name + " is slow", "fault " + name + " none"};
        }
    }
    return {};
}

// What somebody knows comes before what is likely, since only that is more than a guess.
Cause whyNobodyAnswers(const Session& session, bool isHardware, const Cause& likely) {
    const host::Board& board = session.board;
    if (const auto one = findStopped("the board", board.controlSocket())) return *one;
    if (const auto one = findStopped("the daemon", board.binderSocket())) return *one;
    const std::optional<Cause> held = isHardware ? findHeld(board) : std::nullopt;
    if (!held) return likely;
    return {likely.why + (likely.why.empty() ? "" : "; ") + held->why, session.next(held->hint)};
}

}  // namespace tarq::tools
