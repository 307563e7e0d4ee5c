// A board of plain files for the targets that ask its probes.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "host/run/board.h"

// The board has a touch panel, "gt9xx-5", and panel 3. It is this process's board from here on, and
// goes with the object.
class BoardFiles {
  public:
    BoardFiles() {
        if (mkdtemp(mPath.data()) == nullptr) abort();
        write("/sys/class/tpinfo/tpinfo_ic_info", "type:gt9xx\nid:5\n");
        write("/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/hwid-flag", {"\0\0\0\3", 4});
        setenv("TARQ_BOARD", mPath.c_str(), 1);
    }
    ~BoardFiles() { std::filesystem::remove_all(mPath); }

    // Paths are the device's.
    void write(const std::string& devicePath, const std::string& content) {
        const std::filesystem::path path = mPath + "/root" + devicePath;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << content;
    }

    // As if the board's build.prop had it: a read-only one is not refused.
    void setProperty(const std::string& name, const std::string& value) {
        std::filesystem::create_directories(tarq::host::Board{mPath}.properties());
        std::ofstream(tarq::host::Board{mPath}.properties() + "/" + name) << value;
    }

    // Makes a device node be another file, such as a pseudo terminal.
    void link(const std::string& target, const std::string& devicePath) {
        const std::filesystem::path path = mPath + "/root" + devicePath;
        std::filesystem::create_directories(path.parent_path());
        std::filesystem::create_symlink(target, path);
    }

  private:
    std::string mPath = "/tmp/tarq_fuzz.XXXXXX";
};
