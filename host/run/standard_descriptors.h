// Descriptors 0, 1 and 2 of a program that was started with some of them closed.
#pragma once

namespace tarq::host {

// Opens /dev/null in the place of each that is closed, so that no file or socket gets its number
// and receives what is printed. Writing to such a standard output still fails, because what could
// not be printed was not done. To be called first of all.
void openStandardDescriptors();

// For a program that has not called it: the same descriptor with a number above them. The one
// given is closed then; a negative one is returned as it is. Close-on-exec.
int aboveStandard(int fd);

}  // namespace tarq::host
