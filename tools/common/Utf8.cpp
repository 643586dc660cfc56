#include "common/Utf8.h"

#include <iterator>

#include <boost/locale/utf.hpp>

namespace Halvorix::Tools {

namespace {

namespace utf = boost::locale::utf;

constexpr utf::code_point Replacement = 0xFFFD;

template <class Unit>
std::string Converted(std::basic_string<Unit> const& text)
{
    std::string valid;
    for (auto at = text.begin(); at != text.end();) {
        auto next = at;
        utf::code_point point = utf::utf_traits<Unit>::decode(next, text.end());
        if (!utf::is_valid_codepoint(point)) {
            // One unit alone: what stands behind it may be whole.
            point = Replacement;
            next = at + 1;
        }
        utf::utf_traits<char>::encode(point, std::back_inserter(valid));
        at = next;
    }
    return valid;
}

bool IsUnsafe(utf::code_point point)
{
    return (point < 0x20 && point != '\n') || (point >= 0x7F && point <= 0x9F) || point == 0x00AD ||
           point == 0x061C || point == 0x200B || point == 0x200E || point == 0x200F ||
           (point >= 0x2028 && point <= 0x202E) || (point >= 0x2060 && point <= 0x2069) ||
           point == 0xFEFF;
}

} // namespace

std::string Escaped(std::string const& text)
{
    std::string const valid = Utf8(text);
    std::string safe;
    for (auto at = valid.begin(); at != valid.end();) {
        auto const begin = at;
        utf::code_point const point = utf::utf_traits<char>::decode(at, valid.end());
        if (!IsUnsafe(point)) {
            safe.append(begin, at);
            continue;
        }
        safe += "\\u";
        for (unsigned shift = 16; shift > 0; shift -= 4)
            safe += "0123456789ABCDEF"[(point >> (shift - 4)) & 0xFU];
    }
    return safe;
}

std::string Utf8(std::wstring const& text) { return Converted(text); }

std::string Utf8(std::string const& text) { return Converted(text); }

std::string Utf8(std::filesystem::path const& path)
{
    return Converted(path.generic_string<std::filesystem::path::value_type>());
}

} // namespace Halvorix::Tools
