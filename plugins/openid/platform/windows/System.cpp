#include "openid/platform/System.h"

#include "openid/platform/WebAddress.h"
#include "openid/platform/windows/Windows.h"

#include <objbase.h>
#include <shellapi.h>

#include <algorithm>
#include <ctime>
#include <cwctype>
#include <thread>

namespace Halvorix::OpenId {

namespace {

/// Wine has all processes raised, and no rights that this would give.
bool IsWine()
{
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// Whether the user has raised this process above his others: they can set what is in its
/// environment, and must not tell it what to run.
bool HasMoreRights()
{
    if (IsWine())
        return false;
    HANDLE token = nullptr;
    TOKEN_ELEVATION_TYPE type = TokenElevationTypeFull;
    DWORD size = sizeof type;
    if (::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) {
        Handle const owner(token);
        ::GetTokenInformation(token, TokenElevationType, &type, size, &size);
    }
    return type == TokenElevationTypeFull;
}

std::wstring NamedBrowser()
{
    wchar_t const* const variable = L"HXSSO_OPENID_BROWSER";
    std::wstring name(::GetEnvironmentVariableW(variable, nullptr, 0), L'\0');
    name.resize(::GetEnvironmentVariableW(variable, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

/// What cmd.exe runs would take parts of an address for commands.
bool IsBatchFile(std::wstring name)
{
    name.erase(name.find_last_not_of(L" .\"") + 1);
    std::transform(name.begin(), name.end(), name.begin(), std::towlower);
    std::wstring const ending = name.substr(name.size() - std::min<std::size_t>(name.size(), 4));
    return ending == L".bat" || ending == L".cmd";
}

/// As the runtime of a C program takes it apart again.
std::wstring Quoted(std::wstring const& argument)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (wchar_t const c : argument) {
        // Those before a quotation mark count twice.
        if (c == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

bool Start(std::wstring const& program, std::wstring const& argument, std::string& reason)
{
    if (IsBatchFile(program)) {
        reason = "HXSSO_OPENID_BROWSER is a batch file, which would run parts of an address";
        return false;
    }
    std::wstring command = Quoted(program) + L" " + Quoted(argument);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                          nullptr, &start, &process)) {
        reason = Utf8From(program) + ": " + ErrorText(::GetLastError());
        return false;
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

/// 0 or the system's error. On a thread of its own: handlers of addresses may be components that
/// want a thread which the host does not have.
DWORD OpenByShell(std::wstring const& url)
{
    DWORD error = 0;
    std::thread([&] {
        HRESULT const ready =
            ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
        SHELLEXECUTEINFOW what{};
        what.cbSize = sizeof what;
        what.fMask = SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
        what.lpVerb = L"open";
        what.lpFile = url.c_str();
        what.nShow = SW_SHOWNORMAL;
        if (!::ShellExecuteExW(&what))
            error = ::GetLastError();
        if (SUCCEEDED(ready))
            ::CoUninitialize();
    }).join();
    return error;
}

} // namespace

bool OpenInBrowser(std::string const& url, std::string& reason)
{
    if (!IsWebAddress(url)) {
        reason = "the address is none of the web";
        return false;
    }
    std::wstring const named = HasMoreRights() ? std::wstring() : NamedBrowser();
    if (!named.empty())
        return Start(named, WideFrom(url), reason);
    DWORD const error = OpenByShell(WideFrom(url));
    if (error != 0)
        reason = ErrorText(error);
    return error == 0;
}

bool CanShowBrowser() { return true; } // the shell tells when it is asked

std::chrono::milliseconds SinceBoot() { return std::chrono::milliseconds(::GetTickCount64()); }

std::int64_t WallClock() { return std::time(nullptr); }

std::uint64_t ProcessId() { return ::GetCurrentProcessId(); }

} // namespace Halvorix::OpenId
