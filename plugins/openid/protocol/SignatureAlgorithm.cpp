#include "openid/protocol/SignatureAlgorithm.h"

namespace Halvorix::OpenId {

namespace {

constexpr SignatureAlgorithm Algorithms[] = {
    {"RS256", SignatureScheme::Pkcs1, 256, 0},   {"RS384", SignatureScheme::Pkcs1, 384, 0},
    {"RS512", SignatureScheme::Pkcs1, 512, 0},   {"PS256", SignatureScheme::Pss, 256, 0},
    {"PS384", SignatureScheme::Pss, 384, 0},     {"PS512", SignatureScheme::Pss, 512, 0},
    {"ES256", SignatureScheme::Ecdsa, 256, 256}, {"ES384", SignatureScheme::Ecdsa, 384, 384},
    {"ES512", SignatureScheme::Ecdsa, 512, 521},
};

} // namespace

SignatureAlgorithm const* FindAlgorithm(std::string const& name)
{
    for (SignatureAlgorithm const& algorithm : Algorithms)
        if (algorithm.name == name)
            return &algorithm;
    return nullptr;
}

bool Fits(SigningKey const& key, SignatureAlgorithm const& algorithm)
{
    if (!key.algorithm.empty() && key.algorithm != algorithm.name)
        return false;
    if (algorithm.scheme == SignatureScheme::Ecdsa)
        return key.key.kind == PublicKey::Kind::EllipticCurve && key.key.curve == algorithm.curve;
    return key.key.kind == PublicKey::Kind::Rsa;
}

} // namespace Halvorix::OpenId
