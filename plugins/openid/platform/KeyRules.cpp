#include "openid/platform/KeyRules.h"

#include <algorithm>

namespace Halvorix::OpenId {

namespace {

std::string WithoutLeadingZeros(std::string const& number)
{
    return number.substr(std::min(number.find_first_not_of('\0'), number.size()));
}

/// Of a number without leading zeros.
std::size_t Bits(std::string const& number)
{
    if (number.empty())
        return 0;
    std::size_t bits = number.size() * 8;
    for (int first = static_cast<unsigned char>(number[0]); first < 0x80; first *= 2)
        --bits;
    return bits;
}

bool IsOdd(std::string const& number) { return (number.back() & 1) != 0; }

bool IsSoundRsa(PublicKey const& key)
{
    std::size_t const bits = Bits(key.modulus);
    // A long exponent is nobody's but an attacker's, who has us compute.
    return bits >= 2048 && bits <= 16384 && IsOdd(key.modulus) && Bits(key.exponent) >= 2 &&
           Bits(key.exponent) <= 64 && IsOdd(key.exponent);
}

bool IsSoundCurve(PublicKey const& key)
{
    return (key.curve == 256 || key.curve == 384 || key.curve == 521) &&
           key.x.size() == FieldSize(key.curve) && key.y.size() == FieldSize(key.curve);
}

} // namespace

PublicKey Normal(PublicKey const& key)
{
    PublicKey normal = key;
    normal.modulus = WithoutLeadingZeros(key.modulus);
    normal.exponent = WithoutLeadingZeros(key.exponent);
    return normal;
}

bool CanVerify(SignatureScheme scheme, int hashBits, PublicKey const& key,
               std::size_t signatureSize)
{
    if (hashBits != 256 && hashBits != 384 && hashBits != 512)
        return false;
    if (scheme == SignatureScheme::Ecdsa)
        return key.kind == PublicKey::Kind::EllipticCurve && IsSoundCurve(key) &&
               signatureSize == 2 * FieldSize(key.curve);
    return key.kind == PublicKey::Kind::Rsa && IsSoundRsa(key) &&
           signatureSize == key.modulus.size();
}

} // namespace Halvorix::OpenId
