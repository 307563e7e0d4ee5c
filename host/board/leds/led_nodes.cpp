// All attributes are files of one driver, and each write to one of them is a record of the trace,
// with the reason if it was refused: the daemon cannot tell that, since it looks at no result of a
// write.
#include "host/board/leds/led_nodes.h"

#include <utility>

#include "host/board/leds/led_driver.h"
#include "host/run/records.h"

namespace tarq::board {

namespace {

// Shared by the files of all attributes.
struct Leds {
    LedDriver driver;
    std::shared_ptr<LedTrace> trace;
};

// The lock of the hardware is held in each call, so the order in the trace is that in which the
// driver got the records. An attribute that only takes something cannot be read (EINVAL), and a
// record that is refused fails its write with the same error, as a driver's would.
class LedAttribute : public Node {
  public:
    LedAttribute(std::shared_ptr<Leds> leds, std::string name)
        : Node(0644), mLeds(std::move(leds)), mName(std::move(name)) {}

    int read(std::string* content) override {
        return mLeds->driver.read(mName, content) ? 0 : -EINVAL;
    }
    // The time is taken once, so that the trace tells the driver's own.
    int write(const std::string& record) override {
        const int64_t ms = host::nowMs();
        const std::string why = mLeds->driver.write(mName, record, ms);
        mLeds->trace->add({ms, mName, record, why});
        return why.empty() ? 0 : -EINVAL;
    }
    bool isPlain() const override { return true; }

  private:
    const std::shared_ptr<Leds> mLeds;
    const std::string mName;
};

}  // namespace

// The number of LEDs goes first, so that whoever reads the trace can have a driver of its own that
// shows the same.
void LedTrace::open(const std::string& file) {
    mFile.open(file);
    mFile.add(host::firstLedLine(mLeds));
}

// The driver goes by the same names, and refuses any other. Without FUSE plain files stand in, and
// nothing is recorded.
std::shared_ptr<LedTrace> addLeds(Hardware& hardware, size_t count) {
    const auto trace = std::make_shared<LedTrace>(count);
    const auto leds = std::make_shared<Leds>(Leds{LedDriver(count), trace});
    for (const std::string name :
         {"set_color", "set_brightness", "get_color", "get_brightness", "standby_effect",
          "xml_effect_trans_state", "xml_effect_trans_vals", "xml_effect_trans_data"}) {
        hardware.add("/sys/class/rgbled/" + name, name, std::make_unique<LedAttribute>(leds, name));
    }
    return trace;
}

}  // namespace tarq::board
