// One file of the hardware: what its driver does when the file is read, written or asked. The kinds
// of them are in drivers.h and beside the parts that have files.
#pragma once

#include <errno.h>
#include <sys/types.h>

#include <stdexcept>
#include <string>

namespace tarq::board {

// Nodes need no locks: whoever has them (Hardware) makes one call at a time. None of them waits.
// Results are 0 or a negative errno, as in the kernel.
class Node {
  public:
    // mode: the permission bits. For root they hold as well, as in sysfs. They do not change,
    // whatever becomes of the file.
    explicit Node(mode_t mode) : mMode(mode) {}
    virtual ~Node() = default;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    mode_t mode() const { return mMode; }

    // Which life of the file this is: 0 while it is not there, another number whenever it comes
    // back. A file that was opened in an earlier life is dead. It is asked whenever something is
    // done to the file, so it may follow from the state of other nodes.
    virtual unsigned life() const { return 1; }

    // Where it leads; "" for a file that is no symbolic link. It may change while the board runs,
    // as that of the serial port does.
    virtual std::string link() const { return ""; }

    // True for one whose Part performs all commands about it. It is there in the file system like
    // any other.
    virtual bool isPart() const { return false; }

    // In bytes, as stat tells it. A driver makes its text when it is read, so it claims a page.
    // Readers must not go by it, as with the kernel's own.
    virtual off_t size() const { return 4096; }

    // The whole content, made for a reader who begins at the start. A reader gets this text to its
    // end, whatever becomes of the node meanwhile.
    virtual int read(std::string* /*content*/) { return -EINVAL; }

    // One write is one record, wherever in the file it is made. As in sysfs, what one write() was
    // given arrives at once, so a record is never pieced together.
    virtual int write(const std::string& /*record*/) { return -EINVAL; }

    // argument: as many bytes as the request tells, filled or taken as it tells. A request has its
    // size in its number, as _IOC_SIZE tells, and no more of the argument may be touched. ENOTTY is
    // what the kernel says of a request that a file does not know.
    virtual int ioctl(unsigned /*request*/, void* /*argument*/) { return -ENOTTY; }

    // Changes what is outside of the driver: the part that is fitted, the level on a line. Throws
    // std::invalid_argument when the value is none for this kind of node; nothing is changed then.
    // It is what `tarqctl set` does, and nothing that a program on the board can do.
    virtual void set(const std::string& /*value*/) {
        throw std::invalid_argument("has nothing that could be set");
    }

    // True for one that a plain file with the same content can stand in for.
    virtual bool isPlain() const { return false; }

  private:
    const mode_t mMode;
};

}  // namespace tarq::board
