// Three questions, each asked only when the one before was answered: reset, protocol version, who
// are you. The commands are those of EZSP (Silicon Labs UG100). What comes back is trusted: the
// first two answers may be anything, and of the third only the bytes of manufacturer and version
// are looked at. The property tells the end of it, the log each step.
#include "zigbee/zigbee_check_module.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <utility>
#include <vector>

#include "common/pause.h"
#include "zigbee/ash.h"
#include "zigbee/serial_port.h"

namespace {

// The tag of every log line of this module.
constexpr char kLogTag[] = "zigbee_check";

// What the co-processor answered to the last question.
struct Answer {
    uint8_t bytes[kMaxReceived];
    uint32_t length = 0;  // 0: nothing
};

// What is published; all zero until the third question was answered.
struct CoProcessor {
    int32_t exists = 0;
    uint16_t manufacturer = 0;
    uint16_t version = 0;  // major and minor in four bits each, patch in eight

    int majorNumber() const { return version >> 12; }
    int minorNumber() const { return version >> 8 & 15; }
    int patchNumber() const { return version & 255; }
};

// The next data frame. The EZSP sequence and the frame's number count on through all attempts.
std::vector<uint8_t> nextFrame(std::vector<uint8_t> content) {
    static uint16_t frames = 0;
    static uint8_t sequence = 0;
    content.insert(content.begin(), sequence++);
    return ash::dataFrame(frames++, std::move(content));
}

// Behind the sequence stand frame control, frame id and parameters.
std::vector<uint8_t> versionFrame() {
    return nextFrame({0x00, 0x00, 0x07});  // version, and the protocol version that is wanted
}

// FF in place of the frame id says that the frame has the longer form, with a second control byte.
std::vector<uint8_t> queryFrame() {
    return nextFrame({0x00, 0xFF, 0x00, 0x13});
}

void send(const std::vector<uint8_t>& frame) {
    write(serialPort, frame.data(), frame.size());
}

// Asks up to four times, each time with a frame of its own, and looks 201 times for an answer,
// which takes more than a second each. Any answer will do.
bool ask(std::vector<uint8_t> (*makeFrame)()) {
    constexpr int kAttempts = 4;
    constexpr int kPolls = 201;
    Answer answer;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        send(makeFrame());
        for (int poll = 0; poll < kPolls; ++poll) {
            pauseFor(std::chrono::milliseconds(10));
            uart_recv_hand(false, answer.bytes, &answer.length);
            if (answer.length != 0) return true;
        }
    }
    return false;
}

// Takes the third answer apart, which has at least 4 bytes. What it does not reach reads as 0. One
// of more than 32 bytes of content ends the process, as the log says then.
CoProcessor parse(const Answer& answer) {
    constexpr size_t kAround = 4;  // control byte, checksum and flag
    uint8_t content[32] = {};
    if (answer.length > sizeof(content) + kAround) {
        __android_log_print(ANDROID_LOG_FATAL, kLogTag,
                            "the co-processor's answer has %u bytes, more than %zu", answer.length,
                            sizeof(content) + kAround);
        abort();
    }
    const size_t size = answer.length - kAround;
    memcpy(content, answer.bytes + 1, size);
    ash::randomise(content, size);
    CoProcessor found;
    found.exists = 1;
    found.manufacturer = static_cast<uint16_t>(content[6] | content[7] << 8);
    found.version = static_cast<uint16_t>(content[8] | content[9] << 8);
    return found;
}

// There is no second attempt: an answer that takes longer than a look is none.
bool queryCoProcessor(CoProcessor* found) {
    constexpr uint32_t kShortest = 4;  // an empty data frame
    Answer answer;
    send(queryFrame());
    uart_recv_hand(false, answer.bytes, &answer.length);
    if (answer.length < kShortest) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "COO error.\n");
        return false;
    }
    *found = parse(answer);
    char version[16];
    snprintf(version, sizeof(version), "%d.%d.%d", found->majorNumber(), found->minorNumber(),
             found->patchNumber());
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "COO manuId:%04x, version:%s.\n",
                        found->manufacturer, version);
    return true;
}

// False from the first question that was not answered; found is what it was then.
bool converse(CoProcessor* found) {
    if (!ask(ash::resetFrame)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Ncp reset error.");
        return false;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Ncp reset success.");
    if (!ask(versionFrame)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Ncp set version error.");
        return false;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Ncp set version success.\n");
    return queryCoProcessor(found);
}

// Returns 0, or -1 with the reason in the log.
int32_t check(CoProcessor* found) {
    const int32_t result = ezspSetupSerialPort("/dev/ttyS3", 115200, 1, true, true);
    if (result != 0) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "ezspSetupSerialPort init error.\n");
        return result;
    }
    if (converse(found)) return 0;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "zigbee not exist");
    return -1;
}

// A property that begins with "ro." is set once a boot: a second start of the daemon leaves it as
// it is.
void publish(const CoProcessor& found) {
    char value[128] = {};
    snprintf(value, sizeof(value), "exist=%d;COOID=%04x;version=%d.%d.%d", found.exists,
             found.manufacturer, found.majorNumber(), found.minorNumber(), found.patchNumber());
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "set property -> %s", value);
    property_set("ro.vendor.zigbee.info", value);
}

}  // namespace

int32_t zigbee_check_module() {
    char enabled[PROPERTY_VALUE_MAX] = {};
    property_get("ro.vendor.zigbee_check_enable", enabled, "false");
    if (strcmp(enabled, "true") != 0) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s skip check zigbee", __func__);
        return 0;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s begin", __func__);
    CoProcessor found;
    const int32_t result = check(&found);
    publish(found);
    if (serialPort >= 1) close(serialPort);
    serialPort = -1;
    return result;
}
