#pragma once

#include "plugin/Plugin.h"

// Interfaces that answer everything with nothing, and allocate nothing.
namespace Rig::Quiet {

using namespace Halvorix;
using namespace Halvorix::SSOServices;

/// All but GetConfiguration, whose answer needs the library's own class.
class Client : public ISSOClient {
public:
    bool SetConfiguration(WebServices::WebServicesConfiguration const&) override { return {}; }
    int GetCachePath(wchar_t*, int) override { return {}; }
    WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const*, wchar_t*&) override
    {
        return {};
    }
    WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const*) override { return {}; }
    bool GetServiceEntitlementEx(wchar_t*&) override { return {}; }
    bool GetServiceEntitlementEx(wchar_t const*, wchar_t*&) override { return {}; }
    int GetLoginStateFile(wchar_t*, int) override { return {}; }
    int GetUserNameW(wchar_t*, int) override { return {}; }
    int GetLoginUserName(wchar_t*, int) override { return {}; }
    int GetUserId(wchar_t*, int) override { return {}; }
    int GetUserEmail(wchar_t*, int) override { return {}; }
    int GetUserFirstName(wchar_t*, int) override { return {}; }
    int GetUserLastName(wchar_t*, int) override { return {}; }
    bool GetUserInfo(wchar_t*&) override { return {}; }
    bool IsTokenAvailable() override { return {}; }
    int GetAccessToken(wchar_t*, int, bool) override { return {}; }
    int GetAccessToken(wchar_t*, int) override { return {}; }
    bool IsCacheEnabled(WebServices::CacheType) override { return {}; }
    void EnableCache(WebServices::CacheType, bool) override {}
    bool IsCacheAvailable(WebServices::CacheType) override { return {}; }
    void InvalidateCache(WebServices::CacheType) override {}
    int GetLoginCookie(unsigned char*&) override { return {}; }
    bool IsLoggedIn() override { return {}; }
    unsigned int GetTokenExpiryDate() override { return {}; }
    bool IsTokenExpired() override { return {}; }
    unsigned int GetLoginExpiryDate() override { return {}; }
    bool IsLoginExpired() override { return {}; }
    bool IsLoginValid() override { return {}; }
    bool RefreshToken(bool) override { return {}; }
    wchar_t* SignRequest(wchar_t const*, WebServices::RequestParam const*, int,
                         WebServices::HttpMethod, WebServices::ParsingMode, wchar_t const*,
                         wchar_t const*, BufferTransformCallback) override
    {
        return {};
    }
    wchar_t* SignUrlForBrowser(wchar_t const*, bool, BufferTransformCallback) override
    {
        return {};
    }
    WebServices::Server GetServer() override { return {}; }
    bool SetServer(WebServices::Server) override { return {}; }
    int GetUrl(WebServices::WebServicesUrlCode, wchar_t*, int) override { return {}; }
    bool GetCloudStorageQuota(long long&, long long&) override { return {}; }
    bool InitiateLogin(wchar_t const*, wchar_t*, int, WebServices::LoginErrorEx&, int&) override
    {
        return {};
    }
    bool InitiateLogin(wchar_t const*, int, wchar_t*, int, WebServices::LoginError&, int&) override
    {
        return {};
    }
    bool InitiateLogin(wchar_t*, int, WebServices::LoginError&, int&) override { return {}; }
    bool InitiateLogin(wchar_t*, int) override { return {}; }
    bool CompleteLogin(char const*) override { return {}; }
    bool CompleteLogin() override { return {}; }
    bool RestoreLogin() override { return {}; }
    bool Logout() override { return {}; }
    void AddObserver(WebServices::IWebServicesObserver*) override {}
    void RemoveObserver(WebServices::IWebServicesObserver*) override {}
    bool GetProxyAuthenticationDialogText(wchar_t*, int, wchar_t*, int) override { return {}; }
    void SetProxyAuthenticationDialogText(wchar_t const*, wchar_t const*) override {}
    bool HasProxyAuthentication(wchar_t const*, int) override { return {}; }
    bool GetProxyAuthentication(wchar_t const*, int, wchar_t*, int, wchar_t*, int,
                                BufferTransformCallback) override
    {
        return {};
    }
    bool SetProxyAuthentication(wchar_t const*, int, wchar_t const*, wchar_t const*,
                                BufferTransformCallback) override
    {
        return {};
    }
    bool HasProxyInfo() override { return {}; }
    bool ClearProxyInfo() override { return {}; }
    bool IsOAuth2Enabled() override { return {}; }
    bool EnableOAuth2(char const*) override { return {}; }
    bool EnableOAuth2(bool) override { return {}; }
    bool GetOAuth2AccessToken(char const*, char*&, BufferTransformCallback, bool) override
    {
        return {};
    }
    int GetOAuth2AccessToken(wchar_t*, int, BufferTransformCallback, bool) override { return {}; }
    bool RefreshOAuth2Token(char const*, bool) override { return {}; }
    bool RefreshOAuth2Token(bool) override { return {}; }
    bool IsOAuth2TokenExpired(char const*) override { return {}; }
    bool IsOAuth2TokenExpired() override { return {}; }
    unsigned int GetOAuth2TokenExpiryDate(char const*) override { return {}; }
    unsigned int GetOAuth2TokenExpiryDate() override { return {}; }
    bool IsOAuth2TokenAvailable(char const*) override { return {}; }
    bool IsOAuth2TokenAvailable() override { return {}; }
    bool IsSSOEnabledForAllUsers() override { return {}; }
    int GetLdapDomainKey(wchar_t*, int) override { return {}; }
    bool DispatchEvent() override { return {}; }
    bool HasEvent() override { return {}; }
    bool DisableOAuth2() override { return {}; }
    bool InitiateLogout(wchar_t*, int, char*&, BufferTransformCallback) override { return {}; }
    bool CompleteLogout() override { return {}; }
};

class ServerManager : public ISSOServerManager {
public:
    void SetSSOServerAppFiles(wchar_t const*, wchar_t const*) override {}
    std::wstring GetSSOServerAppFile() override { return {}; }
    std::wstring GetSSOServerAppExeFile() override { return {}; }
    void SetSSOServerProcessName(char const*) override {}
    int GetSSOServerName(char*, int) override { return {}; }
    void SetSSOServerName(char const*) override {}
    int GetSSOEventServerName(char*, int) override { return {}; }
    bool StartSSOServerProcess(std::vector<std::string> const&, std::chrono::milliseconds,
                               long long&) override
    {
        return {};
    }
    bool StartSSOServerProcess(std::chrono::milliseconds, long long&) override { return {}; }
    bool GetSSOServerProcessArguments(std::vector<std::string>&) override { return {}; }
    void SetSSOServerProcessArguments(std::vector<std::string> const&) override {}
    bool IsSSOServerProcessRunning(long long&) override { return {}; }
    bool IsSSOServerProcessReady() override { return {}; }
    bool QuitSSOServerProcess(std::chrono::milliseconds) override { return {}; }
    bool QuitAllSSOServerProcesses(std::chrono::milliseconds) override { return {}; }
};

class Module : public ISSOClientModule {
public:
    void Initialize(char const*) override {}
    void Initialize(bool, bool) override {}
    void Uninitialize() override {}
    void InitializeUI(char const*) override {}
    void InitializeUI(bool, bool) override {}
    void UninitializeUI() override {}
    void SetOpenSslModule(wchar_t const*) override {}
    std::shared_ptr<WebServices::IRsaCryptor> GetRsaCryptor() override { return {}; }
    void SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor>) override {}
    int GetSupportFileSearchPaths(wchar_t*, int) override { return {}; }
    void SetSupportFileSearchPaths(wchar_t const*) override {}
    int GetProductName(wchar_t*, int) override { return {}; }
    void SetProductName(wchar_t const*) override {}
};

} // namespace Rig::Quiet
