// A file below /vendor or /data is a plain one until something is to be the matter with it. Then it
// is linked once more at a place aside, and its own place becomes a link into the hardware, which
// plays it from there. Each step is one rename, so a killed board has lost nothing.
#include "host/board/hardware/plain_files.h"

#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

namespace tarq::board {

namespace fs = std::filesystem;

namespace {

// Read-only: what an open file of it reads is a driver's text by now, not the file.
class AdoptedFile : public Node {
  public:
    explicit AdoptedFile(fs::path file) : Node(0444), mFile(std::move(file)) {}
    off_t size() const override { return static_cast<off_t>(fs::file_size(mFile)); }
    int read(std::string* content) override {
        std::ifstream in(mFile, std::ios::binary);
        if (!in) return -EIO;
        content->assign(std::istreambuf_iterator<char>(in), {});
        return 0;
    }

  private:
    const fs::path mFile;
};

}  // namespace

PlainFiles::PlainFiles(const host::Board& board) : mBoard(board) {
    giveAllBack();
}

PlainFiles::~PlainFiles() {
    try {
        giveAllBack();
    } catch (const std::exception&) {
        // The next start tries it again.
    }
}

bool PlainFiles::holds(const std::string& path) {
    return path.rfind("/vendor/", 0) == 0 || path.rfind("/data/", 0) == 0;
}

void PlainFiles::write(const std::string& path, const std::string& content) {
    const fs::path file = fs::exists(aside(path)) ? aside(path) : fs::path(mBoard.device(path));
    if (fs::is_directory(file)) throw std::invalid_argument("is a directory");
    const fs::path next = this->next();
    fs::create_directories(file.parent_path());
    std::ofstream out(next, std::ios::binary);
    out << content;
    if (!out.flush()) throw std::system_error(errno, std::system_category(), next);
    fs::rename(next, file);  // a reader sees the old one or the new one
}

// Both names are the same file for a moment; then the link takes the place of one of them.
std::unique_ptr<Node> PlainFiles::adopt(const std::string& path) {
    if (!fs::is_regular_file(mBoard.device(path)))
        throw std::invalid_argument("there is no such file");
    fs::create_directories(aside(path).parent_path());
    fs::create_hard_link(mBoard.device(path), aside(path));
    const fs::path link = next();
    fs::create_symlink(mBoard.hardware() + path, link);
    fs::rename(link, mBoard.device(path));
    return std::make_unique<AdoptedFile>(aside(path));
}

void PlainFiles::giveBack(const std::string& path) {
    // Unless somebody has put another file there meanwhile.
    if (fs::is_symlink(mBoard.device(path))) {
        fs::rename(aside(path), mBoard.device(path));
    } else {
        fs::remove(aside(path));
    }
}

fs::path PlainFiles::next() const {
    return fs::path(mBoard.directory) / "next";
}

fs::path PlainFiles::aside(const std::string& path) const {
    return mBoard.aside() + path;
}

// The paths are listed first, because giving one back takes it out of the directory that is being
// walked.
void PlainFiles::giveAllBack() {
    const fs::path top = mBoard.aside();
    if (!fs::exists(top)) return;
    std::vector<std::string> paths;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top)) {
        if (entry.is_regular_file())
            paths.push_back("/" + entry.path().lexically_relative(top).string());
    }
    for (const std::string& path : paths) giveBack(path);
    fs::remove_all(top);
    fs::remove(next());
}

}  // namespace tarq::board
