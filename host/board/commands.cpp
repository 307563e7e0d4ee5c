// A command is first offered to the parts that have some of their own and know their own names;
// what none of them takes is about a node of the hardware or a plain file. A plain file with a
// fault or a hold on it is adopted by the hardware, and given back when nothing is the matter with
// it any more. The server hands the commands over one at a time, so that nothing here needs a lock.
#include "host/board/commands.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <stdexcept>

#include "host/run/control.h"
#include "host/run/descriptors.h"
#include "host/run/faults.h"
#include "host/run/text.h"

namespace tarq::board {

namespace fs = std::filesystem;

Commands::Commands(Hardware& hardware, PlainFiles& files, std::vector<std::shared_ptr<Part>> parts,
                   std::string withoutFuse)
    : mHardware(hardware),
      mFiles(files),
      mParts(std::move(parts)),
      mWithoutFuse(std::move(withoutFuse)) {
    if (mWithoutFuse.empty()) return;
    for (const auto& [path, content] : mHardware.plainContents()) mFiles.write(path, content);
}

// A part takes what is for it, so what is left for one is for none.
static void refuseAbsentPart(const std::vector<std::string>& words) {
    const auto isFor = [&](const char* command, const std::string& part) {
        return words[0] == command || (words.size() > 1 && words[1].rfind(part, 0) == 0);
    };
    if (isFor("key", host::kReceiver)) throw std::invalid_argument("no receiver is fitted");
    if (isFor("serial", host::kCoprocessor)) {
        throw std::invalid_argument("no co-processor is fitted");
    }
}

// What the board plays is the one question; everything else is done, or refused.
std::string Commands::perform(const std::vector<std::string>& words) {
    if (words == std::vector<std::string>{"board"}) return state();
    carryOut(words);
    return "";
}

// A path may be written with double slashes or dots, as in a shell.
void Commands::carryOut(const std::vector<std::string>& words) {
    const std::string command = words.empty() ? "" : words[0];
    if (words == std::vector<std::string>{"trace"}) return requireTrace();
    if (command.empty()) throw std::invalid_argument("is no command");
    for (const auto& part : mParts) {
        if (part->perform(words)) return;
    }
    refuseAbsentPart(words);
    const size_t count = command == "set" || command == "fault" ? 3 : 2;
    if (words.size() != count) throw std::invalid_argument("is no command");
    const std::string node = fs::path(words[1]).lexically_normal();
    requireKnown(command, node);
    if (command == "set") {
        set(node, words[2]);
    } else if (command == "fault") {
        host::NodeFault fault = {};
        require(host::findFault(host::kNodeFaults, words[2], &fault));
        disturb(node, [&](const std::string& path) { mHardware.setFault(path, fault); });
    } else if (command == "hold" || command == "release") {
        const bool held = command == "hold";
        disturb(node, [&](const std::string& path) { mHardware.setHeld(path, held); });
    } else {
        throw std::invalid_argument("is no command");
    }
}

// A node for which no plain file can stand in is not played without FUSE.
std::string Commands::state() const {
    host::BoardState board = {mWithoutFuse, mHardware.states()};
    const auto plain = mHardware.plainContents();
    for (host::NodeState& node : board.nodes) {
        if (!mWithoutFuse.empty() && plain.count(node.path) == 0) node.state = host::kNotPlayed;
    }
    for (const auto& part : mParts) part->tell(&board.nodes);
    return host::boardStateLine(board);
}

// An unknown one is refused with all that the command can be about.
void Commands::requireKnown(const std::string& command, const std::string& node) const {
    if (PlainFiles::holds(node)) return;
    try {
        mHardware.find(node);
    } catch (const std::invalid_argument& refusal) {
        std::string why = refusal.what();
        for (const auto& part : mParts) {
            for (const std::string& name : part->names(command)) why += ", " + name;
        }
        throw std::invalid_argument(why);
    }
}

// Without FUSE a plain file stands in for the node, and is written anew with what the node would
// show.
void Commands::set(const std::string& node, const std::string& value) {
    if (PlainFiles::holds(node)) {
        std::string content;
        require(host::unescape(value, &content));
        return mFiles.write(node, content);
    }
    const std::string path = mHardware.find(node);
    if (!mWithoutFuse.empty() && mHardware.plainContents().count(path) == 0) {
        throw std::runtime_error("needs FUSE: " + mWithoutFuse);
    }
    mHardware.set(path, value);
    if (!mWithoutFuse.empty()) mFiles.write(path, mHardware.plainContents()[path]);
}

// The trace is written as long as there are LEDs and a file system that shows them.
void Commands::requireTrace() {
    if (!mHardware.has("/sys/class/rgbled/set_color")) {
        throw std::runtime_error("no LEDs are fitted");
    }
    if (!mWithoutFuse.empty()) throw std::runtime_error("needs FUSE: " + mWithoutFuse);
}

// A plain file is played by the hardware as long as something is the matter with it.
template <typename Change>
void Commands::disturb(const std::string& node, const Change& change) {
    const bool isFile = PlainFiles::holds(node);
    if (!mWithoutFuse.empty()) throw std::runtime_error("needs FUSE: " + mWithoutFuse);
    if (isFile && !mHardware.has(node)) mHardware.add(node, "", mFiles.adopt(node));
    const std::string path = mHardware.find(node);
    change(path);
    if (isFile && mHardware.isSound(path)) {
        mFiles.giveBack(path);
        mHardware.remove(path);
    }
}

static constexpr timeval kPatience = {5, 0};  // with whoever connects and then says nothing

// Only the owner may change a board, also one that is shared.
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

// Whoever connects and is silent is given up after a while, since others wait behind it.
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
