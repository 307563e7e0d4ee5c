#include <android/log.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <host/log_sink.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>

#include <regex>
#include <thread>

#include "host/run/growing_file.h"
#include "tests/temporary_directory.h"

using namespace testing;

namespace {

// What each write to standard error carried: a packet socket keeps their boundaries. Where a
// process logs to is settled by its first entry, so that every body runs in a child.
std::vector<std::string> writesOf(const std::function<void()>& body) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        unsetenv("TARQ_LOG");
        dup2(ends[1], STDERR_FILENO);
        body();
        _exit(0);
    }
    close(ends[1]);
    std::vector<std::string> writes;
    std::string buffer(200000, '\0');
    ssize_t length = 0;
    while ((length = read(ends[0], buffer.data(), buffer.size())) > 0)
        writes.push_back(buffer.substr(0, static_cast<size_t>(length)));
    close(ends[0]);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return writes;
}

std::string withoutStamp(const std::string& lines) {
    static const std::regex stamp(
            "(^|\n)[0-9]{2}-[0-9]{2} [0-9:]{8}[.][0-9]{3} [ 0-9]{5,} [ 0-9]{5,} ");
    return std::regex_replace(lines, stamp, "$1");
}

// Logs what the prefix ought to be, the time at the latest.
void logPrefix() {
    const time_t now = time(nullptr);
    char stamp[32];
    strftime(stamp, sizeof(stamp), "%m-%d %H:%M:%S", localtime(&now));
    __android_log_print(4, "tarqd", "%s.000 %5d %5d I tarqd   : ", stamp, getpid(), gettid());
}

TEST(Log, prefix_has_local_time_and_ids_in_a_thread_and_a_child_too) {
    const auto writes = writesOf([] {
        setenv("TZ", "XXX-05:30", 1);
        logPrefix();
        std::thread(logPrefix).join();
        if (fork() != 0) _exit(wait(nullptr) > 0 ? 0 : 1);
        logPrefix();
    });
    ASSERT_EQ(writes.size(), 3u);
    for (const std::string& line : writes) {
        const size_t size = line.size() / 2;
        EXPECT_GE(line.substr(0, 18), line.substr(size, 18));
        EXPECT_EQ(line.substr(18, size - 18) + "\n", line.substr(size + 18));
    }
}

TEST(Log, every_line_of_an_entry_has_the_prefix_and_all_go_out_at_once) {
    const std::string longest(1023, 'x');
    const struct {
        int priority;
        const char* tag;
        std::string text;
        int size;
        std::string shown;  // without date and ids
    } entries[] = {
            {ANDROID_LOG_VERBOSE, "tag", "a", 7, "V tag     : a\n"},
            {ANDROID_LOG_DEBUG, "eight_ch", "a\n", 13, "D eight_ch: a\n"},
            {ANDROID_LOG_WARN, "longer_than_8", "", 16, "W longer_than_8: \n"},
            {ANDROID_LOG_ERROR, "", "\n", 4, "E         : \n"},
            {ANDROID_LOG_FATAL, nullptr, "a\n\nb", 7,
             "F         : a\nF         : \nF         : b\n"},
            {ANDROID_LOG_SILENT, "t", "a\n\n", 7, "S t       : a\nS t       : \n"},
            {ANDROID_LOG_INFO, "t", longest + "y", 1027, "I t       : " + longest + "\n"},
            {42, "t", "a", 5, "? t       : a\n"},
    };
    const auto writes = writesOf([&] {
        for (const auto& [priority, tag, text, size, shown] : entries) {
            if (__android_log_print(priority, tag, "%s", text.c_str()) != size) _exit(1);
        }
    });
    ASSERT_EQ(writes.size(), std::size(entries));
    for (size_t i = 0; i < writes.size(); ++i) EXPECT_EQ(withoutStamp(writes[i]), entries[i].shown);
}

TEST(Log, file_is_appended_to_by_threads_and_processes_and_stays_out_of_commands) {
    const TemporaryDirectory directory;
    writeFile(directory / "log", "before\n");
    const auto logMuch = [] {
        for (int i = 0; i < 100; ++i) __android_log_print(ANDROID_LOG_INFO, "t", "one\ntwo");
    };
    writesOf([&] {
        setenv("TARQ_LOG", (directory / "log").c_str(), 1);
        const pid_t child = fork();  // each opens the file for itself
        const int next = dup(STDIN_FILENO);
        close(next);
        std::thread other(logMuch);
        logMuch();
        other.join();
        if ((fcntl(next, F_GETFD) & FD_CLOEXEC) == 0) _exit(1);
        if (child != 0) _exit(wait(nullptr) == child ? 0 : 1);
    });
    std::string expected = "before\n";
    for (int i = 0; i < 400; ++i) expected += "I t       : one\nI t       : two\n";
    EXPECT_EQ(withoutStamp(readFile(directory / "log")), expected);
}

TEST(Log, terminal_shows_colour_unless_NO_COLOR_is_set) {
    for (const std::string noColor : {"", "1"}) {
        int terminal = -1;
        int program = -1;
        char shown[256] = {};
        ASSERT_EQ(openpty(&terminal, &program, nullptr, nullptr, nullptr), 0);
        writesOf([&] {
            dup2(program, STDERR_FILENO);
            setenv("NO_COLOR", noColor.c_str(), 1);
            __android_log_print(ANDROID_LOG_ERROR, "t", "text");
        });
        EXPECT_GT(read(terminal, shown, sizeof(shown) - 1), 0);
        close(program);
        close(terminal);
        EXPECT_EQ(std::count(shown, std::end(shown), '\x1b'), noColor.empty() ? 2 : 0) << shown;
    }
}

TEST(Log, file_that_cannot_be_opened_is_named_and_a_sink_sees_entries_as_given) {
    const auto writes = writesOf([] {
        setenv("TARQ_LOG", "/nowhere/log", 1);
        std::string seen;
        tarq::host::setLogSink([&seen](int priority, const char* tag, const std::string& text) {
            seen = std::to_string(priority) + (tag != nullptr ? tag : "(null)") + text;
        });
        __android_log_print(ANDROID_LOG_INFO, nullptr, "a\n\n");
        tarq::host::setLogSink({});
        if (seen == "4(null)a\n\n") __android_log_print(ANDROID_LOG_INFO, "t", "text");
    });
    EXPECT_THAT(writes, ElementsAre(HasSubstr("/nowhere/log (No such file or directory)"),
                                    EndsWith(" I t       : text\n")));
}

// What a reader gets who begins when nothing more goes in: room comes with that.
std::string readAllThatIsThere(int fd) {
    fcntl(fd, F_SETFL, O_NONBLOCK);
    std::string all(100000, '\0');
    size_t length = 0;
    for (ssize_t got = 0; (got = read(fd, all.data() + length, all.size() - length)) > 0;)
        length += static_cast<size_t>(got);
    return withoutStamp(all.substr(0, length));
}

// Each is an output that takes nothing any more, and takes something again later.
TEST(Log, nobody_waits_for_the_log_and_what_is_lost_is_counted_before_it_goes_on) {
    signal(SIGXFSZ, SIG_IGN);
    const TemporaryDirectory directory;
    int pipeEnds[2], terminal = -1, program = -1;
    ASSERT_EQ(pipe(pipeEnds), 0);
    fcntl(pipeEnds[1], F_SETPIPE_SZ, 4096);
    ASSERT_EQ(openpty(&terminal, &program, nullptr, nullptr, nullptr), 0);
    const int file = open((directory / "log").c_str(), O_RDWR | O_CREAT | O_APPEND, 0644);
    const int reader = open((directory / "log").c_str(), O_RDONLY);
    const auto limitFiles = [](rlim_t bytes) {
        const rlimit limit = {bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    const struct {
        int out, in;
        std::function<void(bool)> stop;
        const char* lineEnd;
    } outputs[] = {
            {pipeEnds[1], pipeEnds[0], [](bool) {}, ""},
            {program, terminal, [&](bool on) { tcflow(program, on ? TCOOFF : TCOON); }, "\r"},
            {file, reader, [&](bool on) { limitFiles(on ? 5000 : RLIM_INFINITY); }, ""},
    };
    for (const auto& [out, in, stop, lineEnd] : outputs) {
        const auto writes = writesOf([&, out = out, in = in, stop = stop] {
            const int parent = dup(STDERR_FILENO);
            dup2(out, STDERR_FILENO);
            setenv("NO_COLOR", "1", 1);
            stop(true);
            for (int i = 0; i < 2000; ++i) __android_log_print(ANDROID_LOG_INFO, "t", "line %d", i);
            std::string all = readAllThatIsThere(in);
            stop(false);
            __android_log_print(ANDROID_LOG_INFO, "t", "last");
            all += readAllThatIsThere(in);
            if (write(parent, all.data(), all.size()) < 0) _exit(1);
        });
        ASSERT_EQ(writes.size(), 1u);
        std::istringstream lines(writes[0]);
        std::string line;
        int whole = 0;
        const auto isNext = [&, end = lineEnd] {
            return line == "I t       : line " + std::to_string(whole) + end;
        };
        while (std::getline(lines, line) && isNext()) ++whole;
        EXPECT_EQ(whole == 0, out == program);
        if (out == file) std::getline(lines, line);  // behind the torn one
        EXPECT_EQ(line,
                  "W tarq-host: " + std::to_string(2000 - whole) + " log lines lost" + lineEnd);
        std::getline(lines, line);
        EXPECT_EQ(line, std::string("I t       : last") + lineEnd);
        EXPECT_FALSE(std::getline(lines, line)) << line;
    }
    for (const int fd : {pipeEnds[0], pipeEnds[1], terminal, program, file, reader}) close(fd);
}

TEST(GrowingFile, lines_are_handed_over_once_complete_and_a_new_file_is_read_anew) {
    const TemporaryDirectory directory;
    const std::string path = directory / "log";
    tarq::host::GrowingFile file(path);
    const auto read = [&file] {
        std::vector<std::string> lines;
        file.read([&lines](const std::string& line) { lines.push_back(line); });
        return lines;
    };
    writeFile(path, "one\ntw");
    EXPECT_THAT(read(), ElementsAre("one"));
    std::ofstream(path, std::ios::app) << "o\n\nthr";
    EXPECT_THAT(read(), ElementsAre("two", ""));
    writeFile(path, "new\n");  // emptied and begun again
    EXPECT_THAT(read(), ElementsAre("thr", "new"));
    std::filesystem::remove(path);
    EXPECT_THAT(read(), IsEmpty());
    writeFile(path, "another, which is longer\n");
    EXPECT_THAT(read(), ElementsAre("another, which is longer"));
    std::ofstream(path, std::ios::app) << "passed over\n";
    file.skip();
    std::ofstream(path, std::ios::app) << "behind\n";
    EXPECT_THAT(read(), ElementsAre("behind"));
}

TEST(RecordFile, lines_that_are_lost_leave_a_sign_and_no_gap) {
    signal(SIGXFSZ, SIG_IGN);
    const TemporaryDirectory directory;
    const std::string path = directory / "records";
    tarq::host::RecordFile file("test: the record");
    file.open(path);
    file.add("first");
    EXPECT_FALSE(tarq::host::recordsAreLost(path));
    const rlimit small = {15, RLIM_INFINITY}, large = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &small);
    file.add("second, which is longer");
    setrlimit(RLIMIT_FSIZE, &large);
    file.add("third");
    EXPECT_TRUE(tarq::host::recordsAreLost(path));
    EXPECT_EQ(readFile(path), "{\"lost\":true}\n");
}

}  // namespace
