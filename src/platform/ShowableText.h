#pragma once

#include <cstddef>
#include <cwchar>
#include <fstream>
#include <iostream>
#include <locale>
#include <string>

namespace Halvorix::Platform {

/// Where units have 16 bits, two of them may make one character.
inline bool ArePair(wchar_t first, wchar_t second)
{
    return sizeof(wchar_t) == 2 && first >= 0xD800 && first < 0xDC00 && second >= 0xDC00 &&
           second < 0xE000;
}

/// The line with "?" for each character that the test, which is given its units, does not
/// know.
template <class Test>
std::wstring Showable(std::wstring const& line, Test isKnown)
{
    std::wstring shown;
    for (std::size_t at = 0; at < line.size();) {
        bool const isPair = at + 1 < line.size() && ArePair(line[at], line[at + 1]);
        std::wstring const character = line.substr(at, isPair ? 2 : 1);
        shown += isKnown(character) ? character : L"?";
        at += character.size();
    }
    return shown;
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
    auto const isKnown = [&conversion](std::wstring const& character) {
        char bytes[16];
        std::mbstate_t state{};
        wchar_t const* const begin = character.data();
        wchar_t const* const end = begin + character.size();
        wchar_t const* from = nullptr;
        char* to = nullptr;
        auto const result =
            conversion.out(state, begin, end, from, bytes, bytes + sizeof(bytes), to);
        // Half a pair is taken in and gives nothing.
        return result == Conversion::noconv ||
               (result == Conversion::ok && from == end && to != bytes);
    };
    std::wcout << Showable(line, isKnown) << std::endl;
    return true;
}

} // namespace Halvorix::Platform
