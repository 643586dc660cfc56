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
    std::ofstream(base + "/regular") << "text";
    ASSERT_EQ(::mkfifo((base + "/pipe").c_str(), 0600), 0);
    std::atomic<bool> isOver{false};
    auto const place = [&](char const* name) {
        std::string const link = base + "/link";
        ::unlink(link.c_str());
        EXPECT_EQ(::symlink(name, link.c_str()), 0);
        EXPECT_EQ(std::rename(link.c_str(), file.c_str()), 0);
    };
    place("regular");
    std::thread changing([&] {
        while (!isOver) {
            place("pipe");
            place("regular");
        }
    });
    std::wstring const wide(file.begin(), file.end());
    std::packaged_task<int()> read([&wide] {
        int whole = 0;
        for (int i = 0; i < 20000; ++i)
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
            int const end = ::open((base + "/pipe").c_str(), O_WRONLY | O_NONBLOCK);
            if (end >= 0)
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
