#include "host/board/record_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <system_error>
#include <utility>

namespace tarq::board {

RecordFile::~RecordFile() {
    if (mFd >= 0) close(mFd);
}

void RecordFile::open(const std::filesystem::path& file) {
    mFd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (mFd < 0) throw std::system_error(errno, std::system_category(), file);
}

void RecordFile::add(const std::string& line) const {
    const std::string bytes = line + "\n";
    errno = ENOSPC;  // what a part that was written means
    if (mFd < 0 || ::write(mFd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size())) {
        return;
    }
    if (!std::exchange(mLacksLines, true)) {
        perror(("virtual_board: " + mWhat + " lacks lines from here on").c_str());
    }
}

}  // namespace tarq::board
