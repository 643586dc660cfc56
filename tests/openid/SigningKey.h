#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <json/value.h>

#include "openid/platform/Crypto.h"

namespace Rig {

/// A private key made at run time, which signs as a provider does.
class SigningKey {
public:
    enum class Kind { Rsa, WeakRsa, P256, P384, P521 };

    /// Makes a new key: 2048 bits of RSA, 1024 for the weak one. Throws std::runtime_error where
    /// the system cannot.
    explicit SigningKey(Kind kind);

    /// One that is made once in a process.
    static SigningKey const& Shared(Kind kind);
    /// Whether this system has such keys: Wine 8 has no P-521.
    static bool IsKnown(Kind kind);

    /// @param algorithm RS256 to RS512, PS256 to PS512, ES256 to ES512: the key's kind has to
    /// fit, but not the bits of its curve.
    std::string Sign(std::string const& algorithm, std::string_view data) const;
    Halvorix::OpenId::PublicKey Public() const;
    /// With "kty", "use" and the numbers; with "kid" if there is an id.
    Json::Value PublicJwk(std::string const& id = {}) const;

private:
    struct Key;
    std::shared_ptr<Key const> key;
};

/// A token in compact form. The header gets the algorithm as its "alg" if it has none, so that a
/// test may say another one than it signs with.
std::string SignToken(SigningKey const& key, std::string const& algorithm, Json::Value header,
                      Json::Value const& claims);

} // namespace Rig
