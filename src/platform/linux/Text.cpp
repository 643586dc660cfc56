#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <string>

#include <boost/locale/encoding_utf.hpp>
#include <boost/locale/utf.hpp>

#include "../Platform.h"
#include "NarrowText.h"

namespace Halvorix::Platform {

namespace {

// As the other system does it in its default locale. wcscasecmp follows the
// locale that the host has set: in Turkish, %PROGRAMFILES% would be unknown.
std::uint32_t Folded(wchar_t unit)
{
    return std::char_traits<wchar_t>::to_int_type(
        unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit);
}

// What is beyond all characters becomes the one for that.
boost::locale::utf::code_point CodePoint(wchar_t unit)
{
    boost::locale::utf::code_point const value = std::char_traits<wchar_t>::to_int_type(unit);
    return value > 0x10FFFF ? 0xFFFD : value;
}

} // namespace

std::wstring FromSystem(std::string const& text)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(text);
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
