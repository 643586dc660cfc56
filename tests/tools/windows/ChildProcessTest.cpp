#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "../../../tools/common/ChildProcess.h"
#include "../../../tools/common/PluginRun.h"
#include "../../../tools/common/Utf8.h"
#include "platform/windows/Windows.h"

namespace {

namespace fs = std::filesystem;
using namespace Halvorix::Tools;

// Whoever started this process may have left it a file that is handed on.
TEST(ChildProcess, InheritsNothingButItsStreams)
{
    fs::path const file =
        fs::temp_directory_path() / ("hxsso-" + std::to_string(::GetCurrentProcessId()));
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE const handle =
        ::CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_DELETE, &inherited,
                      CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE) << ::GetLastError();
    std::string const deed =
        "load: write to handle " + std::to_string(reinterpret_cast<std::intptr_t>(handle));
    ::SetEnvironmentVariableA("HXSSO_HOSTILE", deed.c_str());
    std::string const plugin = Utf8(fs::absolute(HXSSO_TEST_PLUGIN));
    ChildRun const run = RunChild(fs::absolute(HXSSO_TEST_LOADER).make_preferred(),
                                  "{\"file\": \"" + plugin + "\"}", DefaultTimeLimit);
    ::SetEnvironmentVariableA("HXSSO_HOSTILE", nullptr);
    LARGE_INTEGER size{};
    EXPECT_NE(::GetFileSizeEx(handle, &size), FALSE);
    ::CloseHandle(handle);
    EXPECT_TRUE(run.isStarted) << run.end;
    EXPECT_EQ(run.end, "ends the process with exit status 43") << run.output;
    EXPECT_EQ(size.QuadPart, 0);
}

} // namespace
