#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "common/ChildProcess.h"
#include "common/PluginRun.h"
#include "common/Utf8.h"
#include "platform/Platform.h"
#include "platform/windows/Windows.h"

#include <tlhelp32.h>

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
    // 42 if anything was written: the number may be that of a file of the child's own.
    EXPECT_TRUE(run.end == "ends the process with exit status 42" ||
                run.end == "ends the process with exit status 43")
        << run.end << run.output;
    EXPECT_EQ(size.QuadPart, 0) << "the handle was handed on";
}

BOOL WINAPI RefuseProcess(HANDLE, HANDLE)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI RefuseLimits(HANDLE, JOBOBJECTINFOCLASS, void*, DWORD)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

// Where this program has the address of a function of the system.
void** ImportOf(void const* function)
{
    auto* const base = reinterpret_cast<char*>(::GetModuleHandleW(nullptr));
    auto const& dos = *reinterpret_cast<IMAGE_DOS_HEADER const*>(base);
    auto const& header = *reinterpret_cast<IMAGE_NT_HEADERS const*>(base + dos.e_lfanew);
    IMAGE_DATA_DIRECTORY const& table =
        header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    auto const* module =
        reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR const*>(base + table.VirtualAddress);
    for (; module->Name != 0; ++module)
        for (auto** slot = reinterpret_cast<void**>(base + module->FirstThunk); *slot != nullptr;
             ++slot)
            if (*slot == function)
                return slot;
    return nullptr;
}

// A system that allows jobs within jobs cannot be made to refuse one.
class ReplacedFunction {
public:
    ReplacedFunction(void* function, void* replacement) : slot(ImportOf(function)), before(function)
    {
        EXPECT_NE(slot, nullptr);
        Set(replacement);
    }
    ~ReplacedFunction() { Set(before); }
    ReplacedFunction(ReplacedFunction const&) = delete;
    ReplacedFunction& operator=(ReplacedFunction const&) = delete;

private:
    void Set(void* function)
    {
        DWORD access = 0;
        if (slot == nullptr || !::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &access))
            return;
        *slot = function;
        ::VirtualProtect(slot, sizeof(*slot), access, &access);
    }

    void** const slot;
    void* const before;
};

std::size_t ChildrenOfThisProcess()
{
    HANDLE const snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    std::size_t count = 0;
    for (BOOL isOne = ::Process32FirstW(snapshot, &entry); isOne != FALSE;
         isOne = ::Process32NextW(snapshot, &entry))
        if (entry.th32ParentProcessID == ::GetCurrentProcessId())
            ++count;
    ::CloseHandle(snapshot);
    return count;
}

// Nothing runs that could not be ended with all that it starts.
void ExpectNothingRan(PluginRun const& run, DWORD error)
{
    std::string reason = Utf8(Halvorix::Platform::ErrorText(error));
    reason.resize(reason.find_last_not_of("\r\n") + 1);
    EXPECT_EQ(run.death,
              "hxsso-plugin-loader.exe cannot be started: it cannot be put into a job: " + reason);
    EXPECT_EQ(run.check, "loader");
    EXPECT_TRUE(run.records.empty());
    for (int i = 0; i < 500 && ChildrenOfThisProcess() != 0; ++i)
        ::Sleep(10);
    EXPECT_EQ(ChildrenOfThisProcess(), 0U) << "the process was left";
}

TEST(ChildProcess, IsNotRunWhereTheSystemRefusesIt)
{
    Json::Value request;
    request["file"] = Utf8(fs::absolute(HXSSO_TEST_PLUGIN));
    {
        ReplacedFunction const refused(reinterpret_cast<void*>(&::AssignProcessToJobObject),
                                       reinterpret_cast<void*>(&RefuseProcess));
        ExpectNothingRan(RunPluginLoader(request, DefaultTimeLimit), ERROR_ACCESS_DENIED);
    }
    {
        ReplacedFunction const refused(reinterpret_cast<void*>(&::SetInformationJobObject),
                                       reinterpret_cast<void*>(&RefuseLimits));
        ExpectNothingRan(RunPluginLoader(request, DefaultTimeLimit), ERROR_INVALID_HANDLE);
    }
    PluginRun const run = RunPluginLoader(request, DefaultTimeLimit);
    EXPECT_EQ(run.death, "");
    EXPECT_FALSE(run.records.empty());
}

} // namespace
