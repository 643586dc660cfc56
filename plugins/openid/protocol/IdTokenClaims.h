#pragma once

#include <optional>
#include <string>

#include <json/value.h>

#include "openid/protocol/IdToken.h"

namespace Halvorix::OpenId {

/// What is wrong with the claims of an id_token whose signature is right (OpenID Connect Core,
/// 3.1.3.7 and 12.2); no value if nothing is.
/// @param hashBits of the token's algorithm, for at_hash
std::optional<Failure> FindClaimFault(Json::Value const& claims, IdTokenExpectation const& expected,
                                      int hashBits);

/// The failure of an id_token: an answer that breaks the standard.
Failure BadIdToken(std::string reason);

} // namespace Halvorix::OpenId
