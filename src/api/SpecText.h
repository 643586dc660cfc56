#pragma once

#include <string>

#include <SSOServicesPrivate.h>

namespace Halvorix::SSOServices {

/// The form in which a spec crosses to the plugin.
inline std::string SpecText(WebServices::OAuth2TokenSpec const& spec)
{
    std::string text;
    SSOServicesPrivate::OAuth2TokenSpecToJson(spec, text);
    return text;
}

} // namespace Halvorix::SSOServices
