// Nothing that was started may stay, whatever state it is in. What is stopped, by a signal or a
// debugger, does not hear that it is to end: it has as long as all others, since somebody may look
// at it, and is killed then. The user is never kept: who asks once more has it at once.
#include "tools/tarqctl/up/ending.h"

#include <utility>

namespace tarq::tools {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

using Children = std::vector<std::unique_ptr<Child>>;

// Whoever ends a process may tell it and its group, so that two signals come as one wish.
static constexpr milliseconds kOneWish{300};

static void killNow(Child& child) {
    child.signal(SIGKILL);
    child.signal(SIGCONT);
}

// False when the time was over, or the user asks for a quick end, which counts from the moment at
// which all began to end. After two seconds tell says what is waited for.
static bool waitFor(Child& child, const Signals& signals, steady_clock::time_point ending,
                    bool* isUrgent, std::function<void()> tell) {
    const auto begin = steady_clock::now();
    while (!child.isGone()) {
        const auto elapsed = steady_clock::now() - begin;
        if (*isUrgent || elapsed > kPatience) return false;
        if (tell && elapsed > std::chrono::seconds(2)) std::exchange(tell, nullptr)();
        const int signal = signals.wait(milliseconds(10));
        const bool isAgain = steady_clock::now() - ending > kOneWish;
        if ((signal == SIGINT || signal == SIGTERM) && isAgain) *isUrgent = true;
    }
    return true;
}

static std::string whyKilled(Child& child) {
    const std::string time = "within " + std::to_string(kPatience.count()) + " s";
    if (child.hasEnded()) return "what " + child.name() + " has started did not end " + time;
    return child.name() + (child.isStopped() ? " is stopped and" : "") + " did not end " + time;
}

void endAll(const Children& children, const Signals& signals,
            const std::function<void(const std::string&)>& say) {
    const auto ending = steady_clock::now();
    bool isUrgent = false;
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        (*child)->signal(SIGTERM);
        const auto tell = [&] {
            say("waiting for " + (*child)->name() + " to end; Ctrl-C ends all at once");
        };
        if (waitFor(**child, signals, ending, &isUrgent, tell)) continue;
        if (isUrgent) {
            for (const auto& each : children) killNow(*each);
        } else {
            say(whyKilled(**child) + ", and is killed");
            killNow(**child);
        }
        bool isKilled = false;  // nothing to be waited for but the kernel
        waitFor(**child, signals, ending, &isKilled, nullptr);
    }
}

}  // namespace tarq::tools
