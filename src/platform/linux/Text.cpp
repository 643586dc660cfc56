#include <algorithm>
#include <cwchar>

#include <boost/locale/encoding_utf.hpp>

#include "../Platform.h"
#include "NarrowText.h"

namespace Halvorix::Platform {

std::wstring FromSystem(std::string const& text)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(text);
}

std::string ToSystem(std::wstring const& text)
{
    return boost::locale::conv::utf_to_utf<char>(text);
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
    return ::wcscasecmp(left, right);
}

} // namespace Halvorix::Platform
