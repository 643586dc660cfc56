#include "openid/SigningKey.h"

#include <map>
#include <mutex>
#include <stdexcept>

#include <json/writer.h>

#include "openid/protocol/Texts.h"

namespace Rig {

namespace {

using Halvorix::OpenId::PublicKey;
using Halvorix::OpenId::ToBase64Url;

std::string Compact(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, json);
}

} // namespace

SigningKey const& SigningKey::Shared(Kind kind)
{
    static std::mutex mutex;
    static std::map<Kind, SigningKey> keys;
    std::lock_guard const guard(mutex);
    auto const found = keys.find(kind);
    return found != keys.end() ? found->second : keys.emplace(kind, SigningKey(kind)).first->second;
}

bool SigningKey::IsKnown(Kind kind)
{
    try {
        Shared(kind);
        return true;
    } catch (std::runtime_error const&) {
        return false;
    }
}

Json::Value SigningKey::PublicJwk(std::string const& id) const
{
    PublicKey const numbers = Public();
    Json::Value jwk(Json::objectValue);
    jwk["use"] = "sig";
    if (!id.empty())
        jwk["kid"] = id;
    if (numbers.kind == PublicKey::Kind::Rsa) {
        jwk["kty"] = "RSA";
        jwk["n"] = ToBase64Url(numbers.modulus);
        jwk["e"] = ToBase64Url(numbers.exponent);
        return jwk;
    }
    jwk["kty"] = "EC";
    jwk["crv"] = "P-" + std::to_string(numbers.curve);
    jwk["x"] = ToBase64Url(numbers.x);
    jwk["y"] = ToBase64Url(numbers.y);
    return jwk;
}

std::string SignToken(SigningKey const& key, std::string const& algorithm, Json::Value header,
                      Json::Value const& claims)
{
    if (!header.isMember("alg"))
        header["alg"] = algorithm;
    std::string const content = ToBase64Url(Compact(header)) + "." + ToBase64Url(Compact(claims));
    return content + "." + ToBase64Url(key.Sign(algorithm, content));
}

} // namespace Rig
