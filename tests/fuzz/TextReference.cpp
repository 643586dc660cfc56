#include "fuzz/TextReference.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Fuzz::Reference {

namespace {

constexpr bool WideHas16Bits = sizeof(wchar_t) == 2;
constexpr std::uint32_t Highest = 0x10FFFF;

struct Form {
    std::uint32_t firstLead;
    std::uint32_t lastLead;
    std::size_t bytes;
};

// The last form takes in 0xFE and 0xFF, and two bits of those.
constexpr Form Forms[] = {
    {0x00, 0x7F, 1}, {0xC0, 0xDF, 2}, {0xE0, 0xEF, 3},
    {0xF0, 0xF7, 4}, {0xF8, 0xFB, 5}, {0xFC, 0xFF, 6},
};

std::string const Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t ByteAt(std::string const& text, std::size_t at)
{
    return static_cast<unsigned char>(text[at]);
}

Form const* FormOf(std::uint32_t lead)
{
    for (Form const& form : Forms)
        if (lead >= form.firstLead && lead <= form.lastLead)
            return &form;
    return nullptr;
}

} // namespace

std::wstring Widen(std::string const& text)
{
    std::wstring wide;
    for (std::size_t at = 0; at < text.size();) {
        Form const* const form = FormOf(ByteAt(text, at));
        if (form == nullptr || at + form->bytes > text.size())
            return {};
        std::uint64_t value = ByteAt(text, at) - form->firstLead;
        for (std::size_t i = 1; i < form->bytes; ++i) {
            std::uint32_t const next = ByteAt(text, at + i);
            if (next < 0x80 || next > 0xBF)
                return {};
            value = value * 64 + (next - 0x80);
        }
        if (value > Highest)
            return {};
        wide += static_cast<wchar_t>(WideHas16Bits ? value % 0x10000 : value);
        at += form->bytes;
    }
    return wide;
}

bool IsCharacter(wchar_t unit)
{
    if (WideHas16Bits)
        return true;
    std::uint32_t value = static_cast<std::uint32_t>(unit);
    return value <= Highest;
}

std::string Narrow(std::wstring const& text)
{
    std::string narrow;
    for (wchar_t const unit : text) {
        std::uint32_t value = IsCharacter(unit) ? static_cast<std::uint32_t>(unit) : 0xFFFD;
        if (WideHas16Bits)
            value %= 0x10000;
        std::size_t const bytes = value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
        std::string reversed;
        for (std::size_t i = 1; i < bytes; ++i, value /= 64)
            reversed += static_cast<char>(0x80 + value % 64);
        reversed += static_cast<char>(Forms[bytes - 1].firstLead + value);
        narrow.append(reversed.rbegin(), reversed.rend());
    }
    return narrow;
}

std::string Encode64(std::string const& bytes)
{
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::size_t const count = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group * 256 + (i < count ? ByteAt(bytes, at + i) : 0);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= count ? Alphabet[group >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

Decoding Decode64(std::string const& text, std::string& bytes)
{
    bytes.clear();
    std::size_t padding = 0;
    std::uint32_t bits = 0;
    unsigned held = 0;
    for (char const c : text) {
        std::size_t value = 0;
        if (c == '=')
            ++padding;
        else
            value = Alphabet.find(c);
        if (value == std::string::npos)
            return Decoding::NotInAlphabet;
        bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFF;
        held += 6;
        if (held >= 8) {
            held -= 8;
            bytes += static_cast<char>(bits >> held & 0xFF);
        }
    }
    // A character alone makes no byte: its second is sought behind the end.
    if (held == 6)
        return Decoding::NotInAlphabet;
    if (padding > bytes.size())
        return Decoding::MorePaddingThanBytes;
    bytes.resize(bytes.size() - padding);
    return Decoding::Done;
}

} // namespace Fuzz::Reference
