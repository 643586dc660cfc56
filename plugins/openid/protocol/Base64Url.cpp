#include "openid/protocol/Texts.h"

#include <cstddef>
#include <cstdint>

namespace Halvorix::OpenId {

namespace {

constexpr std::string_view Base64UrlAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

} // namespace

std::string ToBase64Url(std::string_view bytes)
{
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
    std::uint32_t buffer = 0;
    int bits = 0;
    for (char const byte : bytes) {
        buffer = (buffer << 8 | static_cast<unsigned char>(byte)) & 0xFFFF;
        for (bits += 8; bits >= 6; bits -= 6)
            text += Base64UrlAlphabet[buffer >> (bits - 6) & 0x3F];
    }
    if (bits > 0)
        text += Base64UrlAlphabet[buffer << (6 - bits) & 0x3F];
    return text;
}

std::optional<std::string> FromBase64Url(std::string_view text)
{
    if (text.size() % 4 == 1)
        return std::nullopt;
    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    std::uint32_t buffer = 0;
    int bits = 0;
    for (char const character : text) {
        std::size_t const value = Base64UrlAlphabet.find(character);
        if (value == std::string_view::npos)
            return std::nullopt;
        buffer = (buffer << 6 | static_cast<std::uint32_t>(value)) & 0xFFFF;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(buffer >> bits & 0xFF);
        }
    }
    // Else several texts would mean the same bytes, and a signature could be written anew.
    if ((buffer & ((1U << bits) - 1)) != 0)
        return std::nullopt;
    return bytes;
}

} // namespace Halvorix::OpenId
