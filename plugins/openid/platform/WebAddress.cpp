#include "openid/platform/WebAddress.h"

#include <algorithm>
#include <string_view>

namespace Halvorix::OpenId {

namespace {

std::string SmallLetters(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

/// One to three digits up to 255, without a zero before others, which some take for octal.
bool IsByte(std::string_view text)
{
    bool const areDigits = !text.empty() && text.size() <= 3 &&
                           text.find_first_not_of("0123456789") == std::string_view::npos;
    return areDigits && (text.size() == 1 || text[0] != '0') && std::stoi(std::string(text)) <= 255;
}

bool IsLoopbackV4(std::string_view host)
{
    for (int part = 0; part < 4; ++part) {
        std::size_t const dot = std::min(host.find('.'), host.size());
        std::string_view const number = host.substr(0, dot);
        if (!IsByte(number) || (part == 0 && number != "127") || (part < 3) == (dot == host.size()))
            return false;
        host.remove_prefix(std::min(dot + 1, host.size()));
    }
    return true;
}

} // namespace

bool IsWebAddress(std::string const& text)
{
    std::string const beginning = SmallLetters(text.substr(0, 8));
    bool const isWeb = beginning == "https://" || beginning.substr(0, 7) == "http://";
    return isWeb && std::none_of(text.begin(), text.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
           });
}

bool IsLoopbackHost(std::string const& host)
{
    std::string const name = SmallLetters(host);
    return name == "localhost" || name == "[::1]" || name == "::1" || IsLoopbackV4(name);
}

} // namespace Halvorix::OpenId
