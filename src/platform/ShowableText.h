#pragma once

#include <algorithm>
#include <cwchar>
#include <fstream>
#include <iostream>
#include <locale>
#include <string>

namespace Halvorix::Platform {

/// The line with "?" for each unit that the test does not know.
template <class Test>
std::wstring Showable(std::wstring line, Test isKnown)
{
    std::replace_if(
        line.begin(), line.end(), [&](wchar_t unit) { return !isKnown(unit); }, L'?');
    return line;
}

/// Shows the line where std::wcout has a buffer of a file's kind, which takes anything and
/// fails when it is written out. False, and nothing done, for any other buffer.
inline bool ShowThroughFileBuffer(std::wstring const& line)
{
    using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;
    auto const* const buffer = dynamic_cast<std::basic_filebuf<wchar_t>*>(std::wcout.rdbuf());
    if (buffer == nullptr)
        return false;
    std::locale const locale = buffer->getloc();
    auto const& conversion = std::use_facet<Conversion>(locale);
    auto const isKnown = [&conversion](wchar_t unit) {
        char bytes[16];
        std::mbstate_t state{};
        wchar_t const* from = nullptr;
        char* to = nullptr;
        return conversion.out(state, &unit, &unit + 1, from, bytes, bytes + sizeof(bytes), to) !=
               Conversion::error;
    };
    std::wcout << Showable(line, isKnown) << std::endl;
    return true;
}

} // namespace Halvorix::Platform
