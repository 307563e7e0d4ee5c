// The files of the hardware by the device's path, and what has been done to them: faults, holds.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "host/board/hardware/node.h"
#include "host/run/control.h"
#include "host/run/faults.h"

namespace tarq::board {

// A few bytes, again and again up to the size, so that a huge file needs no memory.
struct Content {
    std::string bytes = {};
    off_t size = 0;
};

// All of it may be called by any thread. One lock is enough: no driver takes long, and who waits
// (held, or slow) waits without it. Paths are absolute, without a slash at the end.
class Hardware {
  public:
    using Interrupted = bool (*)();  // whether the caller who waits is told to go away

    // ---- for who fits the board and commands it ----

    // name: what people call it, or "". Throws std::invalid_argument when one of both is taken.
    void add(const std::string& path, const std::string& name, std::unique_ptr<Node> node);
    // What is still open of it is dead (ENODEV).
    void remove(const std::string& path);
    bool has(const std::string& path);

    // The path of a node given by name or path, also of one that is not there at present. Throws
    // std::invalid_argument with all that there are. A name counts before a path. What a Part
    // performs itself has a name too, but is not listed: the part lists it.
    std::string find(const std::string& nameOrPath);

    // They act at once, also on what is open. For a path of find(). set() throws
    // std::invalid_argument when the value is no good for the node.
    void set(const std::string& path, const std::string& value);
    void setFault(const std::string& path, host::NodeFault fault);
    void setHeld(const std::string& path, bool held);
    // Neither a fault nor a hold is on it.
    bool isSound(const std::string& path);

    // By path, what plain files can stand in for.
    std::map<std::string, std::string> plainContents();

    // Of all nodes, by path. One that is not there, by its fault or as a line that is not exported,
    // is told as absent.
    std::vector<host::NodeState> states();

    // All calls that wait return, and none waits any more.
    void end();

    // ---- for the file system; results are 0, a count, or a negative errno ----

    // file: the number that open() has given; good until close(), after all calls on it. As stat
    // has it: every file belongs to the user of the board, whoever looks.
    int attributes(const std::string& path, struct stat* status);
    // The names right below the directory; none when it is no directory.
    std::set<std::string> list(const std::string& path);
    int readLink(const std::string& path, std::string* target);
    int open(const std::string& path, int flags, uint64_t* file);
    void close(uint64_t file);
    // They wait while the node is held or slow, and end with -EINTR when the caller is told to go
    // away, with -ENODEV when the file is dead.
    int read(uint64_t file, char* buffer, size_t size, off_t offset, Interrupted interrupted);
    int write(uint64_t file, const std::string& record, Interrupted interrupted);
    int ioctl(uint64_t file, unsigned request, void* argument, Interrupted interrupted);

  private:
    struct Entry {
        std::unique_ptr<Node> node;  // null once it was removed
        host::NodeFault fault = host::NodeFault::kNone;
        bool held = false;

        bool isThere() const {
            return node && node->life() != 0 && fault != host::NodeFault::kAbsent;
        }
    };
    struct OpenFile {
        std::shared_ptr<Entry> entry;
        unsigned life;  // of the node, when it was opened
        bool generated = false;
        Content content = {};  // as it was made for the first read
    };

    std::shared_ptr<Entry> visible(const std::string& path) const;
    std::set<std::string> children(const std::string& path) const;
    int enter(std::unique_lock<std::mutex>& lock, const OpenFile& file, Interrupted interrupted);
    static int generate(OpenFile& file);

    std::mutex mMutex;
    std::map<std::string, std::shared_ptr<Entry>> mEntries;
    std::map<std::string, std::string> mNames;  // -> path
    std::map<uint64_t, OpenFile> mOpen;
    uint64_t mLastOpened = 0;
    bool mEnding = false;
};

}  // namespace tarq::board
