// A file of lines that grows: one process adds to it, and any number of others follow it. The log
// of the daemon and the records of a board are such files.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace tarq::host {

// Reads a file line by line while others append to it. When it is emptied, or another file takes
// its place, reading starts anew. It never waits: whoever follows a file looks again after a while.
// For one thread at a time.
class GrowingFile {
  public:
    // Called within read() and finish(), on the thread that calls them.
    using TakeLine = std::function<void(const std::string&)>;

    // The file need not be there yet: each look tries again. Nothing is opened before the first
    // look.
    explicit GrowingFile(std::string path);
    ~GrowingFile();
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;

    // Passes over what is there now, without reading it. Within a line, the rest of that line is
    // then handed over as one.
    void skip();
    // Hands over the lines, without their newline, that were completed since the last call. Returns
    // 0, or an errno if there is no such file now and none was open before. A file that was
    // replaced is read to its end first, with its last line.
    int read(const TakeLine& take);
    // Hands over what stands behind the last newline, if anything does. For the end: a line that is
    // still being written is cut in two by it.
    void finish(const TakeLine& take);

  private:
    int reopenIfReplaced(const TakeLine& take);
    void append(const char* bytes, size_t size, const TakeLine& take);

    const std::string mPath;
    int mFd = -1;
    std::string mPartial;  // the last line as far as it has been read
};

// Adds to such a file. For one thread at a time. Nothing is kept back, but nothing is forced to the
// disk either: the records of a board end with it.
class RecordFile {
  public:
    // what: whose lines are missing, should it come to that, for people: "board: the trace". It is
    // printed as it is.
    explicit RecordFile(std::string what) : mWhat(std::move(what)) {}
    ~RecordFile();
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    // Begins the file, or goes on with one that is there. Throws std::system_error.
    void open(const std::string& file);
    // One write, which anybody who follows the file gets whole. Before open() nothing is written.
    // A line that finds no room is lost, and the caller goes on: that lines are missing is said
    // once, on standard error. A record with a gap would be taken for whole, so the file is emptied
    // then, and holds from there on no more than the sign of that.
    void add(const std::string& line) const;

  private:
    const std::string mWhat;
    int mFd = -1;
    mutable bool mLacksLines = false;
};

// Whether a file of records holds that sign. False for one that cannot be read.
bool recordsAreLost(const std::string& file);

}  // namespace tarq::host
