#include "common/device_file.h"

std::string deviceFile(std::string path) {
    return path;
}
