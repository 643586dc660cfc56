#include "framework/Secrets.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Rig::Secrets {

namespace {

// By hand, and not the library's, which is under test.
std::string InBase64(std::string const& bytes)
{
    static constexpr char const alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
        std::uint32_t value = 0;
        for (std::size_t i = bit; i < bit + 6; ++i) {
            auto const byte = i / 8 < bytes.size() ? static_cast<unsigned char>(bytes[i / 8]) : 0U;
            value = value << 1 | (byte >> (7 - i % 8) & 1);
        }
        text.push_back(alphabet[value]);
    }
    return text;
}

} // namespace

std::vector<std::string> All()
{
    return {AccessToken,   DecryptedToken, Scope,          CookieValue, ProxyPassword,
            LoginPassword, LoginState,     ConsumerSecret, ClearText};
}

std::vector<std::string> Base64Forms(std::string const& text)
{
    std::vector<std::string> forms;
    for (std::size_t before = 0; before < 3; ++before) {
        std::string const whole = InBase64(std::string(before, '\0') + text);
        std::size_t const first = (before * 8 + 5) / 6;
        std::size_t const last = (before + text.size()) * 8 / 6;
        forms.push_back(whole.substr(first, last - first));
    }
    return forms;
}

std::vector<std::string> FoundIn(std::string const& text)
{
    std::vector<std::string> found;
    for (std::string const& secret : All()) {
        std::vector<std::string> forms = Base64Forms(secret);
        forms.push_back(secret);
        if (std::any_of(forms.begin(), forms.end(), [&text](std::string const& form) {
                return text.find(form) != std::string::npos;
            }))
            found.push_back(secret);
    }
    return found;
}

} // namespace Rig::Secrets
