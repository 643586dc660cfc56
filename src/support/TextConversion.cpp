#include "support/TextConversion.h"

#include <cstddef>
#include <cstdint>

#include "platform/CodePoint.h"
#include "support/SecretText.h"

namespace Halvorix::SSOServices {

namespace {

using Platform::CodePoint;
using Platform::HighestCodePoint;

struct Lead {
    int followers;
    std::uint32_t bits;
};

// 0xFE and 0xFF go with the six-byte forms, where their value is always too high.
Lead ReadLead(std::uint32_t byte)
{
    if (byte < 0xE0)
        return {1, byte - 0xC0};
    if (byte < 0xF0)
        return {2, byte - 0xE0};
    if (byte < 0xF8)
        return {3, byte - 0xF0};
    if (byte < 0xFC)
        return {4, byte - 0xF8};
    return {5, byte - 0xFC};
}

// What was read so far may be a part of a secret.
std::wstring Rejected(std::wstring& wide)
{
    Wipe(wide);
    return {};
}

std::size_t Utf8Size(std::wstring const& text)
{
    std::size_t size = 0;
    for (wchar_t const unit : text) {
        std::uint32_t const value = CodePoint(unit);
        size += value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    }
    return size;
}

} // namespace

std::wstring Utf8ToWide(std::string_view text)
{
    std::wstring wide(text.size(), L'\0'); // never longer
    std::size_t length = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::uint32_t const first = static_cast<unsigned char>(text[at++]);
        if (first < 0x80) {
            wide[length++] = static_cast<wchar_t>(first);
            continue;
        }
        if (first < 0xC0)
            return Rejected(wide);
        auto [followers, bits] = ReadLead(first);
        if (text.size() - at < static_cast<std::size_t>(followers))
            return Rejected(wide);
        std::uint64_t value = bits;
        for (; followers > 0; --followers) {
            std::uint32_t const next = static_cast<unsigned char>(text[at++]);
            if (next < 0x80 || next > 0xBF)
                return Rejected(wide);
            value = value << 6 | (next & 0x3F);
        }
        if (value > HighestCodePoint)
            return Rejected(wide);
        wide[length++] = static_cast<wchar_t>(value);
    }
    wide.resize(length);
    return wide;
}

std::string WideToUtf8(std::wstring const& text)
{
    std::string narrow(Utf8Size(text), '\0'); // growth would leave copies of secrets behind
    char* end = narrow.data();
    auto const append = [&end](std::uint32_t byte) { *end++ = static_cast<char>(byte); };
    for (wchar_t const unit : text) {
        std::uint32_t const value = CodePoint(unit);
        if (value < 0x80) {
            append(value);
        } else if (value < 0x800) {
            append(0xC0 | value >> 6);
            append(0x80 | (value & 0x3F));
        } else if (value < 0x10000) {
            append(0xE0 | value >> 12);
            append(0x80 | (value >> 6 & 0x3F));
            append(0x80 | (value & 0x3F));
        } else {
            append(0xF0 | value >> 18);
            append(0x80 | (value >> 12 & 0x3F));
            append(0x80 | (value >> 6 & 0x3F));
            append(0x80 | (value & 0x3F));
        }
    }
    return narrow;
}

} // namespace Halvorix::SSOServices
