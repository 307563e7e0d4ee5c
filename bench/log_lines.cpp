#include "bench/log_lines.h"

#include <fcntl.h>
#include <host/log_sink.h>
#include <stdlib.h>
#include <sys/uio.h>
#include <unistd.h>

namespace bench {

// As long as what is put in front of each line of the log, with a tag of about the usual length.
static constexpr char kPrefix[] = "01-02 03:04:05.006   512  1034 I rgbLedsService: ";

LogLines::LogLines(const std::function<void()>& operation) {
    tarq::host::setLogSink(
            [this](int, const char*, const std::string& text) { mTexts.push_back(text + "\n"); });
    operation();
    tarq::host::setLogSink(nullptr);
    const std::string path = std::string(getenv("TARQ_BOARD")) + "/run/floor";
    mFd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (mFd < 0 || mTexts.empty()) abort();
}

LogLines::~LogLines() {
    close(mFd);
}

void LogLines::write() const {
    for (const std::string& text : mTexts) {
        const iovec parts[] = {{const_cast<char*>(kPrefix), sizeof(kPrefix) - 1},
                               {const_cast<char*>(text.data()), text.size()}};
        if (writev(mFd, parts, 2) < 0) abort();
    }
}

}  // namespace bench
