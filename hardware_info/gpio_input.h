// One pin of the GPIO controller as an input, through the kernel's files in /sys/class/gpio.
#pragma once

#include <stdint.h>

#include <string>

// Sets value to what the pin's value file holds. A pin that can be read is left as it is, direction
// and all. One that cannot, which is usually one that is not exported, is exported and made an
// input, read once more, and unexported. False, and value as it was, when that fails as well; the
// reason is logged, and the pin stays exported if it came that far, so that the next call finds it.
//
// Any thread, but nothing keeps two calls for one pin apart: the one that loses fails, or reads the
// pin before it is an input.
bool readGpioInput(uint32_t gpio, std::string& value);
