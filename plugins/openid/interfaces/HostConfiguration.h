#pragma once

#include <string>

#include <WebServicesConfiguration.h>

#include "openid/session/Configuration.h"

namespace Halvorix::OpenId {

/// @file
/// A host's WebServicesConfiguration, in and out. Its OAuth2 consumer key, else the other consumer
/// key, is the client's id; the scope of its access token are the scopes. The rest is kept for the
/// host and means nothing here, the secrets too: a native client has none.

/// As a host would have written it.
WebServices::WebServicesConfiguration FromServer(ServerConfiguration const& server, int number);

std::string ClientIdOf(WebServices::WebServicesConfiguration const& configuration);
std::string ScopesOf(WebServices::WebServicesConfiguration const& configuration);

/// A JSON object with all that it holds, secrets included: it is for the way back.
std::string ToJson(WebServices::WebServicesConfiguration const& configuration);
/// A member that is missing, or of another type, leaves its value alone. False for what is no
/// object.
bool FromJson(std::string const& text, WebServices::WebServicesConfiguration& configuration);
bool AreEqual(WebServices::WebServicesConfiguration const& left,
              WebServices::WebServicesConfiguration const& right);

} // namespace Halvorix::OpenId
