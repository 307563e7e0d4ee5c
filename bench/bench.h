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

double median(std::vector<double> values);

// Reports the median time of one call of body, in µs: a preempted one does not count.
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
// calls beginCount().
void countSystemCalls(benchmark::State& state, void (*body)());
void beginCount();

// Starts a program that dies with this one. pipe: gets its standard output.
pid_t spawn(const std::vector<std::string>& command, int* output = nullptr);
void stop(pid_t pid);

// Runs the caller, and what it starts from here on, on one CPU while it lives.
class OneCpu {
  public:
    OneCpu();
    ~OneCpu();

  private:
    cpu_set_t mBefore;
};

// A daemon on the demo board. It logs to a file, as scripts/run lets it, or nowhere.
class Daemon {
  public:
    // The board is in place from before the first daemon until after the last.
    static void prepareBoard();
    static void removeBoard();

    explicit Daemon(bool logs = true);
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
    void roundTrip();

  private:
    std::vector<char> mRequest;
    std::vector<char> mReply;
    int mFd;
    pid_t mPeer;
};

// How many bytes the two packets of a call take, by what its parcels hold.
struct CallSizes {
    size_t request;
    size_t reply;
};
CallSizes setOtaTimestampSizes();
CallSizes getHardwareInfoSizes();

// The worker process of the throughput measurement.
int runWorker(int argc, char** argv);

// A client process that receives remote keys.
int runReceiver(int argc, char** argv);

}  // namespace bench
