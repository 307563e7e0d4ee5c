// A line is set up and then read back, as tcsetattr also says yes when it took only some of what
// was asked: a UART without RTS and CTS shows itself by that alone. What comes in is not taken
// apart. One look is a second of waiting, and all that has come by then is one answer.
#include "zigbee/serial_port.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "common/device_file.h"
#include "common/pause.h"
#include "zigbee/ash.h"

int32_t serialPort = -1;

// termios has a code for each rate, not a number that could be computed.
static constexpr struct {
    int32_t baud;
    speed_t speed;
} kBaudRates[] = {
        {600, B600},     {1200, B1200},   {2400, B2400},   {4800, B4800},     {9600, B9600},
        {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}, {230400, B230400},
};

// What is cleared of the settings, and what is compared when they are read back: for three of the
// four fields the same. Of the control flags the stop bits are not compared.
static constexpr tcflag_t kControlCleared = CSTOPB | CREAD | PARENB | CRTSCTS;
static constexpr tcflag_t kControlCompared = CSIZE | PARENB | HUPCL | CLOCAL | CRTSCTS;
static constexpr tcflag_t kInputCleared =
        BRKINT | INPCK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXANY | IXOFF | IMAXBEL;
static constexpr tcflag_t kLocalCleared = ISIG | ICANON | ECHO | IEXTEN;
static constexpr tcflag_t kOutputCleared = OPOST;

// Prints the reason for whoever starts the check by hand; the log has the outcome only. Returns -1.
__attribute__((format(printf, 1, 2))) static int32_t failed(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    fflush(stdout);
    return -1;
}

// Waits until what was written is out, and drops what has come. Whether it worked is what found
// tells.
static void apply(const termios& wanted, termios* found) {
    tcsetattr(serialPort, TCSAFLUSH, &wanted);
    tcgetattr(serialPort, found);
}

// What the line is to be, made from what it is: flags that are not named here stay as they are. One
// byte wakes a reader, should one ever block, and there is no timer between bytes.
static termios settings(speed_t speed, uint8_t stopBits, bool rtsCts, bool flowControl) {
    termios wanted = {};
    tcgetattr(serialPort, &wanted);
    cfsetispeed(&wanted, speed);
    cfsetospeed(&wanted, speed);
    wanted.c_cflag &= ~kControlCleared;
    wanted.c_cflag |= CS8 | CREAD | CLOCAL;
    if (stopBits == 2) wanted.c_cflag |= CSTOPB;
    if (flowControl && rtsCts) wanted.c_cflag |= CRTSCTS;
    wanted.c_iflag &= ~kInputCleared;
    if (flowControl && !rtsCts) wanted.c_iflag |= IXON | IXOFF;
    wanted.c_lflag &= ~kLocalCleared;
    wanted.c_oflag &= ~kOutputCleared;
    memset(wanted.c_cc, 0, sizeof(wanted.c_cc));
    wanted.c_cc[VSTART] = 0x11;  // XON and XOFF of ASCII
    wanted.c_cc[VSTOP] = 0x13;
    wanted.c_cc[VTIME] = 0;
    wanted.c_cc[VMIN] = 1;
    return wanted;
}

// Applies the settings and sees whether the line took them. Returns 0, or -1 when something
// differs: what it is was printed, unless it is a control character.
static int32_t configure(termios wanted, speed_t speed, int32_t baud) {
    termios found = {};
    apply(wanted, &found);
    const auto different = [](tcflag_t one, tcflag_t other, tcflag_t mask) {
        return static_cast<unsigned>((one ^ other) & mask);
    };
    unsigned bits = different(wanted.c_cflag, found.c_cflag, kControlCompared);
    if (bits != 0) {  // the line may have no RTS and CTS
        wanted.c_cflag &= ~CRTSCTS;
        apply(wanted, &found);
        bits = different(wanted.c_cflag, found.c_cflag, kControlCompared);
    }
    if (bits != 0) return failed("Termios cflag(s) in error: 0x%04X\r\n", bits);
    bits = different(wanted.c_iflag, found.c_iflag, kInputCleared);
    if (bits != 0) return failed("Termios c_iflag(s) in error: 0x%04X\r\n", bits);
    bits = different(wanted.c_lflag, found.c_lflag, kLocalCleared);
    if (bits != 0) return failed("Termios c_lflag(s) in error: 0x%04X\r\n", bits);
    bits = different(wanted.c_oflag, found.c_oflag, kOutputCleared);
    if (bits != 0) return failed("Termios c_oflag(s) in error: 0x%04X\r\n", bits);
    if (memcmp(wanted.c_cc, found.c_cc, sizeof(wanted.c_cc)) != 0) return -1;
    if (cfgetispeed(&found) != speed || cfgetospeed(&found) != speed) {
        return failed("Could not set baud rate to %d bps\r\n", baud);
    }
    return 0;
}

int32_t ezspSetupSerialPort(const char* path, int32_t baud, uint8_t stopBits, bool rtsCts,
                            bool flowControl) {
    serialPort = -1;
    const auto* rate = std::find_if(std::begin(kBaudRates), std::end(kBaudRates),
                                    [baud](const auto& entry) { return entry.baud == baud; });
    if (rate == std::end(kBaudRates)) return failed("Invalid baud rate %d bps\r\n", baud);
    if (stopBits != 1 && stopBits != 2) {
        return failed("Invalid number of stop bits:%d.\r\n", stopBits);
    }
    serialPort = open(deviceFile(path).c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (serialPort < 0) return failed("Serial port open failed:%s\r\n", strerror(errno));
    tcflush(serialPort, TCIOFLUSH);
    fcntl(serialPort, F_SETFL, O_NONBLOCK);
    const termios wanted = settings(rate->speed, stopBits, rtsCts, flowControl);
    if (configure(wanted, rate->speed, baud) == 0) return 0;
    close(serialPort);
    serialPort = -1;
    return -1;
}

// Reads everything that has come, so that none of it is taken for the next answer; collected keeps
// the first kMaxReceived bytes of it. Returns their number.
static size_t drain(uint8_t* collected) {
    uint8_t chunk[kMaxReceived] = {};
    size_t size = 0;
    ssize_t got;
    while ((got = read(serialPort, chunk, sizeof(chunk))) > 0) {
        const size_t kept = std::min(static_cast<size_t>(got), kMaxReceived - size);
        memcpy(collected + size, chunk, kept);
        size += kept;
    }
    return size;
}

// The acknowledgement goes out for an answer that is discarded as well: the co-processor repeats
// what nobody acknowledges.
void uart_recv_hand(bool discard, uint8_t* frame, uint32_t* length) {
    static uint8_t acknowledgements = 0;  // sent so far
    constexpr size_t kShortest = 5;       // acknowledgements, of 4 bytes, are not answered
    constexpr size_t kAcknowledgementSize = 4;

    pauseFor(std::chrono::seconds(1));
    uint8_t collected[kMaxReceived] = {};
    const size_t size = drain(collected);
    if (size < kShortest) return;
    if (!discard) {
        const uint8_t* const end = collected + size;
        const uint8_t* begin = collected;
        if (std::find(begin, end, ash::kFlag) - begin == kAcknowledgementSize - 1) {
            begin += kAcknowledgementSize;
        }
        std::copy(begin, end, frame);
        *length = static_cast<uint32_t>(end - begin);
    }
    const std::vector<uint8_t> answer = ash::acknowledgement(acknowledgements);
    write(serialPort, answer.data(), answer.size());
    ++acknowledgements;
}
