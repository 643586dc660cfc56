#include "openid/protocol/IdTokenClaims.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

constexpr std::int64_t Tolerance = 120;
/// Far beyond any date, and still far from what a double counts exactly.
constexpr double LatestTime = 1e12;
constexpr std::size_t LongestSubject = 255;

/// A text of another claim than the token's time, as it may stand in a log.
std::string Quoted(std::string const& text) { return '"' + OneLine(text) + '"'; }

std::string CheckIssuer(Json::Value const& claims, IdTokenExpectation const& expected)
{
    if (!claims["iss"].isString())
        return "has no issuer (iss)";
    std::string const issuer = TextMember(claims, "iss");
    if (issuer != expected.issuer)
        return "is from the issuer " + Quoted(issuer) + " instead of " + Quoted(expected.issuer);
    return {};
}

std::string CheckSubject(Json::Value const& claims, IdTokenExpectation const& expected)
{
    std::string const subject = TextMember(claims, "sub");
    if (subject.empty())
        return "names no user (sub)";
    if (subject.size() > LongestSubject ||
        std::any_of(subject.begin(), subject.end(),
                    [](char character) { return character < 0x20 || character > 0x7E; }))
        return "names the user (sub) by more than 255 characters or by others than ASCII";
    if (!expected.subject.empty() && subject != expected.subject)
        return "is about another user (sub) than the one who signed in";
    return {};
}

std::string CheckAudience(Json::Value const& claims, IdTokenExpectation const& expected)
{
    Json::Value const& audience = claims["aud"];
    bool isForUs = audience == Json::Value(expected.clientId);
    std::optional<std::string> other;
    if (audience.isArray()) {
        for (Json::Value const& one : audience) {
            if (!one.isString())
                return "has an audience (aud) that is not a text";
            if (one.asString() == expected.clientId)
                isForUs = true;
            else
                other = one.asString();
        }
    } else if (!audience.isString()) {
        return "has no audience (aud)";
    }
    if (!isForUs)
        return "is not for the client " + Quoted(expected.clientId) + " (aud)";
    // No other party is known here, so none is trusted with it (section 3.1.3.7).
    if (other)
        return "is also for " + Quoted(*other) +
               " (aud), which could use it in this client's place";
    if (claims.isMember("azp") && claims["azp"] != Json::Value(expected.clientId))
        return "names another authorized party (azp) than the client " + Quoted(expected.clientId);
    return {};
}

/// Seconds since 1970; no value if it is no number that can be a time.
std::optional<double> Time(Json::Value const& claim)
{
    if (!claim.isNumeric())
        return std::nullopt;
    double const seconds = claim.asDouble();
    if (!std::isfinite(seconds) || seconds < 0 || seconds > LatestTime)
        return std::nullopt;
    return seconds;
}

std::string Seconds(double seconds)
{
    return std::to_string(static_cast<std::int64_t>(seconds)) + " s";
}

std::string CheckForm(Json::Value const& claims)
{
    for (char const* const name : {"exp", "iat"})
        if (!Time(claims[name]))
            return std::string("has no time \"") + name + "\" in seconds since 1970";
    if (claims.isMember("nbf") && !Time(claims["nbf"]))
        return "has no time \"nbf\" in seconds since 1970";
    return {};
}

std::string CheckTimes(Json::Value const& claims, std::int64_t now)
{
    auto const present = static_cast<double>(now);
    double const expiry = *Time(claims["exp"]);
    if (expiry + Tolerance <= present)
        return "expired " + Seconds(present - expiry) + " ago (exp)";
    for (char const* const name : {"iat", "nbf"}) {
        double const start = Time(claims[name]).value_or(0);
        if (start - Tolerance > present)
            return "is not valid for another " + Seconds(start - present) + " (" + name + ")";
    }
    return {};
}

std::string CheckNonce(Json::Value const& claims, IdTokenExpectation const& expected)
{
    if (expected.nonce.empty())
        return {};
    if (!claims["nonce"].isString())
        return "has no nonce";
    if (!EqualSecrets(TextMember(claims, "nonce"), expected.nonce))
        return "belongs to another sign-in (nonce)";
    return {};
}

std::string CheckAccessToken(Json::Value const& claims, IdTokenExpectation const& expected,
                             int hashBits)
{
    if (!claims.isMember("at_hash") || expected.accessToken.empty())
        return {};
    std::string const hash = Sha2(hashBits, expected.accessToken);
    if (claims["at_hash"] != Json::Value(ToBase64Url(hash.substr(0, hash.size() / 2))))
        return "belongs to another access token (at_hash)";
    return {};
}

} // namespace

Failure BadIdToken(std::string reason)
{
    Failure failure;
    failure.kind = Failure::Kind::Provider;
    failure.reason = "the id_token " + std::move(reason);
    failure.remedy = "ask the provider's administrator";
    return failure;
}

std::optional<Failure> FindClaimFault(Json::Value const& claims, IdTokenExpectation const& expected,
                                      int hashBits)
{
    for (std::string const& fault :
         {CheckIssuer(claims, expected), CheckSubject(claims, expected),
          CheckAudience(claims, expected), CheckForm(claims), CheckNonce(claims, expected),
          CheckAccessToken(claims, expected, hashBits)})
        if (!fault.empty())
            return BadIdToken(fault);
    std::string const late = CheckTimes(claims, expected.now);
    if (late.empty())
        return std::nullopt;
    Failure failure = BadIdToken(late);
    failure.remedy = "set this computer's clock and time zone";
    return failure;
}

} // namespace Halvorix::OpenId
