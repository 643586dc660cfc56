#include "openid/protocol/Texts.h"

#include <algorithm>
#include <cstddef>

namespace Halvorix::OpenId {

namespace {

bool IsFormCharacter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '-' || character == '.' ||
           character == '_' || character == '~';
}

void AppendEncoded(std::string& text, std::string_view value)
{
    constexpr char const* digits = "0123456789ABCDEF";
    for (char const character : value) {
        if (IsFormCharacter(character)) {
            text += character;
        } else if (character == ' ') {
            text += '+';
        } else {
            auto const byte = static_cast<unsigned char>(character);
            text += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
}

int HexDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return -1;
}

std::optional<std::string> Decoded(std::string_view text)
{
    std::string result;
    result.reserve(text.size()); // growth would leave copies of secrets behind
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i] == '+' ? ' ' : text[i];
            continue;
        }
        if (text.size() - i < 3)
            return std::nullopt;
        int const high = HexDigit(text[i + 1]);
        int const low = HexDigit(text[i + 2]);
        if (high < 0 || low < 0)
            return std::nullopt;
        result += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return result;
}

} // namespace

std::string EncodeForm(Parameters const& parameters)
{
    std::size_t longest = 0;
    for (auto const& [name, value] : parameters)
        longest += 3 * (name.size() + value.size()) + 2;
    std::string text;
    text.reserve(longest); // growth would leave copies of secrets behind
    for (auto const& [name, value] : parameters) {
        if (!text.empty())
            text += '&';
        AppendEncoded(text, name);
        text += '=';
        AppendEncoded(text, value);
    }
    return text;
}

std::optional<Parameters> DecodeForm(std::string_view query)
{
    Parameters parameters;
    parameters.reserve(1 + static_cast<std::size_t>(std::count(query.begin(), query.end(), '&')));
    while (!query.empty()) {
        std::size_t const end = query.find('&');
        std::string_view const piece = query.substr(0, end);
        query.remove_prefix(end == std::string_view::npos ? query.size() : end + 1);
        if (piece.empty())
            continue;
        std::size_t const equals = piece.find('=');
        auto name = Decoded(piece.substr(0, equals));
        auto value = Decoded(equals == std::string_view::npos ? "" : piece.substr(equals + 1));
        if (!name || !value)
            return std::nullopt;
        parameters.emplace_back(std::move(*name), std::move(*value));
    }
    return parameters;
}

} // namespace Halvorix::OpenId
