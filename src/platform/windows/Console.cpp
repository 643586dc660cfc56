#include <iostream>

#include "platform/Platform.h"
#include "platform/ShowableText.h"

namespace Halvorix::Platform {

// Unit by unit: one that the console's page does not have would end the line, and
// leave the stream failed for every later one, the host's own too.
void ShowOnConsole(std::wstring const& line)
{
    std::wostream::sentry const ready(std::wcout);
    if (!ready)
        return;
    if (ShowThroughFileBuffer(line))
        return;
    std::wstreambuf& console = *std::wcout.rdbuf();
    auto const show = [&console](wchar_t unit) {
        return console.sputc(unit) != std::char_traits<wchar_t>::eof();
    };
    for (wchar_t const unit : line) {
        if (!show(unit) && !show(L'?')) {
            std::wcout.setstate(std::ios::badbit);
            return;
        }
    }
    std::wcout << std::endl;
}

} // namespace Halvorix::Platform
