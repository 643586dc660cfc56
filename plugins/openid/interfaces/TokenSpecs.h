#pragma once

#include <optional>

#include <OAuth2Token.h>

#include "openid/session/Session.h"

namespace Halvorix::OpenId {

/// A host's document of a spec; empty for null and for what is none. What has the wrong types
/// throws as the library's reader does.
std::optional<WebServices::OAuth2TokenSpec> ReadSpec(char const* json);

/// The token that a host's spec means. Its legacy mark means nothing here.
TokenSpec MeantBy(WebServices::OAuth2TokenSpec const& spec);

/// The document of a token, for the library to release; the spec comes back as it was asked.
char* NewTokenDocument(Secret const& token, WebServices::OAuth2TokenSpec const& spec);

} // namespace Halvorix::OpenId
