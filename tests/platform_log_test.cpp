#include <android/log.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <host/log_sink.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <functional>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/temporary_directory.h"

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace {

// Where a process logs to is settled by its first entry, so every test logs in a child.
pid_t startChild(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(0);
    }
    return child;
}

void expectSuccess(pid_t child) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

// What each write to standard error carried: a packet socket keeps their boundaries.
std::vector<std::string> writesOf(const std::function<void()>& body) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const pid_t child = startChild([&] {
        unsetenv("TARQ_LOG");
        dup2(ends[1], STDERR_FILENO);
        body();
    });
    close(ends[1]);
    std::vector<std::string> writes;
    std::string buffer(200 * 1024, '\0');
    ssize_t length = 0;
    while ((length = read(ends[0], buffer.data(), buffer.size())) > 0) {
        writes.push_back(buffer.substr(0, static_cast<size_t>(length)));
    }
    close(ends[0]);
    expectSuccess(child);
    return writes;
}

std::string withoutStamp(const std::string& lines) {
    static const std::regex stamp(
            "(^|\n)[0-9]{2}-[0-9]{2} [0-9:]{8}[.][0-9]{3} [ 0-9]{5,} "
            "[ 0-9]{5,} ");
    return std::regex_replace(lines, stamp, "$1");
}

std::string localTime() {
    const time_t now = time(nullptr);
    char text[32];
    strftime(text, sizeof(text), "%m-%d %H:%M:%S", localtime(&now));
    return text;
}

TEST(Log, prefix_has_local_time_ids_letter_and_padded_tag) {
    setenv("TZ", "XXX-05:30", 1);
    tzset();
    const std::string before = localTime();
    char ids[32];
    const auto writes = writesOf([] {
        __android_log_print(ANDROID_LOG_INFO, "tarqd", "%d", getpid());
        std::thread([] { __android_log_print(ANDROID_LOG_INFO, "tarqd", "%d", gettid()); }).join();
    });
    ASSERT_EQ(writes.size(), 2u);
    const int pid = stoi(writes[0].substr(writes[0].rfind(' ')));
    const int tid = stoi(writes[1].substr(writes[1].rfind(' ')));
    snprintf(ids, sizeof(ids), " %5d %5d I tarqd   : ", pid, pid);
    EXPECT_THAT(writes[0], HasSubstr(ids));
    snprintf(ids, sizeof(ids), " %5d %5d I tarqd   : ", pid, tid);
    EXPECT_THAT(writes[1], HasSubstr(ids));
    const std::string stamp = writes[0].substr(0, before.size());
    EXPECT_TRUE(before <= stamp && stamp <= localTime()) << writes[0];
    EXPECT_EQ(writes[0][before.size()], '.');
}

struct Entry {
    int priority;
    const char* tag;
    std::string text;
    std::string expected;  // without date and ids
};

std::string repeat(const std::string& text, int times) {
    std::string result;
    while (times-- > 0) result += text;
    return result;
}

const Entry kEntries[] = {
        {ANDROID_LOG_VERBOSE, "tag", "a", "V tag     : a\n"},
        {ANDROID_LOG_DEBUG, "eight_ch", "a", "D eight_ch: a\n"},
        {ANDROID_LOG_WARN, "longer_than_8", "a", "W longer_than_8: a\n"},
        {ANDROID_LOG_ERROR, "", "a", "E         : a\n"},
        {ANDROID_LOG_FATAL, nullptr, "a", "F         : a\n"},
        {ANDROID_LOG_SILENT, "t", "a", "S t       : a\n"},
        {ANDROID_LOG_UNKNOWN, "t", "a", "? t       : a\n"},
        {42, "t", "a", "? t       : a\n"},
        {ANDROID_LOG_INFO, "t", "", "I t       : \n"},
        {ANDROID_LOG_INFO, "t", "\n", "I t       : \n"},
        {ANDROID_LOG_INFO, "t", "a\n", "I t       : a\n"},
        {ANDROID_LOG_INFO, "t", "a\n\n", "I t       : a\nI t       : \n"},
        {ANDROID_LOG_INFO, "t", "a\n\nb", "I t       : a\nI t       : \nI t       : b\n"},
        {ANDROID_LOG_INFO, "t", std::string(1023, 'x'),
         "I t       : " + std::string(1023, 'x') + "\n"},
        {ANDROID_LOG_INFO, "t", std::string(1023, 'x') + "y",
         "I t       : " + std::string(1023, 'x') + "\n"},
};

TEST(Log, every_line_of_an_entry_has_the_prefix_and_all_go_out_at_once) {
    const auto writes = writesOf([] {
        for (const Entry& entry : kEntries) {
            const int result =
                    __android_log_print(entry.priority, entry.tag, "%s", entry.text.c_str());
            const size_t size = 1 + strlen(entry.tag != nullptr ? entry.tag : "") + 1 +
                                std::min<size_t>(entry.text.size(), 1023) + 1;
            if (result != static_cast<int>(size)) _exit(1);
        }
    });
    ASSERT_EQ(writes.size(), std::size(kEntries));
    for (size_t i = 0; i < writes.size(); ++i) {
        EXPECT_EQ(withoutStamp(writes[i]), kEntries[i].expected) << "entry " << i;
    }
}

TEST(Log, file_is_appended_to_and_stays_out_of_commands) {
    const TemporaryDirectory directory;
    const std::string path = directory / "log";
    writeFile(path, "before\n");
    expectSuccess(startChild([&] {
        setenv("TARQ_LOG", path.c_str(), 1);
        const int next = dup(STDIN_FILENO);
        close(next);
        __android_log_print(ANDROID_LOG_INFO, "t", "text");
        if ((fcntl(next, F_GETFD) & FD_CLOEXEC) == 0) _exit(1);
    }));
    EXPECT_EQ(withoutStamp(readFile(path)), "before\nI t       : text\n");
}

TEST(Log, file_that_cannot_be_opened_is_named_and_standard_error_serves) {
    const auto writes = writesOf([] {
        setenv("TARQ_LOG", "/nowhere/log", 1);
        __android_log_print(ANDROID_LOG_INFO, "t", "text");
    });
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_THAT(writes[0], HasSubstr("/nowhere/log (No such file or directory)"));
    EXPECT_EQ(withoutStamp(writes[1]), "I t       : text\n");
}

TEST(Log, entries_of_many_threads_and_processes_stay_whole) {
    const TemporaryDirectory directory;
    const std::string path = directory / "log";
    const auto logFromThreads = [&] {
        setenv("TARQ_LOG", path.c_str(), 1);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([] {
                for (int i = 0; i < 100; ++i) {
                    __android_log_print(ANDROID_LOG_INFO, "t", "first\nsecond");
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
    };
    const pid_t one = startChild(logFromThreads);
    const pid_t other = startChild(logFromThreads);
    expectSuccess(one);
    expectSuccess(other);
    EXPECT_EQ(withoutStamp(readFile(path)), repeat("I t       : first\nI t       : second\n", 800));
}

std::string shownOnTerminal(const char* noColor) {
    int terminal = -1;
    int program = -1;
    EXPECT_EQ(openpty(&terminal, &program, nullptr, nullptr, nullptr), 0);
    expectSuccess(startChild([&] {
        unsetenv("TARQ_LOG");
        setenv("NO_COLOR", noColor, 1);
        dup2(program, STDERR_FILENO);
        __android_log_print(ANDROID_LOG_ERROR, "t", "text");
    }));
    char buffer[256];
    const ssize_t length = read(terminal, buffer, sizeof(buffer));
    close(program);
    close(terminal);
    return std::string(buffer, static_cast<size_t>(std::max<ssize_t>(length, 0)));
}

TEST(Log, terminal_shows_colour_unless_NO_COLOR_is_set) {
    EXPECT_THAT(shownOnTerminal(""), MatchesRegex("\x1b\\[31m.*E t       : text\x1b\\[0m\r\n"));
    EXPECT_THAT(shownOnTerminal("1"), Not(HasSubstr("\x1b")));
}

TEST(Log, sink_sees_entries_as_given_until_it_is_removed) {
    const auto writes = writesOf([] {
        std::ostringstream seen;
        tarq::host::setLogSink([&](int priority, const char* tag, const std::string& text) {
            seen << priority << (tag != nullptr ? tag : "(null)") << text;
        });
        const int size = __android_log_print(ANDROID_LOG_INFO, nullptr, "a\n\n");
        __android_log_print(42, "tag", "b");
        tarq::host::setLogSink({});
        if (size != 6 || seen.str() != "4(null)a\n\n42tagb") _exit(1);
        __android_log_print(ANDROID_LOG_INFO, "t", "c");
    });
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(withoutStamp(writes[0]), "I t       : c\n");
}

}  // namespace
