#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
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
        // Time enough for the change to come between.
        auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(4);
        int whole = 0;
        while (std::chrono::steady_clock::now() < end)
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
