#pragma once

#include <string>

#include <json/value.h>

#include "openid/protocol/Answers.h"
#include "openid/protocol/Provider.h"

namespace Halvorix::OpenId {

/// The tokens of a token endpoint's answer (RFC 6749, section 5.1).
/// @param scope what was asked for
Outcome<TokenAnswer> ReadTokenAnswer(Json::Value const& json, Question const& question,
                                     std::string const& scope);
/// RFC 8628, section 3.2.
Outcome<DeviceAuthorization> ReadDeviceAuthorization(Json::Value const& json,
                                                     Question const& question);

} // namespace Halvorix::OpenId
