#include "../../include/WebServicesManager.h"

#include <string>

#include "../../include/NetworkCookie.h"
#include "../../include/OAuth2Token.h"
#include "../../include/WebServicesConfiguration.h"
#include "../discovery/PathText.h"
#include "../host/SupportFileSearchPaths.h"
#include "../support/ProcessState.h"
#include "../support/SecretText.h"
#include "Forward.h"
#include "PluginText.h"
#include "ReferenceCount.h"
#include "SpecText.h"

namespace Halvorix::WebServices {

using namespace SSOServices;

WebServicesManager::WebServicesManager() : fallbackConfiguration(new WebServicesConfiguration) {}

WebServicesManager::~WebServicesManager() { delete fallbackConfiguration; }

bool WebServicesManager::Initialize() { return Initialize(false); }

bool WebServicesManager::Initialize(bool flag)
{
    if (IsFirstInitialize(webServicesManagerCount, webServicesManager != nullptr)) {
        AskModule([&](auto& module) { module.Initialize(flag, false); });
        webServicesManager = new WebServicesManager;
    }
    return true;
}

bool WebServicesManager::Initialize(bool flag, bool) { return Initialize(flag); }

bool WebServicesManager::Initialize(OAuth2TokenSpec const& spec)
{
    if (IsFirstInitialize(webServicesManagerCount, webServicesManager != nullptr)) {
        std::string const text = SpecText(spec);
        AskModule([&](auto& module) { module.Initialize(text.c_str()); });
        webServicesManager = new WebServicesManager;
    }
    return true;
}

bool WebServicesManager::Uninitialize()
{
    if (IsLastUninitialize(webServicesManagerCount)) {
        delete webServicesManager.exchange(nullptr);
        AskModule([](auto& module) { module.Uninitialize(); });
        webServicesManagerCount = 0;
    }
    return true;
}

WebServicesManager* WebServicesManager::GetInstance() { return webServicesManager; }

bool WebServicesManager::IsInitialized() { return webServicesManagerCount > 0; }

int WebServicesManager::GetSupportFileSearchPaths(wchar_t* buffer, int capacity)
{
    return AskModule(
        0, [&](auto& module) { return module.GetSupportFileSearchPaths(buffer, capacity); });
}

void WebServicesManager::SetSupportFileSearchPaths(wchar_t const* paths)
{
    // Stored first: the next step may be the load, which reads the list.
    StoreSupportFileSearchPaths(SplitSupportPathList(paths));
    AskModule([&](auto& module) { module.SetSupportFileSearchPaths(paths); });
}

// EnableLog, IsLogEnabled and SetCachePath have no function, on purpose.
void WebServicesManager::EnableLog(bool) {}

bool WebServicesManager::IsLogEnabled() const { return true; }

void WebServicesManager::SetCachePath(wchar_t const*) {}

WebServicesConfiguration const& WebServicesManager::GetConfiguration() const
{
    // The object is looked at only without a plugin: there may be none before Initialize.
    auto const client = Fetch<ISSOClient>(&SSOClientManager::GetSSOClient);
    return client ? client->GetConfiguration() : *fallbackConfiguration;
}

bool WebServicesManager::SetConfiguration(WebServicesConfiguration const& configuration)
{
    return AskClient(false, [&](auto& client) { return client.SetConfiguration(configuration); });
}

int WebServicesManager::GetCachePath(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetCachePath(buffer, capacity); });
}

bool WebServicesManager::IsCacheEnabled(CacheType type) const
{
    return AskClient(false, [&](auto& client) { return client.IsCacheEnabled(type); });
}

void WebServicesManager::EnableCache(CacheType type, bool enable)
{
    AskClient([&](auto& client) { client.EnableCache(type, enable); });
}

bool WebServicesManager::IsCacheAvailable(CacheType type) const
{
    return AskClient(false, [&](auto& client) { return client.IsCacheAvailable(type); });
}

void WebServicesManager::InvalidateCache(CacheType type)
{
    AskClient([&](auto& client) { client.InvalidateCache(type); });
}

ServiceEntitlement WebServicesManager::GetServiceEntitlement(wchar_t const* service, wchar_t*& text)
{
    return AskClient(ServiceEntitlement{},
                     [&](auto& client) { return client.GetServiceEntitlement(service, text); });
}

ServiceEntitlement WebServicesManager::GetServiceEntitlement(wchar_t const* service)
{
    return AskClient(ServiceEntitlement{},
                     [&](auto& client) { return client.GetServiceEntitlement(service); });
}

bool WebServicesManager::GetServiceEntitlementEx(wchar_t*& text)
{
    return AskClient(false, [&](auto& client) { return client.GetServiceEntitlementEx(text); });
}

bool WebServicesManager::GetServiceEntitlementEx(wchar_t const* service, wchar_t*& text)
{
    return AskClient(false,
                     [&](auto& client) { return client.GetServiceEntitlementEx(service, text); });
}

int WebServicesManager::GetLoginStateFile(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetLoginStateFile(buffer, capacity); });
}

int WebServicesManager::GetUserNameW(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetUserNameW(buffer, capacity); });
}

int WebServicesManager::GetLoginUserName(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetLoginUserName(buffer, capacity); });
}

int WebServicesManager::GetUserId(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetUserId(buffer, capacity); });
}

int WebServicesManager::GetUserEmail(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetUserEmail(buffer, capacity); });
}

int WebServicesManager::GetUserFirstName(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetUserFirstName(buffer, capacity); });
}

int WebServicesManager::GetUserLastName(wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetUserLastName(buffer, capacity); });
}

bool WebServicesManager::GetUserInfo(wchar_t*& info)
{
    info = nullptr;
    return AskClient(false, [&](auto& client) { return client.GetUserInfo(info); });
}

bool WebServicesManager::IsLoggedIn() const
{
    return AskClient(false, [&](auto& client) { return client.IsLoggedIn(); });
}

unsigned int WebServicesManager::GetLoginExpiryDate() const
{
    return AskClient(0, [&](auto& client) { return client.GetLoginExpiryDate(); });
}

bool WebServicesManager::IsLoginExpired() const
{
    return AskClient(false, [&](auto& client) { return client.IsLoginExpired(); });
}

bool WebServicesManager::IsLoginValid() const
{
    return AskClient(false, [&](auto& client) { return client.IsLoginValid(); });
}

bool WebServicesManager::IsSSOEnabledForAllUsers() const
{
    return AskClient(false, [&](auto& client) { return client.IsSSOEnabledForAllUsers(); });
}

int WebServicesManager::GetLdapDomainKey(wchar_t* buffer, int capacity)
{
    return AskClient(0, [&](auto& client) { return client.GetLdapDomainKey(buffer, capacity); });
}

bool WebServicesManager::GetCloudStorageQuota(long long& first, long long& second) const
{
    first = 0;
    second = 0;
    return AskClient(false,
                     [&](auto& client) { return client.GetCloudStorageQuota(first, second); });
}

bool WebServicesManager::InitiateLogin(wchar_t const* text, wchar_t* buffer, int capacity,
                                       LoginErrorEx& error, int& value)
{
    error = LoginErrorEx::Preset;
    value = 0;
    return AskClient(false, [&](auto& client) {
        return client.InitiateLogin(text, buffer, capacity, error, value);
    });
}

bool WebServicesManager::InitiateLogin(wchar_t const* text, int number, wchar_t* buffer,
                                       int capacity, LoginError& error, int& value)
{
    error = LoginError::Preset;
    value = 0;
    return AskClient(false, [&](auto& client) {
        return client.InitiateLogin(text, number, buffer, capacity, error, value);
    });
}

bool WebServicesManager::InitiateLogin(wchar_t* buffer, int capacity, LoginError& error, int& value)
{
    error = LoginError::Preset;
    value = 0;
    return AskClient(
        false, [&](auto& client) { return client.InitiateLogin(buffer, capacity, error, value); });
}

bool WebServicesManager::InitiateLogin(wchar_t* buffer, int capacity)
{
    return AskClient(false, [&](auto& client) { return client.InitiateLogin(buffer, capacity); });
}

bool WebServicesManager::CompleteLogin(NetworkCookieJar const& jar)
{
    return AskClient(false, [&](auto& client) {
        SecretText<char> text;
        SSOServicesPrivate::NetworkCookieJarToJson(jar, *text);
        return client.CompleteLogin(text->c_str());
    });
}

bool WebServicesManager::CompleteLogin()
{
    return AskClient(false, [&](auto& client) { return client.CompleteLogin(); });
}

bool WebServicesManager::RestoreLogin()
{
    return AskClient(false, [&](auto& client) { return client.RestoreLogin(); });
}

bool WebServicesManager::Logout()
{
    return AskClient(false, [&](auto& client) { return client.Logout(); });
}

bool WebServicesManager::InitiateLogout(wchar_t* buffer, int capacity, NetworkCookieJar& jar,
                                        BufferTransformCallback callback)
{
    if (buffer == nullptr || capacity < 1)
        return false;
    *buffer = L'\0';
    return AskClient(false, [&](auto& client) {
        char* text = nullptr;
        if (!client.InitiateLogout(buffer, capacity, text, callback))
            return false;
        PluginText const owned(text);
        // No text is no failure here, unlike in GetOAuth2AccessToken, on purpose.
        return text == nullptr || SSOServicesPrivate::JsonToNetworkCookieJar(text, jar);
    });
}

bool WebServicesManager::CompleteLogout()
{
    return AskClient(false, [&](auto& client) { return client.CompleteLogout(); });
}

bool WebServicesManager::IsTokenAvailable() const
{
    return AskClient(false, [&](auto& client) { return client.IsTokenAvailable(); });
}

int WebServicesManager::GetAccessToken(wchar_t* buffer, int capacity, bool flag)
{
    return AskClient(0,
                     [&](auto& client) { return client.GetAccessToken(buffer, capacity, flag); });
}

int WebServicesManager::GetAccessToken(wchar_t* buffer, int capacity)
{
    return AskClient(0, [&](auto& client) { return client.GetAccessToken(buffer, capacity); });
}

unsigned int WebServicesManager::GetTokenExpiryDate() const
{
    return AskClient(0, [&](auto& client) { return client.GetTokenExpiryDate(); });
}

bool WebServicesManager::IsTokenExpired() const
{
    return AskClient(false, [&](auto& client) { return client.IsTokenExpired(); });
}

bool WebServicesManager::RefreshToken(bool flag)
{
    return AskClient(false, [&](auto& client) { return client.RefreshToken(flag); });
}

int WebServicesManager::GetLoginCookie(unsigned char*& cookie)
{
    cookie = nullptr;
    return AskClient(0, [&](auto& client) { return client.GetLoginCookie(cookie); });
}

wchar_t* WebServicesManager::SignRequest(wchar_t const* url, RequestParam const* params,
                                         int paramCount, HttpMethod method, ParsingMode mode,
                                         wchar_t const* first, wchar_t const* second,
                                         BufferTransformCallback callback)
{
    return AskClient(nullptr, [&](auto& client) {
        return client.SignRequest(url, params, paramCount, method, mode, first, second, callback);
    });
}

wchar_t* WebServicesManager::SignUrlForBrowser(wchar_t const* url, bool flag,
                                               BufferTransformCallback callback)
{
    return AskClient(nullptr,
                     [&](auto& client) { return client.SignUrlForBrowser(url, flag, callback); });
}

Server WebServicesManager::GetServer() const
{
    return AskClient(Server{}, [&](auto& client) { return client.GetServer(); });
}

bool WebServicesManager::SetServer(Server server)
{
    return AskClient(false, [&](auto& client) { return client.SetServer(server); });
}

int WebServicesManager::GetUrl(WebServicesUrlCode code, wchar_t* buffer, int capacity) const
{
    return AskClient(0, [&](auto& client) { return client.GetUrl(code, buffer, capacity); });
}

bool WebServicesManager::GetProxyAuthenticationDialogText(wchar_t* title, int titleCapacity,
                                                          wchar_t* text, int textCapacity)
{
    return AskClient(false, [&](auto& client) {
        return client.GetProxyAuthenticationDialogText(title, titleCapacity, text, textCapacity);
    });
}

void WebServicesManager::SetProxyAuthenticationDialogText(wchar_t const* title, wchar_t const* text)
{
    AskClient([&](auto& client) { client.SetProxyAuthenticationDialogText(title, text); });
}

bool WebServicesManager::HasProxyAuthentication(wchar_t const* host, int port)
{
    return AskClient(false,
                     [&](auto& client) { return client.HasProxyAuthentication(host, port); });
}

bool WebServicesManager::GetProxyAuthentication(wchar_t const* host, int port, wchar_t* user,
                                                int userCapacity, wchar_t* password,
                                                int passwordCapacity,
                                                BufferTransformCallback callback)
{
    return AskClient(false, [&](auto& client) {
        return client.GetProxyAuthentication(host, port, user, userCapacity, password,
                                             passwordCapacity, callback);
    });
}

bool WebServicesManager::SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                                wchar_t const* password,
                                                BufferTransformCallback callback)
{
    return AskClient(false, [&](auto& client) {
        return client.SetProxyAuthentication(host, port, user, password, callback);
    });
}

bool WebServicesManager::HasProxyInfo() const
{
    return AskClient(false, [&](auto& client) { return client.HasProxyInfo(); });
}

bool WebServicesManager::ClearProxyInfo()
{
    return AskClient(false, [&](auto& client) { return client.ClearProxyInfo(); });
}

void WebServicesManager::AddObserver(IWebServicesObserver* observer)
{
    AskClient([&](auto& client) { client.AddObserver(observer); });
}

void WebServicesManager::RemoveObserver(IWebServicesObserver* observer)
{
    AskClient([&](auto& client) { client.RemoveObserver(observer); });
}

bool WebServicesManager::HasEvent() const
{
    return AskClient(false, [&](auto& client) { return client.HasEvent(); });
}

bool WebServicesManager::DispatchEvent()
{
    return AskClient(false, [&](auto& client) { return client.DispatchEvent(); });
}

bool WebServicesManager::IsOAuth2Enabled() const
{
    return AskClient(false, [&](auto& client) { return client.IsOAuth2Enabled(); });
}

bool WebServicesManager::EnableOAuth2(OAuth2TokenSpec const& spec)
{
    return AskClient(false,
                     [&](auto& client) { return client.EnableOAuth2(SpecText(spec).c_str()); });
}

bool WebServicesManager::EnableOAuth2(bool enable)
{
    return AskClient(false, [&](auto& client) { return client.EnableOAuth2(enable); });
}

bool WebServicesManager::DisableOAuth2()
{
    return AskClient(false, [&](auto& client) { return client.DisableOAuth2(); });
}

bool WebServicesManager::GetOAuth2AccessToken(OAuth2TokenSpec const& spec, OAuth2Token& token,
                                              BufferTransformCallback callback, bool flag)
{
    return AskClient(false, [&](auto& client) {
        char* text = nullptr;
        // A text that comes with a refusal is neither read nor released.
        if (!client.GetOAuth2AccessToken(SpecText(spec).c_str(), text, callback, flag))
            return false;
        PluginText const owned(text);
        return text != nullptr && SSOServicesPrivate::JsonToOAuth2Token(text, token);
    });
}

int WebServicesManager::GetOAuth2AccessToken(wchar_t* buffer, int capacity,
                                             BufferTransformCallback callback, bool flag)
{
    return AskClient(0, [&](auto& client) {
        return client.GetOAuth2AccessToken(buffer, capacity, callback, flag);
    });
}

bool WebServicesManager::RefreshOAuth2Token(OAuth2TokenSpec const& spec, bool flag)
{
    return AskClient(false, [&](auto& client) {
        return client.RefreshOAuth2Token(SpecText(spec).c_str(), flag);
    });
}

bool WebServicesManager::RefreshOAuth2Token(bool flag)
{
    return AskClient(false, [&](auto& client) { return client.RefreshOAuth2Token(flag); });
}

bool WebServicesManager::IsOAuth2TokenExpired(OAuth2TokenSpec const& spec) const
{
    return AskClient(
        false, [&](auto& client) { return client.IsOAuth2TokenExpired(SpecText(spec).c_str()); });
}

bool WebServicesManager::IsOAuth2TokenExpired() const
{
    return AskClient(false, [&](auto& client) { return client.IsOAuth2TokenExpired(); });
}

unsigned int WebServicesManager::GetOAuth2TokenExpiryDate(OAuth2TokenSpec const& spec) const
{
    return AskClient(
        0, [&](auto& client) { return client.GetOAuth2TokenExpiryDate(SpecText(spec).c_str()); });
}

unsigned int WebServicesManager::GetOAuth2TokenExpiryDate() const
{
    return AskClient(0, [&](auto& client) { return client.GetOAuth2TokenExpiryDate(); });
}

bool WebServicesManager::IsOAuth2TokenAvailable(OAuth2TokenSpec const& spec) const
{
    return AskClient(
        false, [&](auto& client) { return client.IsOAuth2TokenAvailable(SpecText(spec).c_str()); });
}

bool WebServicesManager::IsOAuth2TokenAvailable() const
{
    return AskClient(false, [&](auto& client) { return client.IsOAuth2TokenAvailable(); });
}

} // namespace Halvorix::WebServices
