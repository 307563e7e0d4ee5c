// The model: a map from the device's paths to entries, each a node with what was done to it, and
// the files that are open, each with the life of the node in which it was opened. One lock is over
// all of it. A call on an open file enters the node first: it waits there while the node is held or
// slow, looking around every few milliseconds without the lock, and fails if the file is dead.
#include "host/board/hardware/hardware.h"

#include <fcntl.h>
#include <linux/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace tarq::board {

static constexpr off_t kGarbageSize = 64;
static constexpr off_t kHugeSize = 100'000'000;

// What is no text: zeros, 0xff, a format, no newline.
static Content garbage(off_t size) {
    static constexpr char kBytes[] = "\xff\0\x01:,-*\x80%s\r\xc3(\x7f 9";
    return {std::string(kBytes, sizeof(kBytes) - 1), size};
}

// Fills the buffer from that place on; how much of it. The bytes are gone through again and again,
// so that 100 MB of them are never in memory.
static size_t copy(const Content& content, off_t offset, char* buffer, size_t size) {
    if (offset >= content.size) return 0;
    const size_t count = std::min(size, static_cast<size_t>(content.size - offset));
    size_t place = static_cast<size_t>(offset) % content.bytes.size();
    for (size_t i = 0; i < count; ++i) {
        buffer[i] = content.bytes[place];
        if (++place == content.bytes.size()) place = 0;
    }
    return count;
}

using host::NodeFault;
using std::chrono::steady_clock;

static constexpr std::chrono::seconds kSlow{1};
static constexpr std::chrono::milliseconds kLook{5};  // how often who waits looks around

// There also without a file in them, because links lead to them.
static const std::set<std::string> kTop = {"dev", "proc", "sys"};

// ---- for who fits the board and commands it ----

// A name that is taken means two parts of a kind that can be there once.
void Hardware::add(const std::string& path, const std::string& name, std::unique_ptr<Node> node) {
    const std::lock_guard lock(mMutex);
    if (mEntries.count(path) != 0) throw std::invalid_argument(path + " is there already");
    if (!name.empty() && !mNames.emplace(name, path).second) {
        throw std::invalid_argument("there is a \"" + name + "\" already");
    }
    mEntries[path] = std::make_shared<Entry>();
    mEntries[path]->node = std::move(node);
}

// The entry lives on as long as somebody has it open, without its node, so that calls on it find
// nothing.
void Hardware::remove(const std::string& path) {
    const std::lock_guard lock(mMutex);
    mEntries.at(path)->node = nullptr;
    mEntries.erase(path);
}

bool Hardware::has(const std::string& path) {
    const std::lock_guard lock(mMutex);
    return mEntries.count(path) != 0;
}

std::string Hardware::find(const std::string& nameOrPath) {
    const std::lock_guard lock(mMutex);
    const auto named = mNames.find(nameOrPath);
    if (named != mNames.end()) return named->second;
    if (mEntries.count(nameOrPath) != 0) return nameOrPath;
    std::string why = "there is no such node; there are:";
    std::set<std::string> namedPaths;
    for (const auto& [name, path] : mNames) {
        if (!mEntries[path]->node->isPart()) why += " " + name;
        namedPaths.insert(path);
    }
    for (const auto& [path, entry] : mEntries) {
        if (namedPaths.count(path) == 0) why += " " + path;
    }
    throw std::invalid_argument(why + ", and the files below /vendor and /data");
}

void Hardware::set(const std::string& path, const std::string& value) {
    const std::lock_guard lock(mMutex);
    mEntries.at(path)->node->set(value);
}

void Hardware::setFault(const std::string& path, NodeFault fault) {
    const std::lock_guard lock(mMutex);
    mEntries.at(path)->fault = fault;
}

void Hardware::setHeld(const std::string& path, bool held) {
    const std::lock_guard lock(mMutex);
    mEntries.at(path)->held = held;
}

bool Hardware::isSound(const std::string& path) {
    const std::lock_guard lock(mMutex);
    return mEntries.at(path)->fault == NodeFault::kNone && !mEntries.at(path)->held;
}

// Faults are left out of account: plain files play none.
std::map<std::string, std::string> Hardware::plainContents() {
    const std::lock_guard lock(mMutex);
    std::map<std::string, std::string> contents;
    for (const auto& [path, entry] : mEntries) {
        if (entry->node->isPlain()) entry->node->read(&contents[path]);
    }
    return contents;
}

std::vector<host::NodeState> Hardware::states() {
    const std::lock_guard lock(mMutex);
    std::map<std::string, std::string> names;  // by path
    for (const auto& [name, path] : mNames) names[path] = name;
    std::vector<host::NodeState> states;
    for (const auto& [path, entry] : mEntries) {
        states.push_back({names[path], path, entry->isThere() ? host::kThere : host::kNotThere,
                          host::nameOf(host::kNodeFaults, entry->fault), entry->held});
    }
    return states;
}

void Hardware::end() {
    const std::lock_guard lock(mMutex);
    mEnding = true;
}

// ---- for the file system ----

// Null for what is not there at present. The lock is held by whoever calls, here and in what
// follows.
std::shared_ptr<Hardware::Entry> Hardware::visible(const std::string& path) const {
    const auto found = mEntries.find(path);
    return found != mEntries.end() && found->second->isThere() ? found->second : nullptr;
}

// A directory exists by the files that are below it, so a line that is unexported takes its
// directory along.
std::set<std::string> Hardware::children(const std::string& path) const {
    std::set<std::string> names;
    if (path == "/") names = kTop;
    const std::string prefix = path == "/" ? path : path + "/";
    for (auto next = mEntries.lower_bound(prefix);
         next != mEntries.end() && next->first.compare(0, prefix.size(), prefix) == 0; ++next) {
        const size_t end = next->first.find('/', prefix.size());
        if (next->second->isThere()) {
            names.insert(next->first.substr(prefix.size(), end - prefix.size()));
        }
    }
    return names;
}

int Hardware::attributes(const std::string& path, struct stat* status) {
    const std::lock_guard lock(mMutex);
    *status = {};
    status->st_uid = getuid();
    status->st_gid = getgid();
    status->st_nlink = 1;
    const std::shared_ptr<Entry> entry = visible(path);
    const std::string link = entry ? entry->node->link() : "";
    if (!link.empty()) {
        status->st_mode = S_IFLNK | 0777;
        status->st_size = static_cast<off_t>(link.size());
        return 0;
    }
    if (entry && entry->fault != NodeFault::kDirectory) {
        status->st_mode = S_IFREG | entry->node->mode();
        status->st_size = entry->fault == NodeFault::kHuge ? kHugeSize : entry->node->size();
        return 0;
    }
    status->st_mode = S_IFDIR | 0755;
    const bool isThere = entry || path == "/" || kTop.count(path.substr(1)) != 0;
    return isThere || !children(path).empty() ? 0 : -ENOENT;
}

std::set<std::string> Hardware::list(const std::string& path) {
    const std::lock_guard lock(mMutex);
    return children(path);
}

int Hardware::readLink(const std::string& path, std::string* target) {
    const std::lock_guard lock(mMutex);
    const std::shared_ptr<Entry> entry = visible(path);
    *target = entry ? entry->node->link() : "";
    return target->empty() ? -EINVAL : 0;
}

// The permission bits are checked here for all users alike: the kernel would let root pass, and
// sysfs does not.
int Hardware::open(const std::string& path, int flags, uint64_t* file) {
    const std::lock_guard lock(mMutex);
    const std::shared_ptr<Entry> entry = visible(path);
    if (!entry) return -ENOENT;
    const bool reads = (flags & O_ACCMODE) != O_WRONLY;
    const bool writes = (flags & O_ACCMODE) != O_RDONLY;
    const mode_t mode = entry->node->mode();
    if (reads && ((mode & 0444) == 0 || entry->fault == NodeFault::kUnreadable)) return -EACCES;
    if (writes && ((mode & 0222) == 0 || entry->fault == NodeFault::kUnwritable)) return -EACCES;
    *file = ++mLastOpened;
    mOpen[*file] = {entry, entry->node->life()};
    return 0;
}

void Hardware::close(uint64_t file) {
    const std::lock_guard lock(mMutex);
    mOpen.erase(file);
}

// Waits as long as the node is held or slow, without the lock. Then 0, or why the call fails.
int Hardware::enter(std::unique_lock<std::mutex>& lock, const OpenFile& file,
                    Interrupted interrupted) {
    const Entry& entry = *file.entry;
    const auto slowUntil = steady_clock::now() + kSlow;
    while (entry.held || (entry.fault == NodeFault::kSlow && steady_clock::now() < slowUntil)) {
        if (mEnding) return -ENODEV;
        if (interrupted()) return -EINTR;
        lock.unlock();
        std::this_thread::sleep_for(kLook);
        lock.lock();
    }
    return entry.isThere() && entry.node->life() == file.life ? 0 : -ENODEV;
}

// What a reader gets is made when it begins and kept with its open file: two readers of one node
// never see each other's halves.
int Hardware::generate(OpenFile& file) {
    const NodeFault fault = file.entry->fault;
    file.content = {};
    if (fault == NodeFault::kGarbage || fault == NodeFault::kHuge) {
        file.content = garbage(fault == NodeFault::kHuge ? kHugeSize : kGarbageSize);
    } else if (fault != NodeFault::kEmpty) {
        const int error = file.entry->node->read(&file.content.bytes);
        if (error != 0) return error;
        file.content.size = static_cast<off_t>(file.content.bytes.size());
    }
    file.generated = true;
    return 0;
}

int Hardware::read(uint64_t number, char* buffer, size_t size, off_t offset,
                   Interrupted interrupted) {
    std::unique_lock lock(mMutex);
    OpenFile& file = mOpen.at(number);
    int error = enter(lock, file, interrupted);
    // As in sysfs, whoever goes back to the start gets the content anew.
    if (error == 0 && (offset == 0 || !file.generated)) error = generate(file);
    return error != 0 ? error : static_cast<int>(copy(file.content, offset, buffer, size));
}

// The offset means nothing: a record is a record wherever it is written to.
int Hardware::write(uint64_t number, const std::string& record, Interrupted interrupted) {
    std::unique_lock lock(mMutex);
    OpenFile& file = mOpen.at(number);
    const int error = enter(lock, file, interrupted);
    return error != 0 ? error : file.entry->node->write(record);
}

// The node answers first and the fault is laid over it, so that a request which the node does not
// know stays unknown.
int Hardware::ioctl(uint64_t number, unsigned request, void* argument, Interrupted interrupted) {
    std::unique_lock lock(mMutex);
    OpenFile& file = mOpen.at(number);
    int error = enter(lock, file, interrupted);
    if (error == 0) error = file.entry->node->ioctl(request, argument);
    const NodeFault fault = file.entry->fault;
    if (error == 0 && fault == NodeFault::kEmpty) return -EIO;
    if (error == 0 && (fault == NodeFault::kGarbage || fault == NodeFault::kHuge)) {
        copy(garbage(kHugeSize), 0, static_cast<char*>(argument), _IOC_SIZE(request));
    }
    return error;
}

}  // namespace tarq::board
