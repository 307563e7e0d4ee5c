#pragma once

#include <filesystem>

namespace tarq::host {

// Takes away a mount that a killed board left, if there is one.
void clearStaleMount(const std::filesystem::path& mountPoint);

}  // namespace tarq::host
