#pragma once

#include <string>

#include "openid/platform/Crypto.h"
#include "openid/protocol/IdToken.h"

namespace Halvorix::OpenId {

/// A signature algorithm of JWA (RFC 7518, section 3.1) by which an id_token may be signed.
struct SignatureAlgorithm {
    char const* name;
    SignatureScheme scheme;
    int hashBits;
    int curve; ///< Bits; 0 for RSA.
};

/// Null for all others, `none` and those with a shared secret among them.
SignatureAlgorithm const* FindAlgorithm(std::string const& name);
/// Whether the key is of the algorithm's kind and curve, and not bound to another one.
bool Fits(SigningKey const& key, SignatureAlgorithm const& algorithm);

} // namespace Halvorix::OpenId
