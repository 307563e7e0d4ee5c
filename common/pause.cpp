#include "common/pause.h"

#include <thread>

void pauseFor(std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
}
