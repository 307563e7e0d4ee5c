// A board of plain files for the test's own process: no virtual board plays it.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include "tests/temporary_directory.h"

// One directory for all tests of a process, because what is tested finds its board once, when it
// first needs one. Each object finds it empty; what starts a daemon there outlives it, not the
// other way round.
class PlainBoard {
  public:
    PlainBoard() {
        setenv("TARQ_BOARD", directory().c_str(), 1);
        for (const char* part : {"run", "root"}) std::filesystem::remove_all(*this / part);
        std::filesystem::create_directories(*this / "run/properties");
    }

    static const std::string& directory() {
        static const TemporaryDirectory instance;
        return instance.path();
    }
    std::string operator/(const std::string& relative) const {
        return directory() + "/" + relative;
    }
    // "/sys/class/gpio/export" -> where it is on this machine
    std::string file(const std::string& devicePath) const { return *this / ("root" + devicePath); }

    void setProperty(const std::string& name, const std::string& value) const {
        writeFile(*this / ("run/properties/" + name), value);
    }
    // "" when it is not set.
    std::string property(const std::string& name) const {
        return readFile(*this / ("run/properties/" + name));
    }
};
