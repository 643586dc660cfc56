#include <cstring>
#include <cwchar>

#include "platform/Platform.h"

namespace Halvorix::Platform {

static_assert(CopyWasTruncated == STRUNCATE);

int CopyBounded(wchar_t* destination, std::size_t capacity, wchar_t const* source)
{
    return ::wcsncpy_s(destination, capacity, source, _TRUNCATE);
}

int CompareIgnoringCase(wchar_t const* left, wchar_t const* right)
{
    return ::_wcsicmp(left, right);
}

} // namespace Halvorix::Platform
