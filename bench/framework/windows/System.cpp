#include "framework/System.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace Bench {

std::filesystem::path ThisFolder()
{
    std::array<wchar_t, 4096> name{};
    ::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
    return std::filesystem::path(name.data()).parent_path();
}

std::filesystem::path PluginFile() { return ThisFolder() / "bench-server/plugin/BenchPlugin.dll"; }

FactoryProcedure LoadPlugin(std::filesystem::path const& file)
{
    HMODULE const module = ::LoadLibraryW(file.c_str());
    FARPROC const procedure =
        module == nullptr
            ? nullptr
            : ::GetProcAddress(module, "?GetSSOClientFactory@@YA?AV?$shared_ptr@"
                                       "VISSOClientFactory@SSOServices@Halvorix@@@std@@XZ");
    if (procedure == nullptr) {
        std::fprintf(stderr, "no plugin: error %lu\n", ::GetLastError());
        std::abort();
    }
    return reinterpret_cast<FactoryProcedure>(reinterpret_cast<void (*)()>(procedure));
}

std::string Run(std::string const& program, std::vector<std::string> const& arguments)
{
    std::wstring line = L"\"" + (ThisFolder() / (program + ".exe")).wstring() + L"\"";
    for (std::string const& argument : arguments)
        line += L" " + std::wstring(argument.begin(), argument.end());

    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE ours = nullptr;
    HANDLE theirs = nullptr;
    if (!::CreatePipe(&ours, &theirs, &inherited, 0))
        throw std::runtime_error("no pipe");
    ::SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = theirs;
    startup.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION child{};
    BOOL const started = ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          nullptr, &startup, &child);
    ::CloseHandle(theirs);

    std::string output;
    std::array<char, 4096> part;
    DWORD count = 0;
    while (started && ::ReadFile(ours, part.data(), part.size(), &count, nullptr) && count > 0)
        output.append(part.data(), count);
    ::CloseHandle(ours);
    DWORD status = 1;
    if (started) {
        ::WaitForSingleObject(child.hProcess, INFINITE);
        ::GetExitCodeProcess(child.hProcess, &status);
        ::CloseHandle(child.hThread);
        ::CloseHandle(child.hProcess);
    }
    if (status != 0)
        throw std::runtime_error(program + " failed: " + output);
    return output;
}

std::chrono::nanoseconds OwnTime() { return std::chrono::steady_clock::now().time_since_epoch(); }

std::chrono::nanoseconds TimeWithChildren() { return OwnTime(); }

long long ReadsSoFar()
{
    IO_COUNTERS counters{};
    ::GetProcessIoCounters(::GetCurrentProcess(), &counters);
    return static_cast<long long>(counters.ReadOperationCount);
}

} // namespace Bench
