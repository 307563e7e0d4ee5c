// A board that is switched on begins like a device after a reset: run/ and root/ are made anew from
// the board's folder, and only root/data is what the last run left. What a killed board could not
// take away, its mount above all, is taken away first.
#include "host/board/board_directory.h"

#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

#include "host/run/board.h"
#include "host/run/file_systems.h"
#include "host/run/text.h"

namespace tarq::board {

namespace fs = std::filesystem;

// The mode is set in a step of its own: mkdir would take the umask from it, and a directory of the
// last run may have another one.
static void makeDirectory(const fs::path& path, fs::perms mode) {
    fs::create_directories(path);
    fs::permissions(path, mode);
}

// What lies there is opened, closed and removed as a board's, so a directory of something else must
// not be taken for one. A board that was killed at its beginning may have made run/ only.
static void refuseForeign(const fs::path& directory) {
    std::error_code missing;  // is made
    std::string foreign;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, missing)) {
        const std::string name = entry.path().filename();
        if (name == "hw") return;
        if (name != "run" && name != "root") foreign = name;
    }
    if (foreign.empty()) return;
    throw std::runtime_error(directory.string() + " is no board's directory, it holds " +
                             host::escaped(foreign) + "; give one that is empty, or not there yet");
}

BoardDirectory::BoardDirectory(const fs::path& directory, bool shared)
    : mBoard{fs::absolute(directory)}, mMode(static_cast<fs::perms>(shared ? 0755 : 0700)) {
    refuseForeign(mBoard.directory);
    umask(shared ? 0022 : 0077);
    mLock = host::lockBoard(mBoard);
    if (mLock == -EWOULDBLOCK) {
        throw std::runtime_error("a board is already running in " + mBoard.directory);
    }
    if (mLock < 0) throw std::system_error(-mLock, std::system_category(), mBoard.lock());
}

BoardDirectory::~BoardDirectory() {
    std::error_code ignored;  // nobody is left who could do something about it
    fs::remove_all(mBoard.run(), ignored);
    close(mLock);
}

// All but the lock file, which this process holds: another one in its place would be a lock that
// nobody has.
void BoardDirectory::clearRun() {
    for (const fs::directory_entry& entry : fs::directory_iterator(mBoard.run())) {
        if (entry.path() != mBoard.lock()) fs::remove_all(entry);
    }
}

void BoardDirectory::boot(const fs::path& folder) {
    clearRun();
    for (const std::string& path : {mBoard.directory, mBoard.run(), mBoard.properties()}) {
        makeDirectory(path, mMode);
    }
    host::clearStaleMount(mBoard.hardware());
    makeDirectory(mBoard.hardware(), mMode);
    makeDirectory(mBoard.device(""), mMode);
    for (const char* name : {"/vendor", "/sys", "/proc", "/dev"}) {
        fs::remove_all(mBoard.device(name));
        makeDirectory(mBoard.device(name), mMode);
    }
    for (const std::string& path : {mBoard.device("/data"), mBoard.savedProperties()}) {
        makeDirectory(path, mMode);
    }
    if (fs::exists(folder / "vendor")) {
        fs::copy(folder / "vendor", mBoard.device("/vendor"), fs::copy_options::recursive);
    }
    loadProperties(folder / "build.prop", mBoard);
}

void BoardDirectory::linkHardware() {
    for (const char* name : {"sys", "proc", "dev"}) {
        const fs::path place = fs::path(mBoard.device("")) / name;
        fs::remove(place);
        fs::create_symlink(fs::path("../hw") / name, place);
    }
}

}  // namespace tarq::board
