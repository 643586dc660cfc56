#include "openid/protocol/IdToken.h"

#include <algorithm>
#include <optional>

#include "openid/platform/KeyRules.h"
#include "openid/protocol/SignatureAlgorithm.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

/// A provider has a handful; one that sends thousands shall not keep us busy.
constexpr Json::ArrayIndex MostKeys = 100;

struct Curve {
    char const* name;
    int bits;
};

constexpr Curve Curves[] = {{"P-256", 256}, {"P-384", 384}, {"P-521", 521}};

/// Whether a key without this member, or with one that says so, verifies signatures.
bool IsForSignatures(Json::Value const& jwk)
{
    if (jwk.isMember("use") && TextMember(jwk, "use") != "sig")
        return false;
    if (!jwk.isMember("key_ops"))
        return true;
    Json::Value const& operations = jwk["key_ops"];
    return operations.isArray() &&
           std::any_of(operations.begin(), operations.end(),
                       [](Json::Value const& one) { return one == Json::Value("verify"); });
}

/// The bytes of a number; empty if it is missing or damaged.
std::string Number(Json::Value const& jwk, char const* key)
{
    return FromBase64Url(TextMember(jwk, key)).value_or("");
}

std::optional<PublicKey> ReadRsa(Json::Value const& jwk)
{
    PublicKey key;
    key.kind = PublicKey::Kind::Rsa;
    key.modulus = Number(jwk, "n");
    key.exponent = Number(jwk, "e");
    if (key.modulus.empty() || key.exponent.empty())
        return std::nullopt;
    return key;
}

std::optional<PublicKey> ReadEllipticCurve(Json::Value const& jwk)
{
    std::string const name = TextMember(jwk, "crv");
    auto const curve = std::find_if(std::begin(Curves), std::end(Curves),
                                    [&](Curve const& one) { return one.name == name; });
    if (curve == std::end(Curves))
        return std::nullopt;
    PublicKey key;
    key.kind = PublicKey::Kind::EllipticCurve;
    key.curve = curve->bits;
    key.x = Number(jwk, "x");
    key.y = Number(jwk, "y");
    if (key.x.size() != FieldSize(key.curve) || key.y.size() != FieldSize(key.curve))
        return std::nullopt;
    return key;
}

std::optional<SigningKey> ReadKey(Json::Value const& jwk)
{
    if (!jwk.isObject() || !IsForSignatures(jwk))
        return std::nullopt;
    for (char const* const key : {"kid", "alg"})
        if (jwk.isMember(key) && !jwk[key].isString())
            return std::nullopt;
    std::string const type = TextMember(jwk, "kty");
    auto const key = type == "RSA"  ? ReadRsa(jwk)
                     : type == "EC" ? ReadEllipticCurve(jwk)
                                    : std::nullopt;
    if (!key)
        return std::nullopt;
    return SigningKey{TextMember(jwk, "kid"), TextMember(jwk, "alg"), *key};
}

} // namespace

std::vector<SigningKey> ReadKeys(Json::Value const& keySet)
{
    std::vector<SigningKey> keys;
    if (!keySet.isObject() || !keySet["keys"].isArray())
        return keys;
    Json::Value const& list = keySet["keys"];
    for (Json::ArrayIndex i = 0; i < std::min(list.size(), MostKeys); ++i)
        if (auto key = ReadKey(list[i]))
            keys.push_back(std::move(*key));
    return keys;
}

} // namespace Halvorix::OpenId
