#pragma once

#include <string>

#include "framework/System.h"

namespace Rig {

/// A compatibility file whose only plugin is the rig's in %SSOServerAppPath%,
/// with an OpenSSL module that may be missing.
inline std::string CompatibilityFor(std::string const& plugin)
{
    std::string const range =
        R"("compatibleSsoServicesVersion": {"minVersion": "10.22", "maxVersion": "10.22.00.1800"})";
    return R"({"ssoClientPlugin": [{"module": ")" + ModuleName(plugin) +
           R"(", "modulePath": "%SSOServerAppPath%/plugin", "version": "1.0", )" + range +
           R"(}], "openssl": [{"module": ")" + ModuleName("openssl") +
           R"(", "modulePath": "%SSOServerAppPath%/openssl", "version": "3.0", )" + range + "}]}";
}

} // namespace Rig
