#include "tools/tarqctl/print_file.h"

#include <signal.h>
#include <unistd.h>

#include <ostream>
#include <thread>

namespace tarq::tools {

int printFile(const Session& session, const std::string& path, bool follows,
              const host::GrowingFile::TakeLine& print) {
    // Every line has been flushed, so that there is nothing left to do at Ctrl-C.
    if (follows) signal(SIGINT, [](int) { _exit(kDone); });
    host::GrowingFile file(path);
    if (const int error = file.read(print)) return error;
    while (follows && session.out.good()) {
        file.read(print);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    file.finish(print);
    return 0;
}

}  // namespace tarq::tools
