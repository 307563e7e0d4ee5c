// Files for a test: a directory of its own, removed at the end with all that is in it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = std::filesystem::temp_directory_path() / "tarq_test.XXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        mPath = name;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return mPath; }
    std::string operator/(const std::string& relative) const { return mPath + "/" + relative; }

  private:
    std::string mPath;
};

// The whole file; "" when it cannot be read.
inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Makes the directories on the way as well.
inline void writeFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream out(path, std::ios::binary);
    out << content;
    ASSERT_TRUE(out.flush().good()) << path;
}
