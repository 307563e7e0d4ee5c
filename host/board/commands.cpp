#include "host/board/commands.h"

#include <stdexcept>

#include "host/board/attributes.h"

namespace tarq::board {

namespace fs = std::filesystem;

Commands::Commands(Hardware& hardware, PlainFiles& files, std::string withoutFuse,
                   std::shared_ptr<CoprocessorPort> coprocessor)
    : mHardware(hardware),
      mFiles(files),
      mWithoutFuse(std::move(withoutFuse)),
      mCoprocessor(std::move(coprocessor)) {
    if (mWithoutFuse.empty()) return;
    for (const auto& [path, content] : mHardware.plainContents()) mFiles.write(path, content);
}

void Commands::perform(const std::vector<std::string>& words) {
    const std::string command = words.empty() ? "" : words[0];
    if (words == std::vector<std::string>{"trace"}) return requireTrace();
    if (words == std::vector<std::string>{"serial"}) {
        if (!mCoprocessor) throw std::runtime_error("no co-processor is fitted");
        return;
    }
    if (mCoprocessor && mCoprocessor->perform(words)) return;
    const size_t count = command == "set" || command == "fault" ? 3 : 2;
    if (words.size() != count) throw std::invalid_argument("is no command");
    const std::string node = fs::path(words[1]).lexically_normal();
    if (command == "set") {
        set(node, words[2]);
    } else if (command == "fault") {
        const Fault fault = faultNamed(words[2]);
        disturb(node, [&](const std::string& path) { mHardware.setFault(path, fault); });
    } else if (command == "hold" || command == "release") {
        const bool held = command == "hold";
        disturb(node, [&](const std::string& path) { mHardware.setHeld(path, held); });
    } else {
        throw std::invalid_argument("is no command");
    }
}

void Commands::set(const std::string& node, const std::string& value) {
    if (PlainFiles::holds(node)) return mFiles.write(node, unescaped(value));
    const std::string path = mHardware.find(node);
    if (!mWithoutFuse.empty() && mHardware.plainContents().count(path) == 0) {
        throw std::runtime_error("needs FUSE: " + mWithoutFuse);
    }
    mHardware.set(path, value);
    if (!mWithoutFuse.empty()) mFiles.write(path, mHardware.plainContents()[path]);
}

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
    if (!isFile) mHardware.find(node);  // an unknown one first
    if (!mWithoutFuse.empty()) throw std::runtime_error("needs FUSE: " + mWithoutFuse);
    if (isFile && !mHardware.has(node)) mHardware.add(node, "", mFiles.adopt(node));
    const std::string path = mHardware.find(node);
    change(path);
    if (isFile && mHardware.isSound(path)) {
        mFiles.giveBack(path);
        mHardware.remove(path);
    }
}

}  // namespace tarq::board
