#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <WebServicesConfiguration.h>

#include "Plugin.h"

/// @file
/// A class for each interface, whose operations give the answers that a host gets without a
/// plugin: false, 0, empty, a null pointer. Derive from these and write the operations that
/// you have. Setters store nothing.
///
/// If you override one of several overloads, keep the others visible:
/// `using SSOClientDefaults::GetOAuth2AccessToken;`

namespace Halvorix::WebServices {

/// Encrypts and decrypts nothing: every operation fails.
class RsaCryptorDefaults : public IRsaCryptor {
public:
    int GetMaxBlockSize() override { return 0; }
    bool RsaEncrypt(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                    unsigned long long*) override
    {
        return false;
    }
    bool RsaDecrypt(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                    unsigned long long*) override
    {
        return false;
    }
    bool EncryptBuffer(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                       unsigned long long*) override
    {
        return false;
    }
    bool DecryptBuffer(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                       unsigned long long*) override
    {
        return false;
    }
};

} // namespace Halvorix::WebServices

namespace Halvorix::SSOServices {

/// Offers no interface.
class SSOClientFactoryDefaults : public ISSOClientFactory {
public:
    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override { return nullptr; }
    std::shared_ptr<ISSOClientModule> GetSSOClientModule() override { return nullptr; }
    std::shared_ptr<ISSOClient> GetSSOClient() override { return nullptr; }
    std::shared_ptr<ISSOClientUI> GetSSOClientUI() override { return nullptr; }
    std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() override { return nullptr; }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override { return nullptr; }
};

/// Has no logger.
class SSOLogManagerDefaults : public ISSOLogManager {
public:
    std::shared_ptr<ILogger> GetLogger(std::wstring) override { return nullptr; }
};

/// Drops every line.
class LoggerDefaults : public ILogger {
public:
    void WriteLine(wchar_t const*, Log::LogLevel) override {}
};

/// Has no cryptor, no paths and no name.
class SSOClientModuleDefaults : public ISSOClientModule {
public:
    void Initialize(char const*) override {}
    void Initialize(bool, bool) override {}
    void Uninitialize() override {}
    void InitializeUI(char const*) override {}
    void InitializeUI(bool, bool) override {}
    void UninitializeUI() override {}
    void SetOpenSslModule(wchar_t const*) override {}
    std::shared_ptr<WebServices::IRsaCryptor> GetRsaCryptor() override { return nullptr; }
    void SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor>) override {}
    int GetSupportFileSearchPaths(wchar_t*, int) override { return 0; }
    void SetSupportFileSearchPaths(wchar_t const*) override {}
    int GetProductName(wchar_t*, int) override { return 0; }
    void SetProductName(wchar_t const*) override {}
};

/// Nobody is signed in, and nobody can be.
class SSOClientDefaults : public ISSOClient {
public:
    /// An empty one. Its code is in the library, which hxsso_add_plugin links.
    WebServices::WebServicesConfiguration const& GetConfiguration() override
    {
        // Never destroyed: hosts may hold it to the end of the process.
        static auto const& configuration = *new WebServices::WebServicesConfiguration;
        return configuration;
    }
    bool SetConfiguration(WebServices::WebServicesConfiguration const&) override { return false; }
    int GetCachePath(wchar_t*, int) override { return 0; }
    WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const*, wchar_t*&) override
    {
        return {};
    }
    WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const*) override { return {}; }
    bool GetServiceEntitlementEx(wchar_t*&) override { return false; }
    bool GetServiceEntitlementEx(wchar_t const*, wchar_t*&) override { return false; }
    int GetLoginStateFile(wchar_t*, int) override { return 0; }
    int GetUserNameW(wchar_t*, int) override { return 0; }
    int GetLoginUserName(wchar_t*, int) override { return 0; }
    int GetUserId(wchar_t*, int) override { return 0; }
    int GetUserEmail(wchar_t*, int) override { return 0; }
    int GetUserFirstName(wchar_t*, int) override { return 0; }
    int GetUserLastName(wchar_t*, int) override { return 0; }
    bool GetUserInfo(wchar_t*&) override { return false; }
    bool IsTokenAvailable() override { return false; }
    int GetAccessToken(wchar_t*, int, bool) override { return 0; }
    int GetAccessToken(wchar_t*, int) override { return 0; }
    bool IsCacheEnabled(WebServices::CacheType) override { return false; }
    void EnableCache(WebServices::CacheType, bool) override {}
    bool IsCacheAvailable(WebServices::CacheType) override { return false; }
    void InvalidateCache(WebServices::CacheType) override {}
    int GetLoginCookie(unsigned char*&) override { return 0; }
    bool IsLoggedIn() override { return false; }
    unsigned int GetTokenExpiryDate() override { return 0; }
    bool IsTokenExpired() override { return false; }
    unsigned int GetLoginExpiryDate() override { return 0; }
    bool IsLoginExpired() override { return false; }
    bool IsLoginValid() override { return false; }
    bool RefreshToken(bool) override { return false; }
    wchar_t* SignRequest(wchar_t const*, WebServices::RequestParam const*, int,
                         WebServices::HttpMethod, WebServices::ParsingMode, wchar_t const*,
                         wchar_t const*, BufferTransformCallback) override
    {
        return nullptr;
    }
    wchar_t* SignUrlForBrowser(wchar_t const*, bool, BufferTransformCallback) override
    {
        return nullptr;
    }
    WebServices::Server GetServer() override { return {}; }
    bool SetServer(WebServices::Server) override { return false; }
    int GetUrl(WebServices::WebServicesUrlCode, wchar_t*, int) override { return 0; }
    bool GetCloudStorageQuota(long long&, long long&) override { return false; }
    bool InitiateLogin(wchar_t const*, wchar_t*, int, WebServices::LoginErrorEx&, int&) override
    {
        return false;
    }
    bool InitiateLogin(wchar_t const*, int, wchar_t*, int, WebServices::LoginError&, int&) override
    {
        return false;
    }
    bool InitiateLogin(wchar_t*, int, WebServices::LoginError&, int&) override { return false; }
    bool InitiateLogin(wchar_t*, int) override { return false; }
    bool CompleteLogin(char const*) override { return false; }
    bool CompleteLogin() override { return false; }
    bool RestoreLogin() override { return false; }
    bool Logout() override { return false; }
    void AddObserver(WebServices::IWebServicesObserver*) override {}
    void RemoveObserver(WebServices::IWebServicesObserver*) override {}
    bool GetProxyAuthenticationDialogText(wchar_t*, int, wchar_t*, int) override { return false; }
    void SetProxyAuthenticationDialogText(wchar_t const*, wchar_t const*) override {}
    bool HasProxyAuthentication(wchar_t const*, int) override { return false; }
    bool GetProxyAuthentication(wchar_t const*, int, wchar_t*, int, wchar_t*, int,
                                BufferTransformCallback) override
    {
        return false;
    }
    bool SetProxyAuthentication(wchar_t const*, int, wchar_t const*, wchar_t const*,
                                BufferTransformCallback) override
    {
        return false;
    }
    bool HasProxyInfo() override { return false; }
    bool ClearProxyInfo() override { return false; }
    bool IsOAuth2Enabled() override { return false; }
    bool EnableOAuth2(char const*) override { return false; }
    bool EnableOAuth2(bool) override { return false; }
    bool GetOAuth2AccessToken(char const*, char*&, BufferTransformCallback, bool) override
    {
        return false;
    }
    int GetOAuth2AccessToken(wchar_t*, int, BufferTransformCallback, bool) override { return 0; }
    bool RefreshOAuth2Token(char const*, bool) override { return false; }
    bool RefreshOAuth2Token(bool) override { return false; }
    bool IsOAuth2TokenExpired(char const*) override { return false; }
    bool IsOAuth2TokenExpired() override { return false; }
    unsigned int GetOAuth2TokenExpiryDate(char const*) override { return 0; }
    unsigned int GetOAuth2TokenExpiryDate() override { return 0; }
    bool IsOAuth2TokenAvailable(char const*) override { return false; }
    bool IsOAuth2TokenAvailable() override { return false; }
    bool IsSSOEnabledForAllUsers() override { return false; }
    int GetLdapDomainKey(wchar_t*, int) override { return 0; }
    bool DispatchEvent() override { return false; }
    bool HasEvent() override { return false; }
    bool DisableOAuth2() override { return false; }
    bool InitiateLogout(wchar_t*, int, char*&, BufferTransformCallback) override { return false; }
    bool CompleteLogout() override { return false; }
};

/// Shows nothing.
class SSOClientUIDefaults : public ISSOClientUI {
public:
    using ISSOClientUI::Login; // keeps the reserved overload visible

    unsigned long long GetHostApplicationWindow() override { return 0; }
    void SetHostApplicationWindow(unsigned long long) override {}
    bool Login(wchar_t const*, wchar_t const*, bool, bool, std::wstring&) override { return false; }
    bool Login(wchar_t const*, wchar_t const*, bool) override { return false; }
    bool Login(wchar_t const*) override { return false; }
    bool Login() override { return false; }
    bool IsLoginInProgress() override { return false; }
    bool Logout() override { return false; }
    bool ShowAccountSettings() override { return false; }
    void AddObserver(WebServicesUI::IWebServicesUIObserver*) override {}
    void RemoveObserver(WebServicesUI::IWebServicesUIObserver*) override {}
};

/// Knows nothing.
class SSOClientPrivateDefaults : public ISSOClientPrivate {
public:
    std::wstring GetLoginInfo(BufferTransformCallback) override { return {}; }
    std::wstring GetUrl(std::wstring) override { return {}; }
    std::wstring GetUrl(WebServices::WebServicesUrlCode) override { return {}; }
    std::map<std::wstring, std::wstring> GetUrlOverrides(WebServices::Server) override
    {
        return {};
    }
    bool SetUrlOverrides(WebServices::Server, std::map<std::wstring, std::wstring> const&) override
    {
        return false;
    }
    bool ClearUrlOverrides(WebServices::Server) override { return false; }
    std::wstring ServerToServerName(WebServices::Server) override { return {}; }
    /// -1, no server.
    WebServices::Server ServerNameToServer(std::wstring) override
    {
        return static_cast<WebServices::Server>(-1);
    }
    std::wstring Encrypt(std::wstring const&) override { return {}; }
    void GetCurrentConfigurationConsumerKey(std::wstring&, std::wstring&) override {}
    std::wstring GetSettingsPath() override { return {}; }
    std::wstring GetLoginStateFile() override { return {}; }
    StdUtil::RetrySchedule GetActiveOAuth2TokenRefreshRetrySchedule() override { return {}; }
    bool SetOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule const&) override
    {
        return false;
    }
    std::wstring GetLoginStateCacheFile(std::wstring, WebServices::Server, bool) override
    {
        return {};
    }
    std::wstring GetLoginStateCacheFile(std::wstring, WebServices::Server) override { return {}; }
    bool RestoreLogin(bool) override { return false; }
    void RaiseEvent(WebServices::WebServicesPrivateCore::WebServicesEvent, bool) override {}
    std::string ToJsonString(WebServices::WebServicesConfiguration const*) override { return {}; }
    bool FromJsonString(WebServices::WebServicesConfiguration*, std::string const&) override
    {
        return false;
    }
    bool Equals(WebServices::WebServicesConfiguration const&,
                WebServices::WebServicesConfiguration const&) override
    {
        return false;
    }
    void LockLoginStateFile() override {}
    void UnlockLoginStateFile() override {}
    bool Ping(std::map<std::string, std::string>&) override { return false; }
    void ClearEventQueue() override {}
    bool FreezeSSOServerProcess(BufferTransformCallback) override { return false; }
    std::chrono::seconds GetKillFrozenServerTimeout() override { return std::chrono::seconds(0); }
    bool SetKillFrozenServerTimeout(std::chrono::seconds) override { return false; }
    std::string GetSessionState() override { return {}; }
};

/// There is no server process, and none can be started.
class SSOServerManagerDefaults : public ISSOServerManager {
public:
    void SetSSOServerAppFiles(wchar_t const*, wchar_t const*) override {}
    // The host's buffer receives an empty text; without a plugin it is not written.
    std::wstring GetSSOServerAppFile() override { return {}; }
    std::wstring GetSSOServerAppExeFile() override { return {}; }
    void SetSSOServerProcessName(char const*) override {}
    int GetSSOServerName(char*, int) override { return 0; }
    void SetSSOServerName(char const*) override {}
    int GetSSOEventServerName(char*, int) override { return 0; }
    bool StartSSOServerProcess(std::vector<std::string> const&, std::chrono::milliseconds,
                               long long&) override
    {
        return false;
    }
    bool StartSSOServerProcess(std::chrono::milliseconds, long long&) override { return false; }
    bool GetSSOServerProcessArguments(std::vector<std::string>&) override { return false; }
    void SetSSOServerProcessArguments(std::vector<std::string> const&) override {}
    bool IsSSOServerProcessRunning(long long&) override { return false; }
    bool IsSSOServerProcessReady() override { return false; }
    bool QuitSSOServerProcess(std::chrono::milliseconds) override { return false; }
    bool QuitAllSSOServerProcesses(std::chrono::milliseconds) override { return false; }
};

} // namespace Halvorix::SSOServices
