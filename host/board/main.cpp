// The virtual board: plays the hardware of a device on a plain Linux machine.
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <exception>

#include "host/board/running_board.h"

static constexpr char kUsage[] =
        "usage: virtual_board serve BOARD DIR [--shared]\n"
        "Plays the board that the folder BOARD describes, in the directory DIR, until it is told\n"
        "to end. Prints \"ready\" when programs can be started with TARQ_BOARD=DIR.\n"
        "  --shared  lets other users of this machine talk to the board's daemon\n";

// The board ends with who started it, however that ends.
static void dieWithParent() {
    const pid_t parent = getppid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) raise(SIGTERM);
}

int main(int argc, char** argv) {
    // Blocked from the start: a signal that comes early waits until there is something to end.
    sigset_t endings;
    sigemptyset(&endings);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&endings, signal);
    sigprocmask(SIG_BLOCK, &endings, nullptr);
    dieWithParent();

    const bool shared = argc == 5 && strcmp(argv[4], "--shared") == 0;
    if ((argc != 4 && !shared) || strcmp(argv[1], "serve") != 0) {
        fputs(kUsage, stderr);
        return 2;
    }
    try {
        tarq::board::RunningBoard board(argv[3], shared);
        board.boot(argv[2]);
        puts("ready");
        fflush(stdout);
        int received = 0;
        sigwait(&endings, &received);
        return 0;
    } catch (const std::exception& error) {
        fprintf(stderr, "virtual_board: %s\n", error.what());
        return 2;
    }
}
