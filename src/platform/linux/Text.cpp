#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <string>

#include <boost/locale/utf.hpp>

#include "platform/AsciiCase.h"
#include "platform/Platform.h"
#include "platform/linux/NarrowText.h"

namespace Halvorix::Platform {

namespace {

// As the other system does it in its default locale. wcscasecmp follows the
// locale that the host has set: in Turkish, %PROGRAMFILES% would be unknown.
std::uint32_t Folded(wchar_t unit)
{
    return std::char_traits<wchar_t>::to_int_type(LowerAscii(unit));
}

constexpr wchar_t Replacement = 0xFFFD;

// What is beyond all characters becomes the one for that.
boost::locale::utf::code_point CodePoint(wchar_t unit)
{
    boost::locale::utf::code_point const value = std::char_traits<wchar_t>::to_int_type(unit);
    return value > 0x10FFFF ? Replacement : value;
}

} // namespace

// A byte that is none of a character's becomes what no name has: were it left out, the
// text would name another file.
std::wstring FromSystem(std::string const& text)
{
    using Utf8 = boost::locale::utf::utf_traits<char>;
    std::wstring wide;
    for (char const* at = text.data(); at != text.data() + text.size();) {
        char const* next = at;
        boost::locale::utf::code_point const value = Utf8::decode(next, text.data() + text.size());
        bool const isCharacter =
            value != boost::locale::utf::illegal && value != boost::locale::utf::incomplete;
        wide += isCharacter ? static_cast<wchar_t>(value) : Replacement;
        at = isCharacter ? next : at + 1;
    }
    return wide;
}

std::string ToSystem(std::wstring const& text)
{
    std::string narrow;
    for (wchar_t const unit : text)
        boost::locale::utf::utf_traits<char>::encode(CodePoint(unit), std::back_inserter(narrow));
    return narrow;
}

int CopyBounded(wchar_t* destination, std::size_t capacity, wchar_t const* source)
{
    std::size_t const length = std::wcslen(source);
    std::size_t const count = std::min(length, capacity - 1);
    std::wmemcpy(destination, source, count);
    destination[count] = L'\0';
    return count == length ? 0 : CopyWasTruncated;
}

int CompareIgnoringCase(wchar_t const* left, wchar_t const* right)
{
    while (*left != L'\0' && Folded(*left) == Folded(*right)) {
        ++left;
        ++right;
    }
    std::uint32_t const l = Folded(*left);
    std::uint32_t const r = Folded(*right);
    return l < r ? -1 : l > r ? 1 : 0;
}

} // namespace Halvorix::Platform
