// Two things of the co-processor can be seen: the node /dev/ttyS3, a link to a pseudo-terminal, and
// who answers at its other end, a serial line with a thread of its own. An absent port has neither;
// when it comes back it is another terminal. mMutex is between that thread and the commands.
#include "host/board/coprocessor/coprocessor_port.h"

#include <stdexcept>

namespace tarq::board {

namespace {

constexpr char kNode[] = "/dev/ttyS3";

// There while a terminal is. What is done to it is the port's business, so the hardware does not
// list its name.
class PortNode : public Node {
  public:
    explicit PortNode(std::shared_ptr<CoprocessorPort> port) : Node(0777), mPort(std::move(port)) {}
    unsigned life() const override { return link().empty() ? 0 : 1; }
    std::string link() const override { return mPort->terminal(); }
    bool isPart() const override { return true; }

  private:
    const std::shared_ptr<CoprocessorPort> mPort;
};

}  // namespace

CoprocessorPort::CoprocessorPort(const Coprocessor& coprocessor) : mCoprocessor(coprocessor) {}

CoprocessorPort::~CoprocessorPort() = default;

void CoprocessorPort::addNode(Hardware& hardware, std::shared_ptr<CoprocessorPort> port) {
    hardware.add(kNode, host::kCoprocessor, std::make_unique<PortNode>(std::move(port)));
}

// The record comes first: the line writes to it from its first byte on.
void CoprocessorPort::open(const std::filesystem::path& record, const std::filesystem::path& link) {
    mRecord.open(record);
    mLink = link;
    setPresent(true);
}

std::vector<std::string> CoprocessorPort::names(const std::string& command) const {
    if (command == "fault") return {host::kCoprocessor};
    if (command != "set") return {};
    return {"coprocessor_manufacturer", "coprocessor_version"};
}

bool CoprocessorPort::perform(const std::vector<std::string>& words) {
    if (words == std::vector<std::string>{"serial"}) return true;
    if (words.size() < 2) return false;
    const std::string& what = words[1];
    const bool isPort =
            what == host::kCoprocessor || std::filesystem::path(what).lexically_normal() == kNode;
    if (!isPort && what.rfind(std::string(host::kCoprocessor) + "_", 0) != 0) return false;
    if (words.size() == 3 && words[0] == "fault" && isPort) {
        setFault(words[2]);
        return true;
    }
    const std::lock_guard lock(mMutex);
    if (words.size() == 3 && words[0] == "set" && what == "coprocessor_manufacturer") {
        mCoprocessor.setManufacturer(words[2]);
    } else if (words.size() == 3 && words[0] == "set" && what == "coprocessor_version") {
        mCoprocessor.setVersion(words[2]);
    } else {
        throw std::invalid_argument(
                "of a co-processor, coprocessor_manufacturer and coprocessor_version can be set, "
                "and coprocessor can have a fault");
    }
    return true;
}

// The hardware has told of the node already, as it would of any file; what it says of this one is
// made true here.
void CoprocessorPort::tell(std::vector<host::NodeState>* nodes) const {
    const std::lock_guard lock(mMutex);
    for (host::NodeState& node : *nodes) {
        if (node.path != kNode) continue;
        node.state = mTerminal.empty() ? host::kNotThere : host::kThere;
        node.fault = host::nameOf(host::kCoprocessorFaults, mCoprocessor.fault());
    }
}

std::string CoprocessorPort::terminal() const {
    const std::lock_guard lock(mMutex);
    return mTerminal;
}

// A port that goes or comes is a matter of this thread alone; the fault itself is read by the
// line's.
void CoprocessorPort::setFault(const std::string& name) {
    host::CoprocessorFault fault = {};
    require(host::findFault(host::kCoprocessorFaults, name, &fault));
    setPresent(fault != host::CoprocessorFault::kAbsent);
    const std::lock_guard lock(mMutex);
    mCoprocessor.setFault(fault);
}

// Without the lock, which the line's thread takes for an answer.
void CoprocessorPort::setPresent(bool isPresent) {
    if (isPresent == (mLine != nullptr)) return;
    std::unique_ptr<SerialLine> line;
    if (isPresent) {
        line = std::make_unique<SerialLine>(
                [this](const ash::Frame& question) {
                    const std::lock_guard lock(mMutex);
                    return mCoprocessor.answer(question);
                },
                mRecord);
    }
    const std::string terminal = line ? line->terminal() : "";
    if (!mLink.empty()) {
        std::filesystem::remove(mLink);
        if (line) std::filesystem::create_symlink(terminal, mLink);
    }
    mLine = std::move(line);
    const std::lock_guard lock(mMutex);
    mTerminal = terminal;
}

}  // namespace tarq::board
