// radio watch: every key that is received, and why there may be none. Keys, the daemon's end and
// Ctrl-C come on threads of their own and meet in one Watch; the main thread looks at it every
// second, and after three seconds of silence asks the service which link of the chain is the silent
// one.
#include <binder/ProcessState.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <errno.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <condition_variable>
#include <optional>
#include <ostream>

#include "tools/tarqctl/ask/interrupt.h"
#include "tools/tarqctl/commands/radio_commands.h"
#include "tools/tarqctl/print_json.h"
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
    enum class End { kNone, kEnough, kDaemonEnded };

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

    // The first call counts.
    void end(End how) {
        const std::lock_guard<std::mutex> lock(mLock);
        if (mEnd == End::kNone) mEnd = how;
        mChanged.notify_one();
    }

    // A while long, at most.
    End waitForEnd() {
        std::unique_lock<std::mutex> lock(mLock);
        mChanged.wait_for(lock, kBetweenLooks, [this] { return mEnd != End::kNone; });
        return mEnd;
    }

    bool hasEvents() const { return mEvents > 0; }
    // Whether nothing has come for a while.
    bool isSilent() {
        const std::lock_guard<std::mutex> lock(mLock);
        return steady_clock::now() - mLastEvent >= kSilence;
    }

    void sayCount() const {
        const int64_t events = mEvents;
        mSession.notice(std::to_string(events) + (events == 1 ? " event" : " events"));
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

// What there is to ask and, in *status, its first answer.
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
    const std::string number = " (chip status " + std::to_string(status) + ")";
    if (status == kChipNotReady) {
        return "the receiver is being started or set to another frequency" + number;
    }
    if (status == kChipAbsent) return "no receiver answers" + number;
    return "the receiver is ready" + number + ", no key has come";
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
    const std::optional<int32_t> status = askStatus(session, radio);
    if (!status) return;
    const std::string link = silentLink(*status);
    const bool isWell = *status != kChipNotReady && *status != kChipAbsent;
    const bool isNews = *told != link && !(isWell && told->empty() && watch.hasEvents());
    if (isNews) session.notice("nothing for " + seconds(kSilence) + ": " + link);
    *told = link;
}

int watchKeys(Session& session, int32_t limit) {
    const auto watch = std::make_shared<Watch>(session, limit);
    // _exit: another thread may be in the middle of a call, or of a line that nobody takes.
    const Interrupt interrupt([watch] {
        watch->sayCount();
        _exit(kDone);
    });
    const sp<DaemonEnd> daemonEnd = new DaemonEnd(watch);
    sp<IRadioKeyService> radio;
    watch->start([&] {
        int32_t status = 0;
        radio = registerWatch(session, watch, daemonEnd, &status);
        session.notice("registered; frequency " + asText(storedFrequency()) + ", chip status " +
                       std::to_string(status));
    });
    std::string told;
    Watch::End end = Watch::End::kNone;
    while ((end = watch->waitForEnd()) == Watch::End::kNone) {
        explainSilence(session, *radio, *watch, &told);
    }
    watch->sayCount();
    if (end == Watch::End::kEnough) return kDone;
    Failure failure = notListening(session, ECONNREFUSED);
    failure.why = "the daemon ended";
    throw failure;
}

}  // namespace

Run declareRadioWatch(CLI::App& app) {
    const auto limit = std::make_shared<int32_t>(0);
    addNumber(app, "-n", "end after N keys", parseCount, limit.get())->type_name("N");
    return [limit](Session& session) { return watchKeys(session, *limit); };
}

}  // namespace tarq::tools
