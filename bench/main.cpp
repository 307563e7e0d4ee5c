// Runs the measurements and prints one line each: NAME RATIO. Lines with # say what was divided. A
// ratio to a floor that was measured in the same minute can be compared between machines and days;
// a time cannot.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <string>

#include "bench/bench.h"

namespace bench {

// Collects the "value" of every repetition, and prints the ratio of the medians at the end. Google
// Benchmark's own times are not looked at: they cover what surrounds a measurement as well.
class RatioReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) continue;
            mValues[run.run_name.function_name].push_back(run.counters.at("value"));
        }
    }

    void Finalize() override {
        for (const auto& [name, values] : mValues) {
            const std::string what = name.substr(0, name.find('/'));
            const std::string variant = name.substr(std::min(what.size() + 1, name.size()));
            if (variant == "floor") continue;
            const double value = median(values);
            if (mValues.count(what + "/floor") == 0) {
                printf("# %s: %.1f\n", name.c_str(), value);
                continue;
            }
            const double floor = median(mValues.at(what + "/floor"));
            printf("# %s: %.1f beside %.1f\n", name.c_str(), value, floor);
            const bool isMain = variant == "tarqd";
            printf("%s%s %.3f\n", isMain ? "" : "# ", (isMain ? what : name).c_str(),
                   value / floor);
        }
    }

  private:
    std::map<std::string, std::vector<double>> mValues;
};

}  // namespace bench

int main(int argc, char** argv) {
    // The other processes that a measurement needs are this same program.
    if (argc > 1 && strcmp(argv[1], "worker") == 0) return bench::runWorker(argc, argv);
    if (argc > 1 && strcmp(argv[1], "receiver") == 0) return bench::runReceiver(argc, argv);
    // Repetitions of a pair take turns, so that both see the same machine.
    std::vector<char*> arguments(argv, argv + argc);
    std::string defaults[] = {"--benchmark_repetitions=9",
                              "--benchmark_enable_random_interleaving=true"};
    for (std::string& argument : defaults) arguments.insert(arguments.begin() + 1, argument.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

    bench::Daemon::prepareBoard();
    bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    bench::Daemon::removeBoard();
    return 0;
}
