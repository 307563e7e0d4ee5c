// The writer appends each line with one write, so that no reader sees the middle of one that
// another thread writes. The reader goes on where its last look ended. Before each look the
// descriptor is held against the name: another file under the name, or fewer bytes than were read,
// means that it has begun anew. A line without its newline is kept until the newline comes.
#include "host/run/growing_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

namespace tarq::host {

GrowingFile::GrowingFile(std::string path) : mPath(std::move(path)) {}

GrowingFile::~GrowingFile() {
    if (mFd >= 0) close(mFd);
}

static bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Emptied means shorter than what was read. A file that has been emptied and filled beyond that
// since the last look cannot be told from one that has grown.
int GrowingFile::reopenIfReplaced(const TakeLine& take) {
    struct stat opened = {};
    struct stat named = {};
    if (mFd >= 0) {
        // Between the old file's removal and the new one's appearance the old one is still read.
        const bool replaced = fstat(mFd, &opened) == 0 && stat(mPath.c_str(), &named) == 0 &&
                              !sameFile(opened, named);
        if (!replaced && opened.st_size >= lseek(mFd, 0, SEEK_CUR)) return 0;
        finish(take);
    }
    const int fd = open(mPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return mFd >= 0 ? 0 : errno;
    if (mFd >= 0) close(mFd);
    mFd = fd;
    return 0;
}

// Most lines come whole, but a chunk may end within one.
void GrowingFile::append(const char* bytes, size_t size, const TakeLine& take) {
    const char* const end = bytes + size;
    while (bytes < end) {
        const auto* newline =
                static_cast<const char*>(memchr(bytes, '\n', static_cast<size_t>(end - bytes)));
        mPartial.append(bytes, newline != nullptr ? newline : end);
        if (newline == nullptr) return;
        take(std::exchange(mPartial, {}));
        bytes = newline + 1;
    }
}

int GrowingFile::read(const TakeLine& take) {
    if (const int error = reopenIfReplaced(take)) return error;
    char buffer[65536];
    for (;;) {
        const ssize_t size = ::read(mFd, buffer, sizeof(buffer));
        if (size < 0) return errno;
        if (size == 0) return 0;
        append(buffer, static_cast<size_t>(size), take);
    }
}

void GrowingFile::skip() {
    if (reopenIfReplaced([](const std::string&) {}) == 0) lseek(mFd, 0, SEEK_END);
    mPartial.clear();
}

void GrowingFile::finish(const TakeLine& take) {
    if (!mPartial.empty()) take(std::exchange(mPartial, {}));
}

// ---- the other end ----

static constexpr char kLost[] = "{\"lost\":true}\n";

RecordFile::~RecordFile() {
    if (mFd >= 0) close(mFd);
}

void RecordFile::open(const std::string& file) {
    mFd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (mFd < 0) throw std::system_error(errno, std::system_category(), file);
}

// An interrupted or short write leaves part of a line, which its reader passes over as none.
void RecordFile::add(const std::string& line) const {
    if (mFd < 0 || mLacksLines) return;
    const auto write = [this](const std::string& bytes) {
        return ::write(mFd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    };
    errno = ENOSPC;  // what a part that was written means
    if (write(line + "\n")) return;
    mLacksLines = true;
    perror((mWhat + " lacks lines from here on").c_str());
    if (ftruncate(mFd, 0) == 0) write(kLost);  // there is room again for so little
}

bool recordsAreLost(const std::string& file) {
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    char begin[sizeof(kLost)] = {};
    const bool isSign = read(fd, begin, sizeof(kLost) - 1) > 0 && strcmp(begin, kLost) == 0;
    if (fd >= 0) close(fd);
    return isSign;
}

}  // namespace tarq::host
