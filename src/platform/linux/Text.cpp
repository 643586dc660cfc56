#include <algorithm>
#include <cwchar>

#include "platform/AsciiCase.h"
#include "platform/Platform.h"

namespace Halvorix::Platform {

int CopyBounded(wchar_t* destination, std::size_t capacity, wchar_t const* source)
{
    std::size_t const length = std::wcslen(source);
    std::size_t const count = std::min(length, capacity - 1);
    std::wmemcpy(destination, source, count);
    destination[count] = L'\0';
    return count == length ? 0 : CopyWasTruncated;
}

// As the other system does it in its default locale. wcscasecmp follows the locale that the
// host has set: in Turkish, %PROGRAMFILES% would be unknown.
int CompareIgnoringCase(wchar_t const* left, wchar_t const* right)
{
    return CompareIgnoringAsciiCase(left, right);
}

} // namespace Halvorix::Platform
