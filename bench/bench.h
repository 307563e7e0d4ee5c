// What the measurements share. Each is a pair of benchmarks, "NAME/tarqd" and "NAME/floor", that
// report their "value"; main prints the ratio of the two medians. A third one, "NAME/VARIANT", is
// told in a comment line, and so is one that has no floor.
#pragma once

#include <benchmark/benchmark.h>
#include <sched.h>
#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

inline double microsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

// At least one value is needed. A mean would be moved by the few calls that were preempted.
double median(std::vector<double> values);

// Reports the median time of one call of body, in µs: a preempted one does not count. body checks
// its own outcome and aborts, so that nothing is measured that did not happen.
template <typename Body>
void timeEach(benchmark::State& state, Body body) {
    std::vector<double> micros;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        body();
        micros.push_back(microsSince(start));
    }
    state.counters["value"] = median(std::move(micros));
}

// Reports how many system calls body makes, in a process of its own, from the place on where it
// calls beginCount(). The process must be allowed to trace its child.
void countSystemCalls(benchmark::State& state, void (*body)());
void beginCount();

// Starts a program that dies with this one. output, where given, gets a descriptor of its standard
// output, which the caller closes. A program that cannot be run exits with 127.
pid_t spawn(const std::vector<std::string>& command, int* output = nullptr);
// Ends a program of spawn, and waits until it has.
void stop(pid_t pid);

// Runs the caller, and what it starts from here on, on one CPU while it lives: two processes that
// answer each other then pay for the switch alone, and not for how far apart their CPUs are.
class OneCpu {
  public:
    OneCpu();
    ~OneCpu();

  private:
    cpu_set_t mBefore;
};

// A daemon on the demo board, ready to be called. It logs to a file, as scripts/run lets it, or
// nowhere. One at a time, as a board has one.
class Daemon {
  public:
    // The board is in place from before the first daemon until after the last.
    static void prepareBoard();
    static void removeBoard();

    explicit Daemon(bool logs = true);
    // The same beneath another program, whose output can be read. The caller closes it.
    Daemon(std::vector<std::string> command, int* output);
    ~Daemon();
    pid_t pid() const { return mPid; }

  private:
    pid_t mPid;
};

// The plainest round trip there is: a forked process that answers each packet of one
// SOCK_SEQPACKET socket with replySize bytes.
class PingPong {
  public:
    PingPong(size_t requestSize, size_t replySize);
    ~PingPong();
    // Sends a request and waits for its answer.
    void roundTrip();

  private:
    std::vector<char> mRequest;
    std::vector<char> mReply;
    int mFd;
    pid_t mPeer;
};

// How many bytes the two packets of a call take, by what its parcels hold: a floor has to carry as
// much as what is measured.
struct CallSizes {
    size_t request;
    size_t reply;
};
CallSizes setOtaTimestampSizes();
CallSizes getHardwareInfoSizes();

// The worker process of the throughput measurement.
int runWorker(int argc, char** argv);

// A client process that receives remote keys. Like the worker it is this same program, started with
// other arguments.
int runReceiver(int argc, char** argv);

}  // namespace bench
