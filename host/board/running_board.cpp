#include "host/board/running_board.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

#include "host/board/file_system.h"
#include "host/board/properties.h"

namespace tarq::board {

namespace fs = std::filesystem;

static void makeDirectory(const fs::path& path, fs::perms mode) {
    fs::create_directories(path);
    fs::permissions(path, mode);
}

RunningBoard::RunningBoard(fs::path directory, bool shared)
    : mDirectory(fs::absolute(directory)), mMode(static_cast<fs::perms>(shared ? 0755 : 0700)) {
    umask(shared ? 0022 : 0077);
    do {
        fs::create_directories(mDirectory / "run");
    } while (!lock());
}

RunningBoard::~RunningBoard() {
    std::error_code ignored;  // nobody is left who could do something about it
    fs::remove_all(mDirectory / "run", ignored);
    close(mLock);
}

// False when run/ was removed in between, by a board that was just then switched off.
bool RunningBoard::lock() {
    const fs::path path = mDirectory / "run/lock";
    mLock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (mLock < 0 && errno == ENOENT) return false;
    if (mLock < 0) throw std::system_error(errno, std::system_category(), path);
    if (flock(mLock, LOCK_EX | LOCK_NB) != 0) {
        throw std::runtime_error("a board is already running in " + mDirectory.string());
    }
    struct stat held = {};
    struct stat named = {};
    if (fstat(mLock, &held) == 0 && stat(path.c_str(), &named) == 0 &&
        held.st_ino == named.st_ino) {
        return true;
    }
    close(mLock);
    return false;
}

void RunningBoard::clearRun() {
    for (const fs::directory_entry& entry : fs::directory_iterator(mDirectory / "run")) {
        if (entry.path().filename() != "lock") fs::remove_all(entry);
    }
}

void RunningBoard::boot(const fs::path& folder) {
    clearRun();
    for (const char* name : {"", "run", "run/properties"}) makeDirectory(mDirectory / name, mMode);

    clearStaleMount(mDirectory / "hw");
    makeDirectory(mDirectory / "hw", mMode);

    const fs::path root = mDirectory / "root";
    makeDirectory(root, mMode);
    for (const char* name : {"vendor", "sys", "proc", "dev"}) {
        fs::remove_all(root / name);
        makeDirectory(root / name, mMode);
    }
    for (const char* name : {"data", "data/property"}) makeDirectory(root / name, mMode);
    if (fs::exists(folder / "vendor")) {
        fs::copy(folder / "vendor", root / "vendor", fs::copy_options::recursive);
    }

    loadProperties(folder / "build.prop", mDirectory);
}

void RunningBoard::linkHardware() {
    for (const char* name : {"sys", "proc", "dev"}) {
        fs::remove(mDirectory / "root" / name);
        fs::create_symlink(fs::path("../hw") / name, mDirectory / "root" / name);
    }
}

}  // namespace tarq::board
