// A board of plain files for the test's own process: no virtual board plays it.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include "host/run/board.h"
#include "tests/temporary_directory.h"

// One directory for all tests of a process, because what is tested finds its board once, when it
// first needs one. Each object finds it empty; what starts a daemon there outlives it, not the
// other way round.
struct PlainBoard : tarq::host::Board {
    PlainBoard() {
        static const TemporaryDirectory instance;
        directory = instance.path();
        setenv("TARQ_BOARD", directory.c_str(), 1);
        for (const auto& part : std::filesystem::directory_iterator(directory))
            std::filesystem::remove_all(part);
        std::filesystem::create_directories(properties());
    }
    std::string operator/(const std::string& relative) const { return directory + "/" + relative; }

    void setProperty(const std::string& name, const std::string& value) const {
        writeFile(properties() + "/" + name, value);
    }
    // "" when it is not set.
    std::string property(const std::string& name) const {
        return readFile(properties() + "/" + name);
    }
};
