// One start at a time: it holds a lock on the directory of all the user's boards until its board
// has locked its own. What is not locked at that point was left by a kill. The last board that ends
// removes the directory, with nobody's leave: a start to which that happens begins again.
#include "tools/tarqctl/up/users_boards.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/run/board.h"
#include "host/run/file_systems.h"

namespace tarq::tools {

namespace fs = std::filesystem;

static Failure cannotMake(const std::string& directory, const std::string& why) {
    return {"no_directory", "up", "no board can be kept in " + directory + ": " + why,
            "TMPDIR=/tmp tarqctl up, or any directory of yours with room in it"};
}

static void removeBoard(const host::Board& board) {
    host::clearStaleMount(board.hardware());
    std::error_code ignored;  // what is still mounted stays, and the next start tries again
    fs::remove_all(board.directory, ignored);
}

// A directory of which the lock can be had belongs to nobody: neither to a board that runs nor to
// an `up` that is about to start one or to end it.
static void removeWhatWasLeft(const std::string& directory) {
    std::error_code unreadable;  // the same as empty
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, unreadable)) {
        const host::Board board = {entry.path()};
        const int fd = open(board.directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const bool isLeft = flock(fd, LOCK_EX | LOCK_NB) == 0 && !host::isRunning(board);
        if (isLeft) removeBoard(board);
        if (fd >= 0) close(fd);
    }
}

// Others may write to its parent, and must not choose where this user's boards lie.
static void makeUsersDirectory(const std::string& directory) {
    struct stat status = {};
    if (mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) {
        throw cannotMake(directory, strerror(errno));
    }
    if (lstat(directory.c_str(), &status) != 0 && errno == ENOENT) return;  // removed meanwhile
    if (S_ISDIR(status.st_mode) && status.st_uid == getuid()) return;
    throw cannotMake(directory, "is no directory of yours");
}

// False when another start has it, or when it was removed meanwhile.
bool BoardDirectory::lockAll(const std::string& directory) {
    makeUsersDirectory(directory);
    mLock = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat held = {};
    struct stat named = {};
    if (mLock >= 0 && flock(mLock, LOCK_EX | LOCK_NB) == 0 && fstat(mLock, &held) == 0 &&
        stat(directory.c_str(), &named) == 0 && held.st_ino == named.st_ino) {
        return true;
    }
    if (mLock < 0 && errno != ENOENT) throw cannotMake(directory, strerror(errno));
    letOthersStart();
    return false;
}

// False when the directory around it was removed meanwhile.
bool BoardDirectory::makeOwn(const std::string& name) {
    std::string path = name + ".XXXXXX";
    if (path.size() > host::kMaxBoardPath) {
        throw cannotMake(path, "the path of a board has at most " +
                                       std::to_string(host::kMaxBoardPath) + " characters");
    }
    if (mkdtemp(path.data()) == nullptr) {
        if (errno == ENOENT) return false;
        throw cannotMake(path, strerror(errno));
    }
    mBoard = {path};
    mOwn = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    flock(mOwn, LOCK_SH);
    return true;
}

// A directory that was made and cannot be used is removed again, unless another start is in it.
BoardDirectory::BoardDirectory(const std::string& name, bool shared,
                               const std::function<void()>& pause) {
    const std::string directory = fs::absolute(host::usersBoards());
    try {
        while (mBoard.isNone()) {
            while (!lockAll(directory)) pause();
            if (shared) chmod(directory.c_str(), 0755);
            removeWhatWasLeft(directory);
            if (!makeOwn(directory + "/" + name)) letOthersStart();
        }
    } catch (...) {
        letOthersStart();
        rmdir(directory.c_str());
        throw;
    }
}

BoardDirectory::~BoardDirectory() {
    letOthersStart();
    removeBoard(mBoard);
    close(mOwn);
    rmdir(fs::path(mBoard.directory).parent_path().c_str());  // unless there are others
}

void BoardDirectory::letOthersStart() {
    if (mLock >= 0) close(mLock);
    mLock = -1;
}

}  // namespace tarq::tools
