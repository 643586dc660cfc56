#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <string>

#include "platform/AsciiCase.h"
#include "platform/Platform.h"

namespace Halvorix::Platform {

namespace {

// As the other system does it in its default locale. wcscasecmp follows the
// locale that the host has set: in Turkish, %PROGRAMFILES% would be unknown.
std::uint32_t Folded(wchar_t unit)
{
    return std::char_traits<wchar_t>::to_int_type(LowerAscii(unit));
}

} // namespace

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
