#include "openid/protocol/IdToken.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "openid/protocol/IdTokenClaims.h"
#include "openid/protocol/SignatureAlgorithm.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

constexpr std::size_t LongestToken = 65'536;
/// So many keys are tried for a token that names none.
constexpr std::size_t MostTries = 8;

/// The parts of a token as they stand there.
struct Parts {
    std::string_view header, claims, signature, signedText;
};

std::optional<Parts> Split(std::string_view token)
{
    std::size_t const first = token.find('.');
    if (first == std::string_view::npos)
        return std::nullopt;
    std::size_t const second = token.find('.', first + 1);
    if (second == std::string_view::npos || token.find('.', second + 1) != std::string_view::npos)
        return std::nullopt;
    return Parts{token.substr(0, first), token.substr(first + 1, second - first - 1),
                 token.substr(second + 1), token.substr(0, second)};
}

/// A part of a token as JSON; null with a reason if it is none.
Json::Value ReadPart(std::string_view part, std::string& reason)
{
    auto const text = FromBase64Url(part);
    if (!text) {
        reason = "is not base64url";
        return Json::Value();
    }
    return ParseJsonObject(*text, reason);
}

bool IsJwt(std::string const& type)
{
    return EqualIgnoringCase(type, "JWT") || EqualIgnoringCase(type, "application/jwt");
}

/// What is wrong with a header, empty if nothing is.
std::string CheckHeader(Json::Value const& header, std::vector<std::string> algorithms)
{
    if (header.isMember("crit"))
        return "demands an extension that is not supported (crit)";
    if (header.isMember("typ") && !IsJwt(TextMember(header, "typ")))
        return "is not of the type JWT (typ)";
    if (header.isMember("kid") && !header["kid"].isString())
        return "has a key id (kid) that is not a text";
    if (!header["alg"].isString())
        return "names no signature algorithm (alg)";
    std::string const algorithm = TextMember(header, "alg");
    if (!FindAlgorithm(algorithm))
        return "is signed by the algorithm \"" + OneLine(algorithm) +
               "\", which is not accepted (alg)";
    if (algorithms.empty())
        algorithms = {"RS256"};
    if (std::find(algorithms.begin(), algorithms.end(), algorithm) == algorithms.end())
        return "is signed by the algorithm " + algorithm + ", which the provider does not announce";
    return {};
}

/// The keys that may have signed it.
std::vector<SigningKey> Candidates(std::vector<SigningKey> const& keys, Json::Value const& header,
                                   SignatureAlgorithm const& algorithm)
{
    std::vector<SigningKey> found;
    bool const isNamed = header.isMember("kid");
    std::string const id = TextMember(header, "kid");
    for (SigningKey const& key : keys)
        if (Fits(key, algorithm) && (!isNamed || key.id == id) && found.size() < MostTries)
            found.push_back(key);
    return found;
}

bool IsSignedByAny(std::vector<SigningKey> const& keys, SignatureAlgorithm const& algorithm,
                   Parts const& parts, std::string const& signature)
{
    return std::any_of(keys.begin(), keys.end(), [&](SigningKey const& key) {
        return VerifySignature(algorithm.scheme, algorithm.hashBits, key.key, parts.signedText,
                               signature);
    });
}

/// What is wrong with the signature, empty if nothing is.
std::string CheckSignature(Parts const& parts, Json::Value const& header,
                           SignatureAlgorithm const& algorithm, std::vector<SigningKey> const& keys,
                           std::function<std::vector<SigningKey>()> const& renewKeys)
{
    auto const signature = FromBase64Url(parts.signature);
    if (!signature || signature->empty())
        return "has a signature that is not base64url";
    auto candidates = Candidates(keys, header, algorithm);
    bool isSigned = IsSignedByAny(candidates, algorithm, parts, *signature);
    // A provider that gives its keys no ids may have changed them all the same.
    if (!isSigned && (candidates.empty() || !header.isMember("kid"))) {
        candidates = Candidates(renewKeys(), header, algorithm);
        isSigned = IsSignedByAny(candidates, algorithm, parts, *signature);
    }
    if (isSigned)
        return {};
    std::string const id = TextMember(header, "kid");
    if (candidates.empty())
        return "is signed by a key that the provider does not have for " +
               std::string(algorithm.name) + (id.empty() ? "" : " (kid \"" + OneLine(id) + "\")");
    return "has a wrong signature";
}

} // namespace

Outcome<Json::Value> VerifyIdToken(std::string const& token, IdTokenExpectation const& expected,
                                   std::vector<SigningKey> const& keys,
                                   std::function<std::vector<SigningKey>()> const& renewKeys)
{
    if (token.size() > LongestToken)
        return BadIdToken("is larger than 64 KiB");
    auto const parts = Split(token);
    if (!parts)
        return BadIdToken("does not have the three parts of a signed token");
    std::string reason;
    Json::Value const header = ReadPart(parts->header, reason);
    if (header.isNull())
        return BadIdToken("has a header that " + reason);
    std::string fault = CheckHeader(header, expected.algorithms);
    if (!fault.empty())
        return BadIdToken(fault);
    SignatureAlgorithm const& algorithm = *FindAlgorithm(TextMember(header, "alg"));
    fault = CheckSignature(*parts, header, algorithm, keys, renewKeys);
    if (!fault.empty())
        return BadIdToken(fault);
    Json::Value claims = ReadPart(parts->claims, reason);
    if (claims.isNull())
        return BadIdToken("has a content that " + reason);
    if (auto failure = FindClaimFault(claims, expected, algorithm.hashBits))
        return *failure;
    return claims;
}

Json::Value UnverifiedClaims(std::string const& token)
{
    auto const parts = Split(token);
    std::string reason;
    return parts ? ReadPart(parts->claims, reason) : Json::Value();
}

} // namespace Halvorix::OpenId
