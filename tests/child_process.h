// A program that a test starts, reads from and ends. It dies with the test.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// How long a test waits for what must happen, generous for a sanitizer on a busy machine.
constexpr std::chrono::seconds kDeadline{20};

// Asks again and again; false when the deadline has passed.
inline bool eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + kDeadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        usleep(2000);
    }
    return true;
}

// How many the process has open.
inline auto openDescriptors(pid_t process = getpid()) {
    return std::distance(
            std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd"), {});
}

using Words = std::vector<std::string>;

// The line split at blanks.
inline Words wordsOf(const std::string& line) {
    std::istringstream split(line);
    return {std::istream_iterator<std::string>(split), {}};
}

class ChildProcess {
  public:
    // environment: NAME=VALUE texts on top of the test's own. uid: run as that user. Standard
    // output is read by the test, standard error is the test's.
    explicit ChildProcess(const Words& command, const Words& environment = {},
                          uid_t uid = getuid()) {
        int ends[2];
        EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
        mPid = fork();
        if (mPid == 0) {
            for (const std::string& entry : environment) putenv(strdup(entry.c_str()));
            dup2(ends[1], STDOUT_FILENO);
            // Opened by the test's own user: the way to the program may be closed to the other.
            const int program = open(command[0].c_str(), O_PATH | O_CLOEXEC);
            if (uid != getuid() && (setgid(uid) != 0 || setuid(uid) != 0)) _exit(126);
            prctl(PR_SET_PDEATHSIG, SIGKILL);  // changing the user would undo it
            std::vector<char*> argv;
            for (const std::string& word : command) argv.push_back(strdup(word.c_str()));
            argv.push_back(nullptr);
            fexecve(program, argv.data(), environ);
            execvp(argv[0], argv.data());  // a name to be found on PATH
            _exit(127);
        }
        close(ends[1]);
        mOutput = ends[0];
    }
    ~ChildProcess() {
        if (mPid > 0) {
            kill(SIGKILL);
            kill(SIGCONT);
            waitpid(mPid, nullptr, 0);
        }
        close(mOutput);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return mPid; }
    // Told to stop, a process goes on until one of its threads has had the processor once more:
    // SIGSTOP is waited for.
    void kill(int signal) const {
        ::kill(mPid, signal);
        siginfo_t stopped;
        if (signal == SIGSTOP) waitid(P_PID, static_cast<id_t>(mPid), &stopped, WSTOPPED);
    }

    // The next line without its newline; what came before the end of output or the deadline if no
    // newline did.
    std::string readLine() {
        for (;;) {
            const size_t newline = mBuffer.find('\n');
            if (newline != std::string::npos) {
                const std::string line = mBuffer.substr(0, newline);
                mBuffer.erase(0, newline + 1);
                return line;
            }
            if (!readMore()) return std::exchange(mBuffer, "");
        }
    }

    std::string readAll() {
        while (readMore()) continue;
        return std::exchange(mBuffer, "");
    }

    // Its exit status, 128 + signal for a signal, -1 if it is still running at the deadline.
    int wait() {
        int status = 0;
        if (!eventually([&] { return waitpid(mPid, &status, WNOHANG) == mPid; })) return -1;
        mPid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

  private:
    bool readMore() {
        pollfd event = {mOutput, POLLIN, 0};
        const int timeout = static_cast<int>(std::chrono::milliseconds(kDeadline).count());
        char chunk[4096];
        if (poll(&event, 1, timeout) != 1) return false;
        const ssize_t size = read(mOutput, chunk, sizeof(chunk));
        if (size <= 0) return false;
        mBuffer.append(chunk, static_cast<size_t>(size));
        return true;
    }

    pid_t mPid = -1;
    int mOutput = -1;
    std::string mBuffer;
};
