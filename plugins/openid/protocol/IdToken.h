#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <json/value.h>

#include "openid/platform/Crypto.h"
#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// A provider's key with what it may be used for.
struct SigningKey {
    std::string id;        ///< May be empty.
    std::string algorithm; ///< May be empty: any that fits its kind.
    PublicKey key;
};

/// The keys of a JWK set that verify signatures; others, and damaged ones, are passed over.
std::vector<SigningKey> ReadKeys(Json::Value const& keySet);

/// What an id_token has to say.
struct IdTokenExpectation {
    std::string issuer, clientId;
    std::string nonce;                   ///< Empty at a refresh, where none need be there.
    std::string subject;                 ///< At a refresh the one of before; empty for any.
    std::string accessToken;             ///< For at_hash, if the token has one.
    std::vector<std::string> algorithms; ///< The provider's; empty for RS256 alone.
    std::int64_t now = 0;                ///< Seconds since 1970.
};

/// Verified claims. Finds a key by the token's key id; if it is not there, `renewKeys` is asked
/// once for the keys anew. RS, PS and ES of 256 to 512 bits; `none` and HMAC are refused. Issuer,
/// audience, authorized party, nonce compared exactly, times with 120 s of tolerance.
Outcome<Json::Value> VerifyIdToken(std::string const& token, IdTokenExpectation const& expected,
                                   std::vector<SigningKey> const& keys,
                                   std::function<std::vector<SigningKey>()> const& renewKeys);

/// What a token says, verified by nobody; null if it cannot be read.
Json::Value UnverifiedClaims(std::string const& token);

} // namespace Halvorix::OpenId
