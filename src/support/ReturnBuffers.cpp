#include "support/ReturnBuffers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>

#include "platform/Platform.h"

namespace Halvorix::SSOServices {

int AsCount(std::size_t length) { return static_cast<int>(static_cast<std::uint32_t>(length)); }

int CopyWideToBuffer(wchar_t* buffer, int capacity, wchar_t const* source)
{
    if (capacity < 1)
        return 0;
    switch (Platform::CopyBounded(buffer, static_cast<std::size_t>(capacity), source)) {
    case 0:
        return AsCount(std::wcslen(source));
    case Platform::CopyWasTruncated:
        return capacity - 1;
    default:
        return 0;
    }
}

int GetTruncated(std::wstring const& text, wchar_t* buffer, int capacity)
{
    if (buffer == nullptr)
        return AsCount(text.size());
    return CopyWideToBuffer(buffer, capacity, text.c_str());
}

int GetAllOrNothing(std::wstring const& text, wchar_t* buffer, int capacity)
{
    if (buffer == nullptr)
        return AsCount(text.size());
    if (capacity >= AsCount(text.size() + 1))
        return CopyWideToBuffer(buffer, capacity, text.c_str());
    if (capacity >= 1)
        *buffer = L'\0';
    return 0;
}

int CopyBytesToBuffer(std::string const& bytes, char* buffer, int capacity)
{
    if (buffer == nullptr)
        return AsCount(bytes.size());
    if (capacity > 0)
        *buffer = '\0';
    if (bytes.empty())
        return 0;
    // A negative capacity bounds nothing, on purpose: callers never pass one.
    auto const bound = static_cast<std::size_t>(static_cast<std::int64_t>(capacity));
    std::size_t const count = std::min(bytes.size(), bound);
    std::memcpy(buffer, bytes.data(), count);
    if (capacity > AsCount(count))
        buffer[count] = '\0';
    return AsCount(count);
}

} // namespace Halvorix::SSOServices
