// radio watch: every key that is received, and why there may be none. Keys, the daemon's end, the
// end of the time and Ctrl-C come on threads of their own and meet in one Watch; the main thread
// looks at it every second, whether the board still runs as well, and after three seconds of
// silence asks the service which link of the chain is the silent one.
#include <binder/ProcessState.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <errno.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <condition_variable>
#include <optional>
#include <ostream>

#include "host/run/board.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/follow.h"
#include "tools/tarqctl/ask/limits.h"
#include "tools/tarqctl/ask/why_silent.h"
#include "tools/tarqctl/commands/radio_commands.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

using android::IBinder;
using android::sp;
using android::wp;
using android::binder::Status;
using com::tarq::radiokey::BnRadioKeyCallback;
using com::tarq::radiokey::IRadioKeyService;
using std::chrono::steady_clock;

constexpr std::chrono::seconds kSilence{3};
constexpr std::chrono::seconds kBetweenLooks{1};

// Shared by the thread that asks and those on which keys, the daemon's end and Ctrl-C come. A
// registration cannot be withdrawn: what comes after the end is passed over.
class Watch {
  public:
    enum class End { kNone, kEnough, kTimeIsUp, kDaemonEnded, kBoardEnded };

    Watch(const Session& session, int32_t limit) : mSession(session), mLimit(limit) {}

    // Registers and says so. The time counts from before that, whatever it takes to say it, and
    // keys are held back until then.
    void start(const std::function<void()>& registerAndSay) {
        const std::lock_guard<std::mutex> lock(mLock);
        mStart = steady_clock::now();
        registerAndSay();
        mLastEvent = steady_clock::now();
    }

    // On one thread, which waits for a slow reader of the output: keys that the daemon cannot
    // deliver meanwhile are lost for this process, as for any other.
    void take(const Json& values, const std::string& text) {
        {
            const std::lock_guard<std::mutex> lock(mLock);
            if (mEnd != End::kNone) return;
            mLastEvent = steady_clock::now();
        }
        ++mEvents;
        if (mSession.json) {
            Json line = {{"ms", (mLastEvent - mStart) / std::chrono::milliseconds(1)}};
            line.update(values);
            printJson(mSession.out, line);
        } else {
            mSession.out << text + "\n" << std::flush;
        }
        if (mEvents == mLimit || !mSession.out.good()) end(End::kEnough);
    }

    // The first call counts; true for that one.
    bool end(End how) {
        const std::lock_guard<std::mutex> lock(mLock);
        const bool isFirst = mEnd == End::kNone;
        if (isFirst) mEnd = how;
        mChanged.notify_one();
        return isFirst;
    }

    // A while long, at most.
    End waitForEnd() {
        std::unique_lock<std::mutex> lock(mLock);
        mChanged.wait_for(lock, kBetweenLooks, [this] { return mEnd != End::kNone; });
        return mEnd;
    }

    bool hasEvents() const { return mEvents > 0; }
    bool lacksEvents() const { return mEvents < mLimit; }
    // Whether nothing has come for a while.
    bool isSilent() {
        const std::lock_guard<std::mutex> lock(mLock);
        return steady_clock::now() - mLastEvent >= kSilence;
    }

    void sayCount(const std::string& more = "") const {
        const int64_t events = mEvents;
        mSession.notice(std::to_string(events) + (events == 1 ? " event" : " events") + more);
    }

  private:
    const Session& mSession;
    const int64_t mLimit;             // 0: none
    std::atomic<int64_t> mEvents{0};  // counted before they are printed
    std::mutex mLock;                 // guards what follows
    std::condition_variable mChanged;
    steady_clock::time_point mStart;
    steady_clock::time_point mLastEvent;
    End mEnd = End::kNone;
};

// Binder keeps it for as long as the daemon has it registered, so it holds a share of the watch.
class KeyCallback : public BnRadioKeyCallback {
  public:
    explicit KeyCallback(const std::shared_ptr<Watch>& watch) : mWatch(watch) {}

    Status onClick(int32_t value1, int32_t value2, int32_t value3, int32_t rssiDBm) override {
        mWatch->take(
                {{"value1", value1}, {"value2", value2}, {"value3", value3}, {"rssi_dbm", rssiDBm}},
                std::to_string(value1) + " " + std::to_string(value2) + " " +
                        std::to_string(value3) + " " + std::to_string(rssiDBm) + " dBm");
        return Status::ok();
    }

  private:
    const std::shared_ptr<Watch> mWatch;
};

class DaemonEnd : public IBinder::DeathRecipient {
  public:
    explicit DaemonEnd(const std::shared_ptr<Watch>& watch) : mWatch(watch) {}

    void binderDied(const wp<IBinder>& /*who*/) override { mWatch->end(Watch::End::kDaemonEnded); }

  private:
    const std::shared_ptr<Watch> mWatch;
};

// What there is to ask and, in *status, its first answer. The daemon's end is watched before the
// callback is registered: an end in between would never be heard of.
sp<IRadioKeyService> registerWatch(Session& session, const std::shared_ptr<Watch>& watch,
                                   const sp<DaemonEnd>& daemonEnd, int32_t* status) {
    const Daemon daemon(session, kRadioIsSlow);
    android::ProcessState::self()->startThreadPool();
    sp<IRadioKeyService> radio = radioOf(daemon);
    daemon.expectOk(radio->getChipStatus(status));
    android::IInterface::asBinder(radio)->linkToDeath(daemonEnd);
    daemon.expectOk(radio->registerRadioKeyCallback(new KeyCallback(watch)));
    return radio;
}

// Which link of the chain is the silent one, by the chip's status.
std::string silentLink(int32_t status) {
    if (status == kChipNotReady || status == kChipAbsent) return meaningOfStatus(status);
    return "the receiver is ready (" + meaningOfStatus(status) + "), no key has come";
}

// Nothing where the daemon has ended, which is told otherwise.
std::optional<int32_t> askStatus(const Session& session, IRadioKeyService& radio) {
    const TimeLimit limit(session, [&] { return daemonTooSlow(session, kRadioIsSlow); });
    int32_t status = 0;
    if (!radio.getChipStatus(&status).isOk()) return std::nullopt;
    return status;
}

// Tells of silence once, and again when its reason changes. Keys say that all is well.
void explainSilence(const Session& session, IRadioKeyService& radio, Watch& watch,
                    std::string* told) {
    if (!watch.isSilent()) return;
    std::string link = whyNobodyAnswers(session, false, {}).why;
    bool isWell = false;
    if (link.empty()) {
        const std::optional<int32_t> status = askStatus(session, radio);
        if (!status) return;
        link = silentLink(*status);
        isWell = *status != kChipNotReady && *status != kChipAbsent;
    }
    const bool isNews = *told != link && !(isWell && told->empty() && watch.hasEvents());
    if (isNews) session.notice("nothing for " + seconds(kSilence) + ": " + link);
    *told = link;
}

// Where there is neither, it goes on until Ctrl-C.
struct Limits {
    int32_t keys = 0;
    double seconds = 0;
};

// _exit: another thread may be in the middle of a call, or of a line that nobody takes.
void endInTime(const Watch& watch, const Limits& limits) {
    const bool isShort = watch.lacksEvents();
    watch.sayCount(" in " + seconds(std::chrono::duration<double>(limits.seconds)) +
                   (isShort ? ", " + std::to_string(limits.keys) + " were to come" : ""));
    _exit(isShort ? kServiceSaidNo : kDone);
}

Watch::End waitForEnd(const Session& session, IRadioKeyService& radio, Watch& watch) {
    std::string told;
    for (;;) {
        if (const Watch::End end = watch.waitForEnd(); end != Watch::End::kNone) return end;
        if (!hasReader(session)) {
            watch.end(Watch::End::kEnough);
        } else if (!host::isRunning(session.board)) {
            watch.end(Watch::End::kBoardEnded);
        } else {
            explainSilence(session, radio, watch, &told);
        }
    }
}

[[noreturn]] void failWith(const Session& session, Watch::End end) {
    if (end == Watch::End::kBoardEnded) throw boardEnded(session);
    Failure failure = notListening(session, ECONNREFUSED);
    failure.why = "the daemon ended";
    throw failure;
}

// Whatever ends it, the count is said once, and by whoever was first.
int watchKeys(Session& session, const Limits& limits) {
    const auto watch = std::make_shared<Watch>(session, limits.keys);
    const Interrupt interrupt([watch] {
        watch->sayCount();
        _exit(kDone);
    });
    const sp<DaemonEnd> daemonEnd = new DaemonEnd(watch);
    sp<IRadioKeyService> radio;
    watch->start([&] {
        int32_t status = 0;
        radio = registerWatch(session, watch, daemonEnd, &status);
        session.notice("registered; " + meaningOfStatus(status) +
                       "; frequency at a start: " + asText(storedFrequency()));
    });
    std::optional<Timer> time;
    if (limits.seconds > 0) {
        time.emplace(std::chrono::duration<double>(limits.seconds), [watch, limits] {
            if (watch->end(Watch::End::kTimeIsUp)) endInTime(*watch, limits);
        });
    }
    const Watch::End end = waitForEnd(session, *radio, *watch);
    time.reset();  // does not return where the time was up first
    watch->sayCount();
    if (end == Watch::End::kEnough) return kDone;
    failWith(session, end);
}

}  // namespace

Run declareRadioWatch(CLI::App& app) {
    const auto limits = std::make_shared<Limits>();
    addNumber(app, "-n", "end after N keys", parseCount, &limits->keys)->type_name("N");
    addSeconds(app, "--for",
               "end after so many seconds; with -n, exit code 1 when fewer keys\n"
               "have come by then",
               &limits->seconds);
    return [limits](Session& session) { return watchKeys(session, *limits); };
}

}  // namespace tarq::tools
