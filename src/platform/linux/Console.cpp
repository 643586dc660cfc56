#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <iostream>
#include <string>

#include <ext/stdio_sync_filebuf.h>

#include "platform/CodePoint.h"
#include "platform/Platform.h"
#include "platform/ShowableText.h"
#include "platform/linux/NarrowText.h"

namespace Halvorix::Platform {

namespace {

using StandardBuffer = __gnu_cxx::stdio_sync_filebuf<wchar_t>;

bool IsCharacter(std::wstring const& character)
{
    std::uint32_t const value = std::char_traits<wchar_t>::to_int_type(character[0]);
    return value <= HighestCodePoint && (value < 0xD800 || value > 0xDFFF);
}

// What a wide stdout makes of it, by the locale of C.
bool IsKnownToC(std::wstring const& character)
{
    char bytes[MB_LEN_MAX];
    std::mbstate_t state{};
    return std::wcrtomb(bytes, character[0], &state) != static_cast<std::size_t>(-1);
}

// Past stdout itself, which a first wide line makes wide, and a first narrow one
// narrow, for good: the host may use it either way.
void ShowBesideStdout(std::wstring const& line)
{
    std::string const text = ToSystem(Showable(line, IsCharacter)) + '\n';
    ::flockfile(stdout);
    std::fflush(stdout);
    for (std::size_t at = 0; at < text.size();) {
        ssize_t const count = ::write(::fileno(stdout), text.data() + at, text.size() - at);
        if (count > 0)
            at += static_cast<std::size_t>(count);
        else if (count == 0 || errno != EINTR)
            break;
    }
    ::funlockfile(stdout);
}

} // namespace

void ShowOnConsole(std::wstring const& line)
{
    if (!std::wcout)
        return;
    std::wstreambuf const* const buffer = std::wcout.rdbuf();
    if (dynamic_cast<StandardBuffer const*>(buffer) != nullptr) {
        if (std::fwide(stdout, 0) <= 0)
            ShowBesideStdout(line);
        else
            std::wcout << Showable(line, IsKnownToC) << std::endl;
    } else if (!ShowThroughFileBuffer(line)) {
        std::wcout << line << std::endl;
    }
}

} // namespace Halvorix::Platform
