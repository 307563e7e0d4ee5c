// What the LED service adds to the bare writes, of the attributes and of the log. Plain files in
// memory stand in for the attributes: each write to the board's driver is a round trip to another
// process, and one to a disk waits for it, beside which nothing else is seen. The service runs
// within this process, without a call: what a call adds is told by calls.cpp.
#include <host/log_sink.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

#include "bench/bench.h"
#include "bench/log_lines.h"
#include "common/device_file.h"
#include "rgbleds/effect_loader.h"
#include "rgbleds/led_attributes.h"
#include "rgbleds/rgbLedsService.h"

namespace bench {

namespace fs = std::filesystem;
using com::tarq::rgbleds::rgbLedsService;

// Takes the place of /sys in the board's tree, as long as it lives. What this process logs is
// dropped, unless the log is what is measured.
class PlainLeds {
  public:
    explicit PlainLeds(bool logs = false) {
        fs::rename(mSys, mSys + ".hw");
        if (mkdtemp(mMemory.data()) == nullptr) abort();
        fs::create_directories(mMemory + "/class/rgbled");
        fs::create_symlink(mMemory, mSys);
        if (!logs) tarq::host::setLogSink([](int, const char*, const std::string&) {});
    }
    ~PlainLeds() {
        fs::remove_all(mMemory);
        fs::rename(mSys + ".hw", mSys);
        tarq::host::setLogSink(nullptr);
    }

  private:
    const OneCpu mCpu;
    std::string mMemory = "/dev/shm/tarqd-bench.XXXXXX";
    const std::string mSys = std::string(getenv("TARQ_BOARD")) + "/root/sys";
};

// An attribute is opened, written and closed for each record, by the service as by this floor.
static void writeFile(const std::string& path, const char* text) {
    FILE* const file = fopen(path.c_str(), "w+e");
    fputs(text, file);
    fclose(file);
}

// The operation with all that belongs to it: the write, its log lines, and the callback's slot.
static void setColour(benchmark::State& state, bool logs) {
    const PlainLeds leds(logs);
    const android::sp<rgbLedsService> service = new rgbLedsService;
    bool done = false;
    timeEach(state, [&] { service->setRgbColor(3, 0xff8000, &done); });
    if (!done) abort();
}

static void ledTarqd(benchmark::State& state) {
    setColour(state, true);
}

static void ledUnlogged(benchmark::State& state) {
    setColour(state, false);
}

// The write as the service makes it, without the operation around it.
static void ledWrite(benchmark::State& state) {
    const PlainLeds leds;
    timeEach(state, [] { writeColorToFile(3, 0xff8000); });
}

static void ledFloor(benchmark::State& state) {
    const PlainLeds leds;
    const std::string path = deviceFile("/sys/class/rgbled/set_color");
    const LogLines lines([] {
        bool done = false;
        android::sp<rgbLedsService>(new rgbLedsService)->setRgbColor(3, 0xff8000, &done);
    });
    timeEach(state, [&] {
        writeFile(path, "3 ff8000");
        lines.write();
    });
}

// Enough steps that the reading of the file, and not its opening, is seen.
static constexpr int kSteps = 200;

static std::string effectFile() {
    const std::string path = std::string(getenv("TARQ_BOARD")) + "/effect.xml";
    std::string text = "<effect loop='1' interval='20' duration='3000'><led id='1'>";
    for (int i = 0; i < kSteps; ++i) text += "<eff s='5'>ff8000</eff>";
    writeFile(path, (text + "</led></effect>").c_str());
    return path;
}

static void effectTarqd(benchmark::State& state) {
    const PlainLeds leds;
    const std::string path = effectFile();
    timeEach(state, [&] { parseXmlFile(path.c_str()); });
}

// The same records in the same order, without a file to read them from.
static void effectFloor(benchmark::State& state) {
    const PlainLeds leds;
    const std::string frame = deviceFile(kTransferState);
    const std::string values = deviceFile(kTransferValues);
    const std::string data = deviceFile(kTransferData);
    timeEach(state, [&] {
        writeFile(frame, "1");
        for (const char* value : {"loop 1", "interval 20", "duration 3000"}) {
            writeFile(values, value);
        }
        for (int i = 0; i < kSteps; ++i) writeFile(data, "1 ff8000 5");
        writeFile(frame, "0");
    });
}

static void writeSystemCalls(benchmark::State& state) {
    const PlainLeds leds;
    countSystemCalls(state, [] {
        beginCount();
        writeColorToFile(3, 0xff8000);
    });
}

BENCHMARK(ledTarqd)->Name("led/tarqd")->Iterations(3000);
BENCHMARK(ledUnlogged)->Name("led/without a log")->Iterations(3000);
BENCHMARK(ledWrite)->Name("led/write alone")->Iterations(3000);
BENCHMARK(ledFloor)->Name("led/floor")->Iterations(3000);
BENCHMARK(effectTarqd)->Name("effect/tarqd")->Iterations(50);
BENCHMARK(effectFloor)->Name("effect/floor")->Iterations(50);
BENCHMARK(writeSystemCalls)->Name("system calls of an LED write")->Iterations(1);

}  // namespace bench
