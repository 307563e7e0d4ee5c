// tarqctl: the command line for people.
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <iostream>

#include "host/run/descriptors.h"
#include "tools/tarqctl/session.h"
#include "tools/tarqctl/tarqctl.h"

// As https://no-color.org has it: any value that is not empty says no.
static bool wantsColours() {
    const char* noColour = getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == '\0');
}

int main(int argc, char** argv) {
    tarq::host::openStandardDescriptors();
    // A reader that has had enough, such as head, ends the tool without a word, also where whoever
    // started it ignores the signal.
    signal(SIGPIPE, SIG_DFL);
    const int code = tarq::tools::runTarqctl({argv + 1, argv + argc}, wantsColours(), std::cin,
                                             std::cout, std::cerr);
    // What could not be printed was not done, whatever the daemon said.
    if (std::cout.flush()) return code;
    // The stream has kept no reason; one more try tells.
    const bool isBack = write(STDOUT_FILENO, "\n", 1) == 1;
    std::cerr << "tarqctl: standard output: cannot be written: "
              << (isBack           ? "it had no room"
                  : errno == EBADF ? "it is closed"
                                   : strerror(errno))
              << "\n";
    return tarq::tools::kCouldNotAsk;
}
