#pragma once

#include <cstddef>

#include "openid/platform/Crypto.h"

namespace Halvorix::OpenId {

/// Bytes of a number of the NIST curve's field.
constexpr std::size_t FieldSize(int curve) { return (static_cast<std::size_t>(curve) + 7) / 8; }

/// A key with the zeros at the beginning of RSA's numbers gone.
PublicKey Normal(PublicKey const& key);

/// Whether a signature can be a normal key's at all: the scheme fits the key, the key is neither
/// too weak nor so large that it would take long, and all of them have the length that they must
/// have.
bool CanVerify(SignatureScheme scheme, int hashBits, PublicKey const& key,
               std::size_t signatureSize);

} // namespace Halvorix::OpenId
