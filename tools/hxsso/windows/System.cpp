#include "hxsso/System.h"

#include <windows.h>

#include <shellapi.h>

#include <atomic>
#include <cstdint>
#include <system_error>

#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

char const* textAtInterrupt = "";

HANDLE HandleOf(Stream stream)
{
    return ::GetStdHandle(stream == Stream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

bool IsConsole(HANDLE handle)
{
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode) != FALSE;
}

/// The terminals of Cygwin and of MSYS, such as Git Bash has them, are pipes to Windows.
bool IsPipeOfTerminal(HANDLE handle)
{
    constexpr std::size_t longest = 32 * 1024;
    if (::GetFileType(handle) != FILE_TYPE_PIPE)
        return false;
    std::vector<std::uint64_t> room((sizeof(FILE_NAME_INFO) + longest) / sizeof(std::uint64_t));
    auto* const info = reinterpret_cast<FILE_NAME_INFO*>(room.data());
    if (::GetFileInformationByHandleEx(handle, FileNameInfo, info,
                                       static_cast<DWORD>(room.size() * sizeof(std::uint64_t))) ==
        FALSE)
        return false;
    std::wstring const name(info->FileName, info->FileNameLength / sizeof(wchar_t));
    bool const isTheirs =
        name.find(L"msys-") != std::wstring::npos || name.find(L"cygwin-") != std::wstring::npos;
    return isTheirs && name.find(L"-pty") != std::wstring::npos;
}

bool WriteToConsole(HANDLE console, std::string const& text)
{
    std::wstring wide = ToWide(text);
    bool good = true;
    for (std::size_t at = 0; good && at < wide.size();) {
        constexpr std::size_t most = 8192; // a console of old takes no more at once
        auto const count = static_cast<DWORD>(wide.size() - at < most ? wide.size() - at : most);
        DWORD written = 0;
        good = ::WriteConsoleW(console, wide.data() + at, count, &written, nullptr) != FALSE &&
               written > 0;
        at += written;
    }
    Wipe(wide);
    return good;
}

bool WriteAll(HANDLE handle, std::string const& text)
{
    for (std::size_t at = 0; at < text.size();) {
        DWORD written = 0;
        if (::WriteFile(handle, text.data() + at, static_cast<DWORD>(text.size() - at), &written,
                        nullptr) == FALSE ||
            written == 0)
            return false;
        at += written;
    }
    return true;
}

/// Of the process: the system's thread may wait for it to the end.
HANDLE EndOfHold()
{
    static HANDLE const event = ::CreateEventW(nullptr, TRUE, TRUE, nullptr);
    return event;
}

std::atomic<bool> isInterrupted{false};

/// In a thread of the system's. Then the other handlers have their turn, as without this one.
BOOL WINAPI WaitForEndOfHold(DWORD)
{
    isInterrupted = true;
    ::WaitForSingleObject(EndOfHold(), INFINITE);
    return FALSE;
}

BOOL WINAPI EndAtInterrupt(DWORD)
{
    Write(Stream::Errors, textAtInterrupt);
    return FALSE; // the system ends the process
}

std::string ErrorText(DWORD error)
{
    return std::error_code(static_cast<int>(error), std::system_category()).message();
}

/// As CommandLineToArgvW takes it apart again.
std::wstring Quoted(std::wstring const& word)
{
    if (!word.empty() && word.find_first_of(L" \t\n\v\"") == std::wstring::npos)
        return word;
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (wchar_t const unit : word) {
        if (unit == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        quoted += unit;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

/// The other program has the console, too, and gets Ctrl-C itself.
class InterruptsIgnored {
public:
    InterruptsIgnored() { ::SetConsoleCtrlHandler(nullptr, TRUE); }
    ~InterruptsIgnored() { ::SetConsoleCtrlHandler(nullptr, FALSE); }
    InterruptsIgnored(InterruptsIgnored const&) = delete;
    InterruptsIgnored& operator=(InterruptsIgnored const&) = delete;
};

} // namespace

std::vector<std::string> BeginProgram(int, char**)
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    int count = 0;
    wchar_t** const texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (texts == nullptr)
        return {};
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(ToUtf8(texts[i]));
    ::LocalFree(texts);
    return arguments;
}

std::filesystem::path ProgramFile()
{
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        DWORD const length =
            ::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
        if (length < name.size()) {
            name.resize(length);
            return name;
        }
        name.resize(name.size() * 2);
    }
}

std::filesystem::path ProgramBeside(char const* name)
{
    return (ProgramFile().parent_path() / name) += ".exe";
}

std::uint64_t ProcessId() { return ::GetCurrentProcessId(); }

bool IsTerminal(Stream stream)
{
    HANDLE const handle = HandleOf(stream);
    return IsConsole(handle) || IsPipeOfTerminal(handle);
}

bool Write(Stream stream, std::string const& text)
{
    HANDLE const handle = HandleOf(stream);
    return IsConsole(handle) ? WriteToConsole(handle, text) : WriteAll(handle, text);
}

bool WriteNewFile(std::filesystem::path const& file, std::string const& text, std::string& reason)
{
    ::DeleteFileW(file.c_str());
    HANDLE const handle = ::CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    bool const isOpen = handle != INVALID_HANDLE_VALUE;
    bool const good = isOpen && WriteAll(handle, text) && ::FlushFileBuffers(handle) != FALSE;
    if (!good)
        reason = ErrorText(::GetLastError());
    if (isOpen)
        ::CloseHandle(handle);
    if (isOpen && !good)
        ::DeleteFileW(file.c_str());
    return good;
}

struct InterruptsHeldBack::Before {};

InterruptsHeldBack::InterruptsHeldBack()
{
    ::ResetEvent(EndOfHold());
    ::SetConsoleCtrlHandler(WaitForEndOfHold, TRUE);
}

InterruptsHeldBack::~InterruptsHeldBack()
{
    // First of all: no handler is removed while one runs.
    ::SetEvent(EndOfHold());
    // The system's thread ends the process now, and this one is to do nothing more.
    constexpr DWORD longEnough = 5000;
    if (isInterrupted)
        ::Sleep(longEnough);
    ::SetConsoleCtrlHandler(WaitForEndOfHold, FALSE);
}

void EndOnInterrupt(char const* text)
{
    textAtInterrupt = text;
    ::SetConsoleCtrlHandler(EndAtInterrupt, TRUE);
}

int RunProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               std::string& reason)
{
    std::wstring command = Quoted(program.native());
    for (std::string const& argument : arguments)
        command += L' ' + Quoted(ToWide(argument));
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (::CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                         nullptr, &start, &process) == FALSE) {
        reason = ErrorText(::GetLastError());
        return -1;
    }
    InterruptsIgnored const ignored;
    ::CloseHandle(process.hThread);
    DWORD status = 1;
    ::WaitForSingleObject(process.hProcess, INFINITE);
    ::GetExitCodeProcess(process.hProcess, &status);
    ::CloseHandle(process.hProcess);
    return static_cast<int>(status & 0x7FFFFFFF);
}

} // namespace Halvorix::HxSSO
