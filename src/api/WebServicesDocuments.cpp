// WebServicesManager: the calls whose values cross to the plugin as JSON documents.

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include <WebServicesManager.h>
#include "api/Plugin.h"
#include "api/PluginText.h"
#include "api/SpecText.h"
#include "support/SecretText.h"

namespace Halvorix::WebServices {

using namespace SSOServices;

bool WebServicesManager::CompleteLogin(NetworkCookieJar const& jar)
{
    auto const client = Plugin<ISSOClient>();
    if (!client)
        return false;
    SecretText<char> text;
    SSOServicesPrivate::NetworkCookieJarToJson(jar, *text);
    return client->CompleteLogin(text->c_str());
}

bool WebServicesManager::InitiateLogout(wchar_t* buffer, int capacity, NetworkCookieJar& jar,
                                        BufferTransformCallback callback)
{
    if (buffer == nullptr || capacity < 1)
        return false;
    *buffer = L'\0';
    auto const client = Plugin<ISSOClient>();
    if (!client)
        return false;
    char* text = nullptr;
    if (!client->InitiateLogout(buffer, capacity, text, callback))
        return false;
    PluginText const owned(text);
    // No text is no failure here, unlike in GetOAuth2AccessToken, on purpose.
    return text == nullptr || SSOServicesPrivate::JsonToNetworkCookieJar(text, jar);
}

bool WebServicesManager::EnableOAuth2(OAuth2TokenSpec const& spec)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->EnableOAuth2(SpecText(spec).c_str()) : false;
}

bool WebServicesManager::GetOAuth2AccessToken(OAuth2TokenSpec const& spec, OAuth2Token& token,
                                              BufferTransformCallback callback, bool flag)
{
    auto const client = Plugin<ISSOClient>();
    if (!client)
        return false;
    char* text = nullptr;
    // A text that comes with a refusal is neither read nor released.
    if (!client->GetOAuth2AccessToken(SpecText(spec).c_str(), text, callback, flag))
        return false;
    PluginText const owned(text);
    return text != nullptr && SSOServicesPrivate::JsonToOAuth2Token(text, token);
}

bool WebServicesManager::RefreshOAuth2Token(OAuth2TokenSpec const& spec, bool flag)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->RefreshOAuth2Token(SpecText(spec).c_str(), flag) : false;
}

bool WebServicesManager::IsOAuth2TokenExpired(OAuth2TokenSpec const& spec) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsOAuth2TokenExpired(SpecText(spec).c_str()) : false;
}

unsigned int WebServicesManager::GetOAuth2TokenExpiryDate(OAuth2TokenSpec const& spec) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetOAuth2TokenExpiryDate(SpecText(spec).c_str()) : 0;
}

bool WebServicesManager::IsOAuth2TokenAvailable(OAuth2TokenSpec const& spec) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsOAuth2TokenAvailable(SpecText(spec).c_str()) : false;
}

} // namespace Halvorix::WebServices
