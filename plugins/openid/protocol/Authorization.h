#pragma once

#include <string>

#include "openid/protocol/Provider.h"

namespace Halvorix::OpenId {

/// The secrets of one authorization request (RFC 7636, OpenID Connect Core).
struct AuthorizationSecrets {
    std::string state, nonce, verifier;
};

/// 256 random bits each, as base64url.
AuthorizationSecrets NewAuthorizationSecrets();
/// S256 of a verifier.
std::string ChallengeOf(std::string const& verifier);

/// The address that the browser opens.
/// @param loginHint may be empty
std::string AuthorizationUrl(Metadata const& metadata, Client const& client,
                             std::string const& redirectUri, AuthorizationSecrets const& secrets,
                             std::string const& loginHint);

/// The code of an authorization response, or why there is none: state, issuer and repeated
/// parameters are looked at, then `error`. Kind Refused with the provider's code for an error.
Outcome<std::string> ReadAuthorizationResponse(Parameters const& response,
                                               AuthorizationSecrets const& secrets,
                                               Metadata const& metadata, std::string const& issuer);

/// The address that ends the provider's session (RP-Initiated Logout 1.0), empty if it has none.
/// Without the id_token, which is a secret and would stand in the browser's history, and without
/// an address to come back to, where nobody listens.
std::string EndSessionUrl(Metadata const& metadata, Client const& client);

} // namespace Halvorix::OpenId
