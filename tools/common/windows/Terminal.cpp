#include "common/Terminal.h"

#include <string>

#include "platform/windows/Windows.h"

namespace Halvorix::Tools {

namespace {

std::wstring Variable(wchar_t const* name)
{
    wchar_t value[32];
    DWORD const length = ::GetEnvironmentVariableW(name, value, 32);
    return length == 0 ? std::wstring() : length < 32 ? std::wstring(value, length) : L"long";
}

// COLUMNS goes before what the console says of itself.
unsigned Width(HANDLE console)
{
    std::wstring const columns = Variable(L"COLUMNS");
    long const wanted = std::wcstol(columns.c_str(), nullptr, 10);
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (wanted > 0)
        return static_cast<unsigned>(wanted);
    if (::GetConsoleScreenBufferInfo(console, &info) == FALSE)
        return 0;
    return static_cast<unsigned>(info.srWindow.Right - info.srWindow.Left + 1);
}

} // namespace

Terminal BeginTerminal()
{
    HANDLE const output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (::GetConsoleMode(output, &mode) == FALSE)
        return {};
    // The console's own way is put back at the end: it outlives this program.
    static struct CodePage {
        UINT before = ::GetConsoleOutputCP();
        ~CodePage() { ::SetConsoleOutputCP(before); }
    } const codePage;
    ::SetConsoleOutputCP(CP_UTF8);
    constexpr DWORD understandsColours = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING
    // An empty NO_COLOR counts as none. A console has no TERM; what stands in for one may.
    bool const wantsColours = Variable(L"NO_COLOR").empty() && Variable(L"TERM") != L"dumb";
    return {wantsColours && ::SetConsoleMode(output, mode | understandsColours) != FALSE,
            Width(output)};
}

} // namespace Halvorix::Tools
