#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "platform/Platform.h"

namespace Platform = Halvorix::Platform;

// The process's own memory is a regular file there whose beginning cannot be read.
TEST(Files, ThatCannotBeReadAreEmpty)
{
    EXPECT_EQ(Platform::ReadRegularFile(L"/proc/self/mem", std::ios::binary), "");
    EXPECT_EQ(Platform::ReadRegularFile(L"/proc/self", std::ios::binary), "");
    EXPECT_EQ(Platform::ReadRegularFile(L"/no/such/file", std::ios::binary), "");
    EXPECT_NE(Platform::ReadRegularFile(L"/proc/self/status", std::ios::binary), "");
}

// A pipe that takes a file's place between the question what it is and its opening.
TEST(Files, ThatAPipeTakesThePlaceOfKeepNobodyWaiting)
{
    char folder[] = "/tmp/hxsso-files-XXXXXX";
    ASSERT_NE(::mkdtemp(folder), nullptr);
    std::string const base = folder;
    std::string const file = base + "/file";
    std::string const pipe = base + "/pipe";
    std::ofstream(file) << "text";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    auto const exchange = [&] {
        return ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, pipe.c_str(), RENAME_EXCHANGE) == 0;
    };
    if (!exchange() || !exchange())
        GTEST_SKIP() << "the file system of /tmp exchanges no files";
    std::atomic<bool> isOver{false};
    std::thread changing([&] {
        while (!isOver)
            exchange();
    });
    std::wstring const wide(file.begin(), file.end());
    std::packaged_task<int()> read([&wide] {
        // Often enough for the change to come between: by some thousands, on one core a
        // hundred thousand.
        auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(4);
        int whole = 0;
        for (int i = 0; i < 100000 && std::chrono::steady_clock::now() < end; ++i)
            whole += Platform::ReadRegularFile(wide, std::ios::binary) == "text" ? 1 : 0;
        return whole;
    });
    std::future<int> count = read.get_future();
    std::thread reading(std::move(read));
    bool const hasEnded = count.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
    EXPECT_TRUE(hasEnded) << "it waits for a pipe";
    isOver = true;
    changing.join();
    // One that waits gets an end to wait for.
    std::atomic<bool> isLetGo{hasEnded};
    std::thread letting([&] {
        while (!isLetGo) {
            for (std::string const& name : {file, pipe})
                if (int const end = ::open(name.c_str(), O_WRONLY | O_NONBLOCK); end >= 0)
                    ::close(end);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    EXPECT_GT(count.get(), 0) << "and is read where it is one";
    isLetGo = true;
    letting.join();
    reading.join();
    std::filesystem::remove_all(base);
}

// As a file server has one, which gives it up when somebody else opens the file.
TEST(Files, UnderALeaseAreWaitedFor)
{
    char file[] = "/tmp/hxsso-lease-XXXXXX";
    int const holder = ::mkstemp(file);
    ASSERT_GE(holder, 0);
    ASSERT_EQ(::write(holder, "text", 4), 4);
    auto const before = std::signal(SIGIO, SIG_IGN);
    if (::fcntl(holder, F_SETLEASE, F_WRLCK) != 0) {
        ::close(holder);
        ::unlink(file);
        GTEST_SKIP() << "the file system of /tmp has no leases";
    }
    std::thread givingUp([holder] {
        while (::fcntl(holder, F_GETLEASE) == F_WRLCK)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ::fcntl(holder, F_SETLEASE, F_UNLCK);
    });
    std::string const name = file;
    EXPECT_EQ(Platform::ReadRegularFile(std::wstring(name.begin(), name.end()), std::ios::binary),
              "text");
    ::fcntl(holder, F_SETLEASE, F_UNLCK);
    givingUp.join();
    ::close(holder);
    ::unlink(file);
    std::signal(SIGIO, before);
}
