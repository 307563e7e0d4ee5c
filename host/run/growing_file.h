// Following a file that others append to.
#pragma once

#include <functional>
#include <string>

namespace tarq::host {

// Reads a file line by line while others append to it. When it is emptied, or another file takes
// its place, reading starts anew.
class GrowingFile {
  public:
    using TakeLine = std::function<void(const std::string&)>;

    explicit GrowingFile(std::string path);
    ~GrowingFile();
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;

    // Passes over what is there now, without reading it. Within a line, the rest of that line is
    // then handed over as one.
    void skip();
    // Hands over the lines, without their newline, that were completed since the last call. Returns
    // 0, or an errno if there is no such file now and none was open before.
    int read(const TakeLine& take);
    // Hands over what stands behind the last newline, if anything does.
    void finish(const TakeLine& take);

  private:
    int reopenIfReplaced(const TakeLine& take);
    void append(const char* bytes, size_t size, const TakeLine& take);

    const std::string mPath;
    int mFd = -1;
    std::string mPartial;
};

}  // namespace tarq::host
