// The radio key service with a receiver library that does what the test says, in one process.
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <gmock/gmock.h>
#include <pthread.h>

#include <deque>

#include "common/pause.h"
#include "radiokey/RadioKeyService.h"
#include "radiokey/radiokey.h"
#include "tests/captured_log.h"
#include "tests/child_process.h"
#include "tests/plain_board.h"

using namespace testing;
using android::sp;
using com::tarq::radiokey::BnRadioKeyCallback;
using com::tarq::radiokey::RadioKeyService;

namespace {

using Reception = std::tuple<int32_t, int32_t, int32_t>;

// The library. What it is asked stands in calls; inReset runs while a reset does.
struct Receiver {
    std::mutex lock;
    std::vector<std::string> calls;
    std::deque<Reception> receptions;
    std::function<void()> inReset;

    int32_t note(const std::string& call) {
        const std::lock_guard guard(lock);
        calls.push_back(call);
        return -1;  // nobody may care
    }
    // How often it was asked that; forgets all calls.
    int64_t takes(const std::string& call) {
        const std::lock_guard guard(lock);
        const auto all = std::exchange(calls, {});
        return std::count(all.begin(), all.end(), call);
    }
} receiver;

std::atomic<bool> noThreads{false};
std::atomic<int64_t> paused{0};  // ms, in pauses of 5 s that were asked for

}  // namespace

int32_t radiokey_init(int32_t frequency) {
    return receiver.note("init " + std::to_string(frequency));
}

int32_t radiokey_reset(int32_t frequency) {
    if (receiver.inReset) receiver.inReset();
    return receiver.note("reset " + std::to_string(frequency));
}

int32_t radiokey_uninit() {
    return receiver.note("uninit");
}

int32_t radiokey_detect_chip() {
    return 7;
}

int32_t radiokey_get_rssi_dbm() {
    receiver.note("rssi");
    return -60;
}

int32_t radiokey_recv_poll(int32_t* value1, int32_t* value2, int32_t* value3) {
    usleep(1000);
    const std::lock_guard guard(receiver.lock);
    if (receiver.receptions.empty()) return -1;
    std::tie(*value1, *value2, *value3) = receiver.receptions.front();
    receiver.receptions.pop_front();
    return 0;
}

void pauseFor(std::chrono::milliseconds time) {
    paused += time.count();
    usleep(1000);
}

extern "C" int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
extern "C" int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                     void* (*body)(void*), void* argument) {
    return noThreads ? EAGAIN : __real_pthread_create(thread, attributes, body, argument);
}

namespace {

constexpr char kFrequency[] = "persist.radiokey.frequence";
using Told = std::vector<std::pair<int, std::vector<int32_t>>>;  // which callback, and what

struct Callback : BnRadioKeyCallback {
    Callback(int n, Told* all) : number(n), told(all) {}
    android::binder::Status onClick(int32_t a, int32_t b, int32_t c, int32_t rssi) override {
        told->push_back({number, {a, b, c, rssi}});
        return android::binder::Status::ok();
    }
    const int number;
    Told* const told;
};

struct RadioKey : Test {
    ~RadioKey() override { end(); }
    void start() { service = new RadioKeyService; }
    // At the latest after its poll the receive thread lets go, and the service is destroyed.
    void end() {
        if (service == nullptr) return;
        service.clear();
        EXPECT_TRUE(eventually([] { return receiver.takes("uninit"); }));
    }
    int32_t status() {
        int32_t value = 0;
        EXPECT_TRUE(service->getChipStatus(&value).isOk());
        return value;
    }

    const PlainBoard board;
    CapturedLog log;
    sp<RadioKeyService> service;
};

TEST_F(RadioKey, starts_the_receiver_at_the_stored_frequency_whatever_it_is) {
    const std::pair<const char*, std::string> cases[] = {
            {"", "433"}, {"315", "315"}, {"abc", "0"}, {"-5", "-5"}};
    for (const auto& [stored, used] : cases) {
        SCOPED_TRACE(stored);
        board.setProperty(kFrequency, stored);
        log.take();
        start();
        EXPECT_TRUE(eventually([this] { return status() == 7; }));
        EXPECT_EQ(receiver.takes("init " + used), 1);
        EXPECT_THAT(log.take(), Contains("E RadioKeyService: RadioKeyService init, frequency=[" +
                                         used + "]\n"));
        end();
    }
}

TEST_F(RadioKey, is_not_ready_while_the_frequency_changes_and_keeps_the_new_one) {
    start();
    ASSERT_TRUE(eventually([this] { return status() == 7; }));
    int32_t during = 0;
    receiver.inReset = [&] { during = status(); };
    for (const int32_t frequency : {315, 0, -1, INT32_MAX, INT32_MIN}) {
        const std::string text = std::to_string(frequency);
        EXPECT_TRUE(service->setRadiokeyFrequency(frequency).isOk());
        EXPECT_EQ(during, -1);
        EXPECT_EQ(status(), 7);
        EXPECT_EQ(receiver.takes("reset " + text), 1);
        EXPECT_THAT(log.take(), Contains("E RadioKeyService: set property -> " + text));
        EXPECT_EQ(board.property(kFrequency), text);
    }
    receiver.inReset = nullptr;
}

TEST_F(RadioKey, tells_each_callback_once_in_the_order_of_their_addresses) {
    start();
    Told told;
    std::vector<sp<Callback>> callbacks;
    for (int i = 0; i < 5; ++i) callbacks.push_back(new Callback(i, &told));
    for (int times = 0; times < 2; ++times) {
        for (const sp<Callback>& callback : callbacks) service->registerRadioKeyCallback(callback);
    }
    const auto binder = [](const sp<Callback>& c) { return android::IInterface::asBinder(c); };
    const auto before = [&](const auto& a, const auto& b) { return binder(a) < binder(b); };
    std::sort(callbacks.begin(), callbacks.end(), before);
    service->onClick(1, -2, 3, -60);
    Told expected;
    for (const auto& callback : callbacks) expected.push_back({callback->number, {1, -2, 3, -60}});
    EXPECT_EQ(told, expected);

    service->remove(binder(callbacks[2]).get());
    service->remove(binder(callbacks[2]).get());  // no longer known
    expected.erase(expected.begin() + 2);
    told.clear();
    service->onClick(1, -2, 3, -60);
    EXPECT_EQ(told, expected);
}

TEST_F(RadioKey, hands_on_receptions_with_their_strength_and_reads_it_for_nobody_as_well) {
    const auto receive = [](const Reception& values) {
        {
            const std::lock_guard guard(receiver.lock);
            receiver.receptions.push_back(values);
        }
        EXPECT_TRUE(eventually([] { return receiver.takes("rssi") == 1; }));
    };
    start();
    receive({1, 2, 3});
    Told told;
    service->registerRadioKeyCallback(new Callback(0, &told));
    receive({4, 5, 6});
    end();  // told was written before
    EXPECT_EQ(told, (Told{{0, {4, 5, 6, -60}}}));
}

TEST_F(RadioKey, request_thread_logs_every_5_seconds) {
    paused = 0;
    start();
    EXPECT_TRUE(eventually([] { return paused >= 15'000; }));
    const auto entries = log.take();
    EXPECT_THAT(std::count(entries.begin(), entries.end(), "E RadioKeyService: request"),
                AllOf(Ge(3), Le(paused / 5000 + 1)));
}

TEST_F(RadioKey, a_setup_thread_that_cannot_start_is_told_and_the_chip_never_ready) {
    noThreads = true;
    start();
    noThreads = false;
    EXPECT_THAT(log.take(), Contains("E RadioKeyService: Unable to start recv thread: "
                                     "Unknown error -2147483648"));
    EXPECT_EQ(status(), -1);
}

}  // namespace
