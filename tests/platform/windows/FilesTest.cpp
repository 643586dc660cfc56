#include <filesystem>
#include <fstream>
#include <future>
#include <string>

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/Platform.h"

namespace {

std::string Read(std::wstring const& file)
{
    return Halvorix::Platform::ReadRegularFile(file, std::ios::binary);
}

/// A pipe to which nobody writes: a reader would wait for ever.
class SilentPipe {
public:
    SilentPipe() = default;
    ~SilentPipe() { ::CloseHandle(handle); }
    SilentPipe(SilentPipe const&) = delete;
    SilentPipe& operator=(SilentPipe const&) = delete;

    bool IsThere() const { return handle != INVALID_HANDLE_VALUE; }

    std::wstring const name =
        L"\\\\.\\pipe\\hxsso-silent-" + std::to_wstring(::GetCurrentProcessId());

private:
    HANDLE const handle = ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX,
                                             PIPE_TYPE_BYTE | PIPE_WAIT, 1, 512, 512, 0, nullptr);
};

} // namespace

TEST(Files, AreReadWhole)
{
    std::filesystem::path const file =
        std::filesystem::temp_directory_path() /
        (L"hxsso \x2603 " + std::to_wstring(::GetCurrentProcessId()));
    std::ofstream(file, std::ios::binary) << "one\r\ntwo";
    EXPECT_EQ(Read(file.wstring()), "one\r\ntwo");
    std::filesystem::remove(file);
    EXPECT_EQ(Read(file.wstring()), "");
}

TEST(Files, ThatArePipesAreNotWaitedFor)
{
    SilentPipe const pipe;
    ASSERT_TRUE(pipe.IsThere());
    auto read = std::async(std::launch::async, Read, pipe.name);
    bool const isAnswered = read.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    EXPECT_TRUE(isAnswered);
    if (!isAnswered)
        ::ExitProcess(1); // the thread would be waited for, too
    EXPECT_EQ(read.get(), "");
}

TEST(Files, ThatAreDevicesHaveNothing)
{
    for (wchar_t const* const device : {L"NUL", L"\\\\.\\NUL"})
        EXPECT_EQ(Read(device), "");
}
