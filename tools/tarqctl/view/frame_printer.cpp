#include "tools/tarqctl/view/frame_printer.h"

#include <algorithm>
#include <ostream>

namespace tarq::tools {

FramePrinter::FramePrinter(const Session& session, const std::vector<std::string>& senders)
    : mSession(session) {
    for (const std::string& sender : senders) mDirections.push_back({sender});
}

FramePrinter::Direction& FramePrinter::of(const std::string& sender) {
    const auto known = std::find_if(mDirections.begin(), mDirections.end(),
                                    [&](const Direction& one) { return one.sender == sender; });
    return known != mDirections.end() ? *known : mDirections.emplace_back(Direction{sender});
}

void FramePrinter::print(Direction* direction, const std::vector<board::ash::Frame>& frames) const {
    for (const board::ash::Frame& frame : frames) {
        if (frame.damage.empty()) {
            ++direction->good;
        } else {
            ++direction->damaged;
            direction->skippedBytes += frame.bytes.size();
        }
        printFrame(mSession, frame, direction->last);
    }
}

void FramePrinter::take(const std::optional<FrameOrigin>& origin, const board::ash::Bytes& bytes) {
    Direction& direction = of(origin ? origin->sender : "");
    direction.last = origin;
    print(&direction, direction.reader.read(bytes));
}

void FramePrinter::finish() {
    if (mDirections.empty()) of("");
    for (Direction& direction : mDirections) print(&direction, direction.reader.finish());
    if (mSession.json) return;
    const auto number = [](size_t count, const std::string& what) {
        return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
    };
    for (const Direction& one : mDirections) {
        mSession.out << one.sender + (one.sender.empty() ? "" : ": ") + number(one.good, "frame") +
                                ", " + std::to_string(one.damaged) + " damaged, " +
                                number(one.skippedBytes, "byte") + " skipped\n"
                     << std::flush;
    }
}

}  // namespace tarq::tools
