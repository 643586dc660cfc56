// A stdout that takes a line late, or not at all.

#include <fcntl.h>
#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>
#include <iostream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/Platform.h"

namespace Platform = Halvorix::Platform;

namespace {

/// This process's stdout leads to a file for a while.
class OtherStdout {
public:
    explicit OtherStdout(int file)
    {
        std::fflush(stdout);
        before = ::dup(STDOUT_FILENO);
        ::dup2(file, STDOUT_FILENO);
    }
    ~OtherStdout()
    {
        ::dup2(before, STDOUT_FILENO);
        ::close(before);
    }
    OtherStdout(OtherStdout const&) = delete;
    OtherStdout& operator=(OtherStdout const&) = delete;

private:
    int before;
};

std::atomic<int> interruptions{0};

/// This thread is interrupted every millisecond, and what it waits in is not begun again.
class Interrupted {
public:
    Interrupted()
    {
        interruptions = 0;
        struct sigaction action = {};
        action.sa_handler = [](int) { ++interruptions; };
        ::sigaction(SIGALRM, &action, &before);
        Set(1000);
    }
    ~Interrupted()
    {
        Set(0);
        ::sigaction(SIGALRM, &before, nullptr);
    }
    Interrupted(Interrupted const&) = delete;
    Interrupted& operator=(Interrupted const&) = delete;

private:
    static void Set(suseconds_t interval)
    {
        itimerval const timer = {{0, interval}, {0, interval}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }

    struct sigaction before;
};

void Fill(int pipe)
{
    int const flags = ::fcntl(pipe, F_GETFL);
    ::fcntl(pipe, F_SETFL, flags | O_NONBLOCK);
    std::string const block(4096, '-');
    while (::write(pipe, block.data(), block.size()) > 0)
        ;
    ::fcntl(pipe, F_SETFL, flags);
}

std::string ReadToTheEnd(int pipe)
{
    std::string content;
    char piece[4096];
    for (ssize_t count; (count = ::read(pipe, piece, sizeof(piece))) > 0;)
        content.append(piece, static_cast<std::size_t>(count));
    return content;
}

} // namespace

TEST(Stdout, ThatIsFullGetsTheWholeLineThoughSignalsComeBetween)
{
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    Fill(pipe[1]);
    // Signals of the process come to this thread alone.
    sigset_t alarm;
    ::sigemptyset(&alarm);
    ::sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    std::atomic<bool> isShown{false};
    std::future<std::string> content = std::async(std::launch::async, [&pipe, &isShown] {
        while (interruptions < 20 && !isShown)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return ReadToTheEnd(pipe[0]);
    });
    ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
    {
        OtherStdout const stdoutIsThePipe(pipe[1]);
        ::close(pipe[1]);
        Interrupted const interrupted;
        Platform::ShowOnConsole(L"line");
    }
    isShown = true;
    std::string const all = content.get();
    EXPECT_EQ(all.substr(all.find_last_of('-') + 1), "line\n");
    ::close(pipe[0]);
}

TEST(Stdout, ThatTakesNothingKeepsNobodyWaiting)
{
    int const full = ::open("/dev/full", O_WRONLY);
    ASSERT_NE(full, -1);
    {
        OtherStdout const stdoutIsFull(full);
        ::close(full);
        Platform::ShowOnConsole(L"line");
    }
    EXPECT_TRUE(std::wcout.good());
}
