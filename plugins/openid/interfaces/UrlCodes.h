#pragma once

#include <plugin/PluginTypes.h>

namespace Halvorix::OpenId {

/// The name of an address by a host's number, empty if there is none. The plugin's documentation
/// tells the numbers; the first four are those of the sample plugin.
inline char const* UrlName(WebServices::WebServicesUrlCode code)
{
    static char const* const names[] = {
        "authorization", "end_session",          "account", "token",  "userinfo",
        "revocation",    "device_authorization", "jwks",    "issuer",
    };
    auto const index = static_cast<std::uint32_t>(code);
    return index < sizeof names / sizeof *names ? names[index] : "";
}

} // namespace Halvorix::OpenId
