#include "openid/protocol/TokenAnswers.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

/// As an id_token at most. So large ones fit into the store by the dozen.
constexpr std::size_t LongestText = 65'536;
/// A longer lifetime is cut: after a year a token is asked for anew.
constexpr std::int64_t LongestLifetime = 366LL * 24 * 3600;
constexpr std::int64_t LongestInterval = 300;

Failure BrokenAnswer(Question const& question, std::string const& what)
{
    return FailureOf(question, Failure::Kind::Provider, "answered " + what,
                     "ask the provider's administrator");
}

bool IsVisible(std::string const& text)
{
    // What may stand in a header and a form; a line end would begin a header of its own.
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return character >= 0x20 && character < 0x7F; });
}

/// Seconds as a number or a numeric text, from 1 on; no value for anything else.
std::optional<std::int64_t> ReadSeconds(Json::Value const& json, std::int64_t longest)
{
    double seconds = 0;
    if (json.isNumeric()) {
        seconds = json.asDouble();
    } else {
        std::string text = json.isString() ? json.asString() : std::string();
        bool const isNegative = !text.empty() && text.front() == '-';
        text.erase(0, isNegative ? 1 : 0);
        if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos)
            return std::nullopt;
        for (char const digit : text)
            seconds = seconds * 10 + (digit - '0');
        seconds = isNegative ? -seconds : seconds;
    }
    if (std::isnan(seconds))
        return std::nullopt;
    // 0 would say that it was not told.
    return static_cast<std::int64_t>(std::clamp(seconds, 1.0, static_cast<double>(longest)));
}

/// With the first of these members that is there and not a text that can be sent and kept; empty
/// if there is none.
std::string FindNoText(Json::Value const& json, std::initializer_list<char const*> members)
{
    for (char const* const member : members) {
        Json::Value const& value = json[member];
        if (value.isNull())
            continue;
        Secret const text(TextMember(json, member));
        if (!value.isString() || !IsVisible(*text))
            return std::string("with ") + member + " that is not a text";
        if (text->size() > LongestText)
            return std::string("with ") + member + " that is longer than 64 KiB";
    }
    return {};
}

/// A code that a person reads on one device and enters on another.
bool CanBeTyped(std::string const& code)
{
    constexpr std::size_t longest = 64;
    return !code.empty() && code.size() <= longest && code.front() != ' ' && code.back() != ' ';
}

/// Plain http at this machine is for a provider that runs there itself.
bool MayBeOpened(std::string const& address, Question const& question)
{
    return IsSecureUrl(address) && (UsesTls(address) || !UsesTls(question.url));
}

} // namespace

Outcome<TokenAnswer> ReadTokenAnswer(Json::Value const& json, Question const& question,
                                     std::string const& scope)
{
    std::string const fault =
        FindNoText(json, {"access_token", "token_type", "refresh_token", "id_token", "scope"});
    if (!fault.empty())
        return BrokenAnswer(question, fault);
    TokenAnswer answer;
    answer.accessToken = TextMember(json, "access_token");
    answer.refreshToken = TextMember(json, "refresh_token");
    answer.idToken = TextMember(json, "id_token");
    if (answer.accessToken->empty())
        return BrokenAnswer(question, "without an access token");
    if (!EqualIgnoringCase(TextMember(json, "token_type"), "Bearer"))
        return BrokenAnswer(question, "with a token of the type \"" +
                                          Told(TextMember(json, "token_type"), question) +
                                          "\" instead of Bearer");
    answer.tokenType = "Bearer";
    Json::Value const& granted = json["scope"];
    answer.scope = NormalScope(granted.isNull() ? scope : granted.asString());
    if (!json["expires_in"].isNull()) {
        auto const seconds = ReadSeconds(json["expires_in"], LongestLifetime);
        if (!seconds)
            return BrokenAnswer(question, "with a lifetime (expires_in) that is not a number");
        answer.lifetime = std::chrono::seconds(*seconds);
    }
    return answer;
}

Outcome<DeviceAuthorization> ReadDeviceAuthorization(Json::Value const& json,
                                                     Question const& question)
{
    std::string const fault = FindNoText(
        json, {"device_code", "user_code", "verification_uri", "verification_uri_complete"});
    if (!fault.empty())
        return BrokenAnswer(question, fault);
    DeviceAuthorization answer;
    answer.deviceCode = TextMember(json, "device_code");
    answer.userCode = TextMember(json, "user_code");
    answer.verificationUri = TextMember(json, "verification_uri");
    answer.verificationUriComplete = TextMember(json, "verification_uri_complete");
    if (answer.deviceCode->empty() || answer.userCode.empty())
        return BrokenAnswer(question, "without the codes of a sign-in on another device");
    if (!CanBeTyped(answer.userCode))
        return BrokenAnswer(question, "with a code (user_code) that nobody can type");
    std::string const& complete = answer.verificationUriComplete;
    if (!MayBeOpened(answer.verificationUri, question) ||
        (!complete.empty() && !MayBeOpened(complete, question)))
        return BrokenAnswer(question, "with an address to sign in at that is not https");
    auto const lifetime = ReadSeconds(json["expires_in"], LongestLifetime);
    if (!lifetime)
        return BrokenAnswer(question, "without the lifetime of its codes (expires_in)");
    answer.lifetime = std::chrono::seconds(*lifetime);
    if (!json["interval"].isNull()) {
        auto const interval = ReadSeconds(json["interval"], LongestInterval);
        if (!interval)
            return BrokenAnswer(question, "with an interval that is not a number");
        answer.interval = std::chrono::seconds(*interval);
    }
    return answer;
}

} // namespace Halvorix::OpenId
