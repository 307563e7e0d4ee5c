// One pin of the GPIO controller as an input, through the kernel's files in /sys/class/gpio.
#pragma once

#include <stdint.h>

#include <string>

// Sets value to what the pin's value file holds. A pin that is not exported is for the time of the
// read; one that is keeps its direction. False, and value as it was, when it cannot be read; the
// reason is logged, and the pin stays exported if it came that far, so that the next call finds it.
//
// Any thread, but nothing keeps two calls for one pin apart: the one that loses fails, or reads the
// pin before it is an input.
bool readGpioInput(uint32_t gpio, std::string& value);
