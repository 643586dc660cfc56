#pragma once

#include <optional>

#include <json/value.h>

#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// What the id_token of a refresh says otherwise than that of the sign-in, though it must not
/// (OpenID Connect Core, 12.2); no value if nothing.
/// @param claims null for a token that says nothing
std::optional<Failure> FindChange(Json::Value const& claims, Json::Value const& ofLogin);

} // namespace Halvorix::OpenId
