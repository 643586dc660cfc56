#pragma once

#include <string>

#include <json/value.h>

#include "openid/protocol/Provider.h"

namespace Halvorix::OpenId {

/// Where a provider describes itself (OpenID Connect Discovery 1.0, section 4).
std::string DiscoveryUrl(std::string const& issuer);
/// Its description, if it is the issuer's and whole, and all of its addresses are secure.
Outcome<Metadata> ReadMetadata(Json::Value const& json, std::string const& issuer);

} // namespace Halvorix::OpenId
