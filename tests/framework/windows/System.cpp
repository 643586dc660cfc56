#include "framework/System.h"

#include <algorithm>
#include <cstdint>
#include <cwctype>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <vector>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <process.h>
#include <tlhelp32.h>

#include "support/TextConversion.h"

namespace Rig {

namespace {

using Halvorix::SSOServices::Utf8ToWide;
using Halvorix::SSOServices::WideToUtf8;

constexpr wchar_t const* LocationKey = L"SOFTWARE\\Halvorix\\Halvorix HxSSO";

std::wstring Upper(std::wstring text)
{
    std::transform(text.begin(), text.end(), text.begin(), std::towupper);
    return text;
}

std::wstring EnvironmentWith(std::map<std::string, std::string> const& changes)
{
    std::map<std::wstring, std::wstring> wide;
    for (auto const& [name, value] : changes)
        wide[Upper(Utf8ToWide(name))] = Utf8ToWide(value);
    std::wstring block;
    wchar_t* const own = ::GetEnvironmentStringsW();
    for (wchar_t const* entry = own; *entry != L'\0';) {
        std::wstring const text = entry;
        entry += text.size() + 1;
        if (wide.count(Upper(text.substr(0, text.find(L'=', 1)))) == 0)
            block += text + L'\0';
    }
    ::FreeEnvironmentStringsW(own);
    for (auto const& [name, value] : wide)
        block += name + L"=" + value + L'\0';
    return block + L'\0';
}

HANDLE OpenForWriting(std::filesystem::path const& file)
{
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

unsigned __stdcall RunAction(void* action)
{
    (*static_cast<std::function<void()> const*>(action))();
    return 0;
}

// Where a thread is; null if that cannot be told.
std::uintptr_t PlaceOf(DWORD threadNumber)
{
    std::uintptr_t place = 0;
    if (HANDLE const thread =
            ::OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, threadNumber)) {
        CONTEXT context{};
        context.ContextFlags = CONTEXT_CONTROL;
        ::SuspendThread(thread);
        if (::GetThreadContext(thread, &context))
#ifdef _WIN64
            place = context.Rip;
#else
            place = context.Eip;
#endif
        ::ResumeThread(thread);
        ::CloseHandle(thread);
    }
    return place;
}

std::vector<DWORD> ThreadsOf(DWORD processNumber)
{
    std::vector<DWORD> threads;
    HANDLE const all = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = ::Thread32First(all, &entry); more; more = ::Thread32Next(all, &entry)) {
        if (entry.th32OwnerProcessID == processNumber)
            threads.push_back(entry.th32ThreadID);
    }
    ::CloseHandle(all);
    return threads;
}

bool IsWine()
{
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// Wine's ntdll guards the waiters for an address by spin locks. The end of a process kills
// its threads, and one of them may hold such a lock: the last one then spins for ever, over
// as little as a release of memory. Windows has no such lock.
bool IsInWinesSpinLock(DWORD processNumber)
{
    HMODULE const ntdll = ::GetModuleHandleW(L"ntdll.dll");
    std::vector<DWORD> const threads = ThreadsOf(processNumber);
    if (!IsWine() || threads.size() != 1)
        return false;
    std::uintptr_t const place = PlaceOf(threads[0]);
    auto const isIn = [&](char const* function) {
        constexpr std::uintptr_t size = 0x200;
        auto const begin = reinterpret_cast<std::uintptr_t>(::GetProcAddress(ntdll, function));
        return place >= begin && place < begin + size;
    };
    return isIn("RtlWakeAddressSingle") || isIn("RtlWakeAddressAll") || isIn("RtlWaitOnAddress");
}

std::string Stored(std::wstring const& text)
{
    char const* const bytes = reinterpret_cast<char const*>(text.c_str());
    return std::string(bytes, (text.size() + 1) * sizeof(wchar_t));
}

void SetValue(REGSAM view, std::wstring const& name, unsigned type, std::string const& bytes)
{
    // Else the system ends a text by itself, with the zeros that it finds there.
    std::string const guarded = bytes + "\xFF\xFF";
    HKEY key = nullptr;
    ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, LocationKey, 0, nullptr, 0, KEY_ALL_ACCESS | view,
                      nullptr, &key, nullptr);
    ::RegSetValueExW(key, name.c_str(), 0, type, reinterpret_cast<BYTE const*>(guarded.data()),
                     static_cast<DWORD>(bytes.size()));
    ::RegCloseKey(key);
}

void RemoveKeys(REGSAM view)
{
    ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, LocationKey, view, 0);
    ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Halvorix", view, 0);
}

} // namespace

Ending RunToEnd(Process const& process)
{
    std::wstring command = L"\"" + process.program.wstring() + L"\"";
    for (std::string const& argument : process.arguments)
        command += L" \"" + Utf8ToWide(argument) + L"\"";
    std::wstring environment = EnvironmentWith(process.environment);
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = OpenForWriting(process.output);
    start.hStdError = OpenForWriting(process.errors);
    PROCESS_INFORMATION child{};
    auto const begin = [&] {
        return ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE,
                                CREATE_UNICODE_ENVIRONMENT, environment.data(),
                                process.directory.c_str(), &start, &child);
    };
    BOOL started = begin();
    // Wine's answer, under load, where a process died before any of its code ran.
    for (int again = 0; !started && ::GetLastError() == ERROR_INTERNAL_ERROR && again < 5;
         ++again) {
        std::cerr << "the system could not begin " << process.program << ", once more\n";
        ::Sleep(200);
        started = begin();
    }
    ::CloseHandle(start.hStdOutput);
    ::CloseHandle(start.hStdError);
    if (!started)
        throw std::runtime_error("CreateProcess failed: " + std::to_string(::GetLastError()));
    auto const limit = static_cast<DWORD>(std::chrono::milliseconds(process.limit).count());
    bool const timedOut = ::WaitForSingleObject(child.hProcess, limit) != WAIT_OBJECT_0;
    bool const inSystemLock = timedOut && IsInWinesSpinLock(child.dwProcessId);
    if (timedOut) {
        ::TerminateProcess(child.hProcess, 1);
        ::WaitForSingleObject(child.hProcess, INFINITE);
    }
    DWORD status = 0;
    ::GetExitCodeProcess(child.hProcess, &status);
    ::CloseHandle(child.hProcess);
    ::CloseHandle(child.hThread);
    // Unhandled exceptions end a process with an NTSTATUS of severity error;
    // the runtime's abort() with 3, which no host program of the tests uses.
    return {timedOut, !timedOut && (status >= 0xC0000000 || status == 3), static_cast<int>(status),
            inSystemLock};
}

bool IsWindows() { return true; }

bool IsWoW64()
{
    BOOL answer = FALSE;
    return ::IsWow64Process(::GetCurrentProcess(), &answer) != FALSE && answer != FALSE;
}

std::filesystem::path ThisExecutable()
{
    wchar_t name[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, name, MAX_PATH);
    return name;
}

std::string ExecutableName(std::string const& name) { return name + ".exe"; }

std::vector<std::string> LibraryFiles() { return {"HxSSOServices.dll"}; }

std::string ModuleName(std::string const& name) { return name + ".dll"; }

std::string LibraryName() { return "HxSSOServices.dll"; }

std::string MappedLibraryFile() { return "HxSSOServices.dll"; }

void UnsetVariable(std::string const& name)
{
    ::SetEnvironmentVariableW(Utf8ToWide(name).c_str(), nullptr);
}

int ProcessNumber() { return static_cast<int>(::GetCurrentProcessId()); }

bool MayChangeLocation() { return IsWine(); }

void SetLocation(std::filesystem::path const&, std::wstring const& location)
{
    SetRawLocation(REG_SZ, Stored(location));
}

void SetRawLocation(unsigned type, std::string const& bytes, std::string const& name)
{
    SetValue(0, Utf8ToWide(name), type, bytes);
}

void RemoveLocationValue() { ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, LocationKey, L"Location"); }

void RemoveLocation(std::filesystem::path const&) { RemoveKeys(0); }

void SetLocationOf64Bit(std::wstring const& location)
{
    SetValue(KEY_WOW64_64KEY, L"Location", REG_SZ, Stored(location));
}

void RemoveLocationOf64Bit() { RemoveKeys(KEY_WOW64_64KEY); }

void SetHostModuleDirectory(std::string const& directory)
{
    ::SetDllDirectoryW(Utf8ToWide(directory).c_str());
}

std::string HostModuleDirectory()
{
    wchar_t directory[MAX_PATH] = {};
    ::GetDllDirectoryW(MAX_PATH, directory);
    return WideToUtf8(directory);
}

void EndQuickly(int status) { ::ExitProcess(static_cast<UINT>(status)); }

void RunOnStack(std::size_t bytes, std::function<void()> const& action)
{
    std::function<void()> copy = action;
    auto const begun = ::_beginthreadex(nullptr, static_cast<unsigned>(bytes), RunAction, &copy,
                                        STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (begun == 0)
        throw std::runtime_error("_beginthreadex failed");
    auto const thread = reinterpret_cast<HANDLE>(begun);
    ::WaitForSingleObject(thread, INFINITE);
    ::CloseHandle(thread);
}

bool DenyReading(std::filesystem::path const& file)
{
    // Not closed: the end of the process does it.
    HANDLE const alone = ::CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                       FILE_ATTRIBUTE_NORMAL, nullptr);
    return alone != INVALID_HANDLE_VALUE && !std::ifstream(file).is_open();
}

std::string SystemErrorText(unsigned long code)
{
    wchar_t text[512] = {};
    ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0, text, 512, nullptr);
    return WideToUtf8(text);
}

} // namespace Rig
