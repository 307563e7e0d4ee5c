// The one way to sleep, so that a test can count the pauses instead of waiting: a program that
// defines pauseFor itself does not get this one.
#pragma once

#include <chrono>

// The whole time, whatever signals come.
void pauseFor(std::chrono::milliseconds time);
