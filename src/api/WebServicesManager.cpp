#include <WebServicesManager.h>

#include <atomic>
#include <string>

#include <WebServicesConfiguration.h>
#include "api/InitializeCount.h"
#include "api/Plugin.h"
#include "api/SpecText.h"
#include "discovery/PathText.h"
#include "host/SupportFileSearchPaths.h"

namespace Halvorix::WebServices {

using namespace SSOServices;

namespace {

InitializeCount initializations;
std::atomic<WebServicesManager*> instance{nullptr};

} // namespace

WebServicesManager::WebServicesManager() : fallbackConfiguration(new WebServicesConfiguration) {}

WebServicesManager::~WebServicesManager() { delete fallbackConfiguration; }

bool WebServicesManager::Initialize() { return Initialize(false); }

bool WebServicesManager::Initialize(bool flag)
{
    if (initializations.Add() && instance == nullptr) {
        if (auto const module = Plugin<ISSOClientModule>())
            module->Initialize(flag, false);
        instance = new WebServicesManager;
    }
    return true;
}

bool WebServicesManager::Initialize(bool flag, bool) { return Initialize(flag); }

bool WebServicesManager::Initialize(OAuth2TokenSpec const& spec)
{
    if (initializations.Add() && instance == nullptr) {
        std::string const text = SpecText(spec);
        if (auto const module = Plugin<ISSOClientModule>())
            module->Initialize(text.c_str());
        instance = new WebServicesManager;
    }
    return true;
}

bool WebServicesManager::Uninitialize()
{
    if (initializations.Remove()) {
        delete instance.exchange(nullptr);
        if (auto const module = Plugin<ISSOClientModule>())
            module->Uninitialize();
        initializations.Reset();
    }
    return true;
}

WebServicesManager* WebServicesManager::GetInstance() { return instance; }

bool WebServicesManager::IsInitialized() { return initializations.IsAny(); }

int WebServicesManager::GetSupportFileSearchPaths(wchar_t* buffer, int capacity)
{
    auto const module = Plugin<ISSOClientModule>();
    return module ? module->GetSupportFileSearchPaths(buffer, capacity) : 0;
}

void WebServicesManager::SetSupportFileSearchPaths(wchar_t const* paths)
{
    // Stored first: the next step may be the load, which reads the list.
    StoreSupportFileSearchPaths(SplitSupportPathList(paths));
    if (auto const module = Plugin<ISSOClientModule>())
        module->SetSupportFileSearchPaths(paths);
}

// EnableLog, IsLogEnabled and SetCachePath have no function, on purpose.
void WebServicesManager::EnableLog(bool) {}

bool WebServicesManager::IsLogEnabled() const { return true; }

void WebServicesManager::SetCachePath(wchar_t const*) {}

WebServicesConfiguration const& WebServicesManager::GetConfiguration() const
{
    // The object is looked at only without a plugin: there may be none before Initialize.
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetConfiguration() : *fallbackConfiguration;
}

bool WebServicesManager::SetConfiguration(WebServicesConfiguration const& configuration)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->SetConfiguration(configuration) : false;
}

int WebServicesManager::GetCachePath(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetCachePath(buffer, capacity) : 0;
}

bool WebServicesManager::IsCacheEnabled(CacheType type) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsCacheEnabled(type) : false;
}

void WebServicesManager::EnableCache(CacheType type, bool enable)
{
    if (auto const client = Plugin<ISSOClient>())
        client->EnableCache(type, enable);
}

bool WebServicesManager::IsCacheAvailable(CacheType type) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsCacheAvailable(type) : false;
}

void WebServicesManager::InvalidateCache(CacheType type)
{
    if (auto const client = Plugin<ISSOClient>())
        client->InvalidateCache(type);
}

ServiceEntitlement WebServicesManager::GetServiceEntitlement(wchar_t const* service, wchar_t*& text)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetServiceEntitlement(service, text) : ServiceEntitlement{};
}

ServiceEntitlement WebServicesManager::GetServiceEntitlement(wchar_t const* service)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetServiceEntitlement(service) : ServiceEntitlement{};
}

bool WebServicesManager::GetServiceEntitlementEx(wchar_t*& text)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetServiceEntitlementEx(text) : false;
}

bool WebServicesManager::GetServiceEntitlementEx(wchar_t const* service, wchar_t*& text)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetServiceEntitlementEx(service, text) : false;
}

int WebServicesManager::GetLoginStateFile(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetLoginStateFile(buffer, capacity) : 0;
}

int WebServicesManager::GetUserNameW(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetUserNameW(buffer, capacity) : 0;
}

int WebServicesManager::GetLoginUserName(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetLoginUserName(buffer, capacity) : 0;
}

int WebServicesManager::GetUserId(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetUserId(buffer, capacity) : 0;
}

int WebServicesManager::GetUserEmail(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetUserEmail(buffer, capacity) : 0;
}

int WebServicesManager::GetUserFirstName(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetUserFirstName(buffer, capacity) : 0;
}

int WebServicesManager::GetUserLastName(wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetUserLastName(buffer, capacity) : 0;
}

bool WebServicesManager::GetUserInfo(wchar_t*& info)
{
    info = nullptr;
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetUserInfo(info) : false;
}

bool WebServicesManager::IsLoggedIn() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsLoggedIn() : false;
}

unsigned int WebServicesManager::GetLoginExpiryDate() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetLoginExpiryDate() : 0;
}

bool WebServicesManager::IsLoginExpired() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsLoginExpired() : false;
}

bool WebServicesManager::IsLoginValid() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsLoginValid() : false;
}

bool WebServicesManager::IsSSOEnabledForAllUsers() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsSSOEnabledForAllUsers() : false;
}

int WebServicesManager::GetLdapDomainKey(wchar_t* buffer, int capacity)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetLdapDomainKey(buffer, capacity) : 0;
}

bool WebServicesManager::GetCloudStorageQuota(long long& first, long long& second) const
{
    first = 0;
    second = 0;
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetCloudStorageQuota(first, second) : false;
}

bool WebServicesManager::InitiateLogin(wchar_t const* text, wchar_t* buffer, int capacity,
                                       LoginErrorEx& error, int& value)
{
    error = LoginErrorEx::Preset;
    value = 0;
    auto const client = Plugin<ISSOClient>();
    return client ? client->InitiateLogin(text, buffer, capacity, error, value) : false;
}

bool WebServicesManager::InitiateLogin(wchar_t const* text, int number, wchar_t* buffer,
                                       int capacity, LoginError& error, int& value)
{
    error = LoginError::Preset;
    value = 0;
    auto const client = Plugin<ISSOClient>();
    return client ? client->InitiateLogin(text, number, buffer, capacity, error, value) : false;
}

bool WebServicesManager::InitiateLogin(wchar_t* buffer, int capacity, LoginError& error, int& value)
{
    error = LoginError::Preset;
    value = 0;
    auto const client = Plugin<ISSOClient>();
    return client ? client->InitiateLogin(buffer, capacity, error, value) : false;
}

bool WebServicesManager::InitiateLogin(wchar_t* buffer, int capacity)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->InitiateLogin(buffer, capacity) : false;
}

bool WebServicesManager::CompleteLogin()
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->CompleteLogin() : false;
}

bool WebServicesManager::RestoreLogin()
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->RestoreLogin() : false;
}

bool WebServicesManager::Logout()
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->Logout() : false;
}

bool WebServicesManager::CompleteLogout()
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->CompleteLogout() : false;
}

bool WebServicesManager::IsTokenAvailable() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsTokenAvailable() : false;
}

int WebServicesManager::GetAccessToken(wchar_t* buffer, int capacity, bool flag)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetAccessToken(buffer, capacity, flag) : 0;
}

int WebServicesManager::GetAccessToken(wchar_t* buffer, int capacity)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetAccessToken(buffer, capacity) : 0;
}

unsigned int WebServicesManager::GetTokenExpiryDate() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetTokenExpiryDate() : 0;
}

bool WebServicesManager::IsTokenExpired() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsTokenExpired() : false;
}

bool WebServicesManager::RefreshToken(bool flag)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->RefreshToken(flag) : false;
}

int WebServicesManager::GetLoginCookie(unsigned char*& cookie)
{
    cookie = nullptr;
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetLoginCookie(cookie) : 0;
}

wchar_t* WebServicesManager::SignRequest(wchar_t const* url, RequestParam const* params,
                                         int paramCount, HttpMethod method, ParsingMode mode,
                                         wchar_t const* first, wchar_t const* second,
                                         BufferTransformCallback callback)
{
    auto const client = Plugin<ISSOClient>();
    return client
               ? client->SignRequest(url, params, paramCount, method, mode, first, second, callback)
               : nullptr;
}

wchar_t* WebServicesManager::SignUrlForBrowser(wchar_t const* url, bool flag,
                                               BufferTransformCallback callback)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->SignUrlForBrowser(url, flag, callback) : nullptr;
}

Server WebServicesManager::GetServer() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetServer() : Server{};
}

bool WebServicesManager::SetServer(Server server)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->SetServer(server) : false;
}

int WebServicesManager::GetUrl(WebServicesUrlCode code, wchar_t* buffer, int capacity) const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetUrl(code, buffer, capacity) : 0;
}

bool WebServicesManager::GetProxyAuthenticationDialogText(wchar_t* title, int titleCapacity,
                                                          wchar_t* text, int textCapacity)
{
    auto const client = Plugin<ISSOClient>();
    return client
               ? client->GetProxyAuthenticationDialogText(title, titleCapacity, text, textCapacity)
               : false;
}

void WebServicesManager::SetProxyAuthenticationDialogText(wchar_t const* title, wchar_t const* text)
{
    if (auto const client = Plugin<ISSOClient>())
        client->SetProxyAuthenticationDialogText(title, text);
}

bool WebServicesManager::HasProxyAuthentication(wchar_t const* host, int port)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->HasProxyAuthentication(host, port) : false;
}

bool WebServicesManager::GetProxyAuthentication(wchar_t const* host, int port, wchar_t* user,
                                                int userCapacity, wchar_t* password,
                                                int passwordCapacity,
                                                BufferTransformCallback callback)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetProxyAuthentication(host, port, user, userCapacity, password,
                                                   passwordCapacity, callback)
                  : false;
}

bool WebServicesManager::SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                                wchar_t const* password,
                                                BufferTransformCallback callback)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->SetProxyAuthentication(host, port, user, password, callback) : false;
}

bool WebServicesManager::HasProxyInfo() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->HasProxyInfo() : false;
}

bool WebServicesManager::ClearProxyInfo()
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->ClearProxyInfo() : false;
}

void WebServicesManager::AddObserver(IWebServicesObserver* observer)
{
    if (auto const client = Plugin<ISSOClient>())
        client->AddObserver(observer);
}

void WebServicesManager::RemoveObserver(IWebServicesObserver* observer)
{
    if (auto const client = Plugin<ISSOClient>())
        client->RemoveObserver(observer);
}

bool WebServicesManager::HasEvent() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->HasEvent() : false;
}

bool WebServicesManager::DispatchEvent()
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->DispatchEvent() : false;
}

bool WebServicesManager::IsOAuth2Enabled() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsOAuth2Enabled() : false;
}

bool WebServicesManager::EnableOAuth2(bool enable)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->EnableOAuth2(enable) : false;
}

bool WebServicesManager::DisableOAuth2()
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->DisableOAuth2() : false;
}

int WebServicesManager::GetOAuth2AccessToken(wchar_t* buffer, int capacity,
                                             BufferTransformCallback callback, bool flag)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetOAuth2AccessToken(buffer, capacity, callback, flag) : 0;
}

bool WebServicesManager::RefreshOAuth2Token(bool flag)
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->RefreshOAuth2Token(flag) : false;
}

bool WebServicesManager::IsOAuth2TokenExpired() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsOAuth2TokenExpired() : false;
}

unsigned int WebServicesManager::GetOAuth2TokenExpiryDate() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->GetOAuth2TokenExpiryDate() : 0;
}

bool WebServicesManager::IsOAuth2TokenAvailable() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsOAuth2TokenAvailable() : false;
}

} // namespace Halvorix::WebServices
