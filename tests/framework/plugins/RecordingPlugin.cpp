// A plugin that writes down every call with its arguments and otherwise does
// what the test's script says.

#include <string>

#include <WebServicesConfiguration.h>
#include <plugin/Plugin.h>
#include "framework/plugins/Call.h"
#include "framework/plugins/FreshCryptor.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using Rig::Call;

namespace {

class Logger : public ILogger {
public:
    void WriteLine(wchar_t const* message, Log::LogLevel level) override
    {
        Call("ILogger::WriteLine", message, level);
    }
};

class LogManager : public ISSOLogManager {
public:
    std::shared_ptr<ILogger> GetLogger(std::wstring name) override
    {
        if (Call("ISSOLogManager::GetLogger", name).IsEmpty())
            return nullptr;
        return std::make_shared<Logger>();
    }
};

class Module : public ISSOClientModule {
public:
    void Initialize(char const* spec) override { Call("ISSOClientModule::Initialize", spec); }
    void Initialize(bool first, bool second) override
    {
        Call("ISSOClientModule::Initialize", first, second);
    }
    void Uninitialize() override { Call("ISSOClientModule::Uninitialize"); }
    void InitializeUI(char const* spec) override { Call("ISSOClientModule::InitializeUI", spec); }
    void InitializeUI(bool first, bool second) override
    {
        Call("ISSOClientModule::InitializeUI", first, second);
    }
    void UninitializeUI() override { Call("ISSOClientModule::UninitializeUI"); }
    void SetOpenSslModule(wchar_t const* path) override
    {
        Call("ISSOClientModule::SetOpenSslModule", path);
    }
    std::shared_ptr<WebServices::IRsaCryptor> GetRsaCryptor() override
    {
        if (Call("ISSOClientModule::GetRsaCryptor").IsFresh())
            return std::make_shared<Rig::FreshCryptor>();
        return cryptor;
    }
    void SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor> newCryptor) override
    {
        if (!Call("ISSOClientModule::SetRsaCryptor", newCryptor.get()).IsEmpty())
            cryptor = newCryptor;
    }
    int GetSupportFileSearchPaths(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClientModule::GetSupportFileSearchPaths", capacity).Fill(buffer, capacity);
    }
    void SetSupportFileSearchPaths(wchar_t const* paths) override
    {
        Call("ISSOClientModule::SetSupportFileSearchPaths", paths);
    }
    int GetProductName(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClientModule::GetProductName", capacity).Fill(buffer, capacity);
    }
    void SetProductName(wchar_t const* name) override
    {
        Call("ISSOClientModule::SetProductName", name);
    }

private:
    std::shared_ptr<WebServices::IRsaCryptor> cryptor;
};

std::wstring ConsumerKeyOf(WebServices::WebServicesConfiguration const& configuration)
{
    wchar_t key[64] = {};
    configuration.GetConsumerKey(key, 64);
    return key;
}

class Client : public ISSOClient {
public:
    WebServices::WebServicesConfiguration const& GetConfiguration() override
    {
        Call const call("ISSOClient::GetConfiguration");
        configuration.SetConsumerKey(call.WideText().c_str());
        return configuration;
    }
    bool SetConfiguration(WebServices::WebServicesConfiguration const& given) override
    {
        return Call("ISSOClient::SetConfiguration", ConsumerKeyOf(given), &given).Answer(true);
    }
    int GetCachePath(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetCachePath", capacity).Fill(buffer, capacity);
    }
    WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const* service,
                                                          wchar_t*& text) override
    {
        Call const call("ISSOClient::GetServiceEntitlement", service, text);
        text = call.NewWideText();
        return call.Answer(static_cast<WebServices::ServiceEntitlement>(3));
    }
    WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const* service) override
    {
        return Call("ISSOClient::GetServiceEntitlement", service)
            .Answer(static_cast<WebServices::ServiceEntitlement>(4));
    }
    bool GetServiceEntitlementEx(wchar_t*& text) override
    {
        Call const call("ISSOClient::GetServiceEntitlementEx", text);
        text = call.NewWideText();
        return call.Answer(true);
    }
    bool GetServiceEntitlementEx(wchar_t const* service, wchar_t*& text) override
    {
        Call const call("ISSOClient::GetServiceEntitlementEx", service, text);
        text = call.NewWideText();
        return call.Answer(true);
    }
    int GetLoginStateFile(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetLoginStateFile", capacity).Fill(buffer, capacity);
    }
    int GetUserNameW(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetUserNameW", capacity).Fill(buffer, capacity);
    }
    int GetLoginUserName(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetLoginUserName", capacity).Fill(buffer, capacity);
    }
    int GetUserId(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetUserId", capacity).Fill(buffer, capacity);
    }
    int GetUserEmail(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetUserEmail", capacity).Fill(buffer, capacity);
    }
    int GetUserFirstName(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetUserFirstName", capacity).Fill(buffer, capacity);
    }
    int GetUserLastName(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetUserLastName", capacity).Fill(buffer, capacity);
    }
    bool GetUserInfo(wchar_t*& info) override
    {
        Call const call("ISSOClient::GetUserInfo", info);
        info = call.NewWideText();
        return call.Answer(true);
    }
    bool IsTokenAvailable() override { return Call("ISSOClient::IsTokenAvailable").Answer(true); }
    int GetAccessToken(wchar_t* buffer, int capacity, bool flag) override
    {
        return Call("ISSOClient::GetAccessToken", capacity, flag).Fill(buffer, capacity);
    }
    int GetAccessToken(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetAccessToken", capacity).Fill(buffer, capacity);
    }
    bool IsCacheEnabled(WebServices::CacheType type) override
    {
        return Call("ISSOClient::IsCacheEnabled", type).Answer(true);
    }
    void EnableCache(WebServices::CacheType type, bool enable) override
    {
        Call("ISSOClient::EnableCache", type, enable);
    }
    bool IsCacheAvailable(WebServices::CacheType type) override
    {
        return Call("ISSOClient::IsCacheAvailable", type).Answer(true);
    }
    void InvalidateCache(WebServices::CacheType type) override
    {
        Call("ISSOClient::InvalidateCache", type);
    }
    int GetLoginCookie(unsigned char*& cookie) override
    {
        Call const call("ISSOClient::GetLoginCookie", cookie);
        cookie = reinterpret_cast<unsigned char*>(call.NewText());
        return call.Answer(26);
    }
    bool IsLoggedIn() override { return Call("ISSOClient::IsLoggedIn").Answer(true); }
    unsigned int GetTokenExpiryDate() override
    {
        return Call("ISSOClient::GetTokenExpiryDate").Answer(4000000001u);
    }
    bool IsTokenExpired() override { return Call("ISSOClient::IsTokenExpired").Answer(true); }
    unsigned int GetLoginExpiryDate() override
    {
        return Call("ISSOClient::GetLoginExpiryDate").Answer(4000000002u);
    }
    bool IsLoginExpired() override { return Call("ISSOClient::IsLoginExpired").Answer(true); }
    bool IsLoginValid() override { return Call("ISSOClient::IsLoginValid").Answer(true); }
    bool RefreshToken(bool flag) override
    {
        return Call("ISSOClient::RefreshToken", flag).Answer(true);
    }
    wchar_t* SignRequest(wchar_t const* url, WebServices::RequestParam const* params,
                         int paramCount, WebServices::HttpMethod method,
                         WebServices::ParsingMode mode, wchar_t const* first, wchar_t const* second,
                         BufferTransformCallback callback) override
    {
        return Call("ISSOClient::SignRequest", url, params, paramCount, method, mode, first, second,
                    callback)
            .NewWideText();
    }
    wchar_t* SignUrlForBrowser(wchar_t const* url, bool flag,
                               BufferTransformCallback callback) override
    {
        return Call("ISSOClient::SignUrlForBrowser", url, flag, callback).NewWideText();
    }
    WebServices::Server GetServer() override
    {
        return Call("ISSOClient::GetServer").Answer(static_cast<WebServices::Server>(5));
    }
    bool SetServer(WebServices::Server server) override
    {
        return Call("ISSOClient::SetServer", server).Answer(true);
    }
    int GetUrl(WebServices::WebServicesUrlCode code, wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetUrl", code, capacity).Fill(buffer, capacity);
    }
    bool GetCloudStorageQuota(long long& first, long long& second) override
    {
        Call const call("ISSOClient::GetCloudStorageQuota", first, second);
        first = 5000000001;
        second = 5000000002;
        return call.Answer(true);
    }
    bool InitiateLogin(wchar_t const* text, wchar_t* buffer, int capacity,
                       WebServices::LoginErrorEx& error, int& value) override
    {
        Call const call("ISSOClient::InitiateLogin", text, capacity, error, value);
        call.Fill(buffer, capacity);
        error = static_cast<WebServices::LoginErrorEx>(11);
        value = 12;
        return call.Answer(true);
    }
    bool InitiateLogin(wchar_t const* text, int number, wchar_t* buffer, int capacity,
                       WebServices::LoginError& error, int& value) override
    {
        Call const call("ISSOClient::InitiateLogin", text, number, capacity, error, value);
        call.Fill(buffer, capacity);
        error = static_cast<WebServices::LoginError>(13);
        value = 14;
        return call.Answer(true);
    }
    bool InitiateLogin(wchar_t* buffer, int capacity, WebServices::LoginError& error,
                       int& value) override
    {
        Call const call("ISSOClient::InitiateLogin", capacity, error, value);
        call.Fill(buffer, capacity);
        error = static_cast<WebServices::LoginError>(15);
        value = 16;
        return call.Answer(true);
    }
    bool InitiateLogin(wchar_t* buffer, int capacity) override
    {
        Call const call("ISSOClient::InitiateLogin", capacity);
        call.Fill(buffer, capacity);
        return call.Answer(true);
    }
    bool CompleteLogin(char const* jar) override
    {
        return Call("ISSOClient::CompleteLogin", jar).Answer(true);
    }
    bool CompleteLogin() override { return Call("ISSOClient::CompleteLogin").Answer(true); }
    bool RestoreLogin() override { return Call("ISSOClient::RestoreLogin").Answer(true); }
    bool Logout() override { return Call("ISSOClient::Logout").Answer(true); }
    void AddObserver(WebServices::IWebServicesObserver* observer) override
    {
        Call("ISSOClient::AddObserver", observer);
    }
    void RemoveObserver(WebServices::IWebServicesObserver* observer) override
    {
        Call("ISSOClient::RemoveObserver", observer);
    }
    bool GetProxyAuthenticationDialogText(wchar_t* title, int titleCapacity, wchar_t* text,
                                          int textCapacity) override
    {
        Call const call("ISSOClient::GetProxyAuthenticationDialogText", titleCapacity,
                        textCapacity);
        call.Fill(title, titleCapacity);
        call.Fill(text, textCapacity);
        return call.Answer(true);
    }
    void SetProxyAuthenticationDialogText(wchar_t const* title, wchar_t const* text) override
    {
        Call("ISSOClient::SetProxyAuthenticationDialogText", title, text);
    }
    bool HasProxyAuthentication(wchar_t const* host, int port) override
    {
        return Call("ISSOClient::HasProxyAuthentication", host, port).Answer(true);
    }
    bool GetProxyAuthentication(wchar_t const* host, int port, wchar_t* user, int userCapacity,
                                wchar_t* password, int passwordCapacity,
                                BufferTransformCallback callback) override
    {
        Call const call("ISSOClient::GetProxyAuthentication", host, port, userCapacity,
                        passwordCapacity, callback);
        call.Fill(user, userCapacity);
        call.Fill(password, passwordCapacity);
        return call.Answer(true);
    }
    bool SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                wchar_t const* password, BufferTransformCallback callback) override
    {
        return Call("ISSOClient::SetProxyAuthentication", host, port, user, password, callback)
            .Answer(true);
    }
    bool HasProxyInfo() override { return Call("ISSOClient::HasProxyInfo").Answer(true); }
    bool ClearProxyInfo() override { return Call("ISSOClient::ClearProxyInfo").Answer(true); }
    bool IsOAuth2Enabled() override { return Call("ISSOClient::IsOAuth2Enabled").Answer(true); }
    bool EnableOAuth2(char const* spec) override
    {
        return Call("ISSOClient::EnableOAuth2", spec).Answer(true);
    }
    bool EnableOAuth2(bool enable) override
    {
        return Call("ISSOClient::EnableOAuth2", enable).Answer(true);
    }
    bool GetOAuth2AccessToken(char const* spec, char*& token, BufferTransformCallback callback,
                              bool flag) override
    {
        Call const call("ISSOClient::GetOAuth2AccessToken", spec, token == nullptr, callback, flag);
        token = call.NewText();
        return call.Answer(true);
    }
    int GetOAuth2AccessToken(wchar_t* buffer, int capacity, BufferTransformCallback callback,
                             bool flag) override
    {
        return Call("ISSOClient::GetOAuth2AccessToken", capacity, callback, flag)
            .Fill(buffer, capacity);
    }
    bool RefreshOAuth2Token(char const* spec, bool flag) override
    {
        return Call("ISSOClient::RefreshOAuth2Token", spec, flag).Answer(true);
    }
    bool RefreshOAuth2Token(bool flag) override
    {
        return Call("ISSOClient::RefreshOAuth2Token", flag).Answer(true);
    }
    bool IsOAuth2TokenExpired(char const* spec) override
    {
        return Call("ISSOClient::IsOAuth2TokenExpired", spec).Answer(true);
    }
    bool IsOAuth2TokenExpired() override
    {
        return Call("ISSOClient::IsOAuth2TokenExpired").Answer(true);
    }
    unsigned int GetOAuth2TokenExpiryDate(char const* spec) override
    {
        return Call("ISSOClient::GetOAuth2TokenExpiryDate", spec).Answer(4000000003u);
    }
    unsigned int GetOAuth2TokenExpiryDate() override
    {
        return Call("ISSOClient::GetOAuth2TokenExpiryDate").Answer(4000000004u);
    }
    bool IsOAuth2TokenAvailable(char const* spec) override
    {
        return Call("ISSOClient::IsOAuth2TokenAvailable", spec).Answer(true);
    }
    bool IsOAuth2TokenAvailable() override
    {
        return Call("ISSOClient::IsOAuth2TokenAvailable").Answer(true);
    }
    bool IsSSOEnabledForAllUsers() override
    {
        return Call("ISSOClient::IsSSOEnabledForAllUsers").Answer(true);
    }
    int GetLdapDomainKey(wchar_t* buffer, int capacity) override
    {
        return Call("ISSOClient::GetLdapDomainKey", capacity).Fill(buffer, capacity);
    }
    bool DispatchEvent() override { return Call("ISSOClient::DispatchEvent").Answer(true); }
    bool HasEvent() override { return Call("ISSOClient::HasEvent").Answer(true); }
    bool DisableOAuth2() override { return Call("ISSOClient::DisableOAuth2").Answer(true); }
    bool InitiateLogout(wchar_t* buffer, int capacity, char*& jar,
                        BufferTransformCallback callback) override
    {
        Call const call("ISSOClient::InitiateLogout", std::wstring(buffer), capacity,
                        jar == nullptr, callback);
        jar = call.NewText();
        return call.Answer(true);
    }
    bool CompleteLogout() override { return Call("ISSOClient::CompleteLogout").Answer(true); }

private:
    WebServices::WebServicesConfiguration configuration;
};

class ClientUI : public ISSOClientUI {
public:
    using ISSOClientUI::Login;

    unsigned long long GetHostApplicationWindow() override
    {
        return Call("ISSOClientUI::GetHostApplicationWindow").Answer(0xFFFFFFFF0Full);
    }
    void SetHostApplicationWindow(unsigned long long window) override
    {
        Call("ISSOClientUI::SetHostApplicationWindow", window);
    }
    bool Login(wchar_t const* first, wchar_t const* second, bool flag, bool secondFlag,
               std::wstring& text) override
    {
        Call const call("ISSOClientUI::Login", first, second, flag, secondFlag, text);
        text = call.WideText();
        return call.Answer(true);
    }
    bool Login(wchar_t const* first, wchar_t const* second, bool flag) override
    {
        return Call("ISSOClientUI::Login", first, second, flag).Answer(true);
    }
    bool Login(wchar_t const* text) override
    {
        return Call("ISSOClientUI::Login", text).Answer(true);
    }
    bool Login() override { return Call("ISSOClientUI::Login").Answer(true); }
    bool IsLoginInProgress() override
    {
        return Call("ISSOClientUI::IsLoginInProgress").Answer(true);
    }
    bool Logout() override { return Call("ISSOClientUI::Logout").Answer(true); }
    bool ShowAccountSettings() override
    {
        return Call("ISSOClientUI::ShowAccountSettings").Answer(true);
    }
    void AddObserver(WebServicesUI::IWebServicesUIObserver* observer) override
    {
        Call("ISSOClientUI::AddObserver", observer);
    }
    void RemoveObserver(WebServicesUI::IWebServicesUIObserver* observer) override
    {
        Call("ISSOClientUI::RemoveObserver", observer);
    }
};

class ClientPrivate : public ISSOClientPrivate {
public:
    std::wstring GetLoginInfo(BufferTransformCallback callback) override
    {
        return Call("ISSOClientPrivate::GetLoginInfo", callback).WideText();
    }
    std::wstring GetUrl(std::wstring name) override
    {
        return Call("ISSOClientPrivate::GetUrl", name).WideText();
    }
    std::wstring GetUrl(WebServices::WebServicesUrlCode code) override
    {
        return Call("ISSOClientPrivate::GetUrl", code).WideText();
    }
    std::map<std::wstring, std::wstring> GetUrlOverrides(WebServices::Server server) override
    {
        return {{L"name", Call("ISSOClientPrivate::GetUrlOverrides", server).WideText()}};
    }
    bool SetUrlOverrides(WebServices::Server server,
                         std::map<std::wstring, std::wstring> const& overrides) override
    {
        return Call("ISSOClientPrivate::SetUrlOverrides", server, overrides).Answer(true);
    }
    bool ClearUrlOverrides(WebServices::Server server) override
    {
        return Call("ISSOClientPrivate::ClearUrlOverrides", server).Answer(true);
    }
    std::wstring ServerToServerName(WebServices::Server server) override
    {
        return Call("ISSOClientPrivate::ServerToServerName", server).WideText();
    }
    WebServices::Server ServerNameToServer(std::wstring name) override
    {
        return Call("ISSOClientPrivate::ServerNameToServer", name)
            .Answer(static_cast<WebServices::Server>(6));
    }
    std::wstring Encrypt(std::wstring const& text) override
    {
        return Call("ISSOClientPrivate::Encrypt", text, &text).WideText();
    }
    void GetCurrentConfigurationConsumerKey(std::wstring& key, std::wstring& secret) override
    {
        Call const call("ISSOClientPrivate::GetCurrentConfigurationConsumerKey", key, secret);
        key = L"key";
        secret = L"secret";
    }
    std::wstring GetSettingsPath() override
    {
        return Call("ISSOClientPrivate::GetSettingsPath").WideText();
    }
    std::wstring GetLoginStateFile() override
    {
        return Call("ISSOClientPrivate::GetLoginStateFile").WideText();
    }
    StdUtil::RetrySchedule GetActiveOAuth2TokenRefreshRetrySchedule() override
    {
        Call("ISSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule");
        StdUtil::RetrySchedule schedule;
        schedule.first = 21;
        schedule.second = {{22, 23}, {24, 25}};
        return schedule;
    }
    bool SetOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule const& schedule) override
    {
        std::vector<std::string> entries;
        for (StdUtil::RetryScheduleEntry const& entry : schedule.second)
            entries.push_back(std::to_string(entry.first) + " " + std::to_string(entry.second));
        return Call("ISSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule", schedule.first,
                    entries)
            .Answer(true);
    }
    std::wstring GetLoginStateCacheFile(std::wstring text, WebServices::Server server,
                                        bool flag) override
    {
        return Call("ISSOClientPrivate::GetLoginStateCacheFile", text, server, flag).WideText();
    }
    std::wstring GetLoginStateCacheFile(std::wstring text, WebServices::Server server) override
    {
        return Call("ISSOClientPrivate::GetLoginStateCacheFile", text, server).WideText();
    }
    bool RestoreLogin(bool flag) override
    {
        return Call("ISSOClientPrivate::RestoreLogin", flag).Answer(true);
    }
    void RaiseEvent(WebServices::WebServicesPrivateCore::WebServicesEvent event, bool flag) override
    {
        Call("ISSOClientPrivate::RaiseEvent", event, flag);
    }
    std::string ToJsonString(WebServices::WebServicesConfiguration const* configuration) override
    {
        return Call("ISSOClientPrivate::ToJsonString", ConsumerKeyOf(*configuration), configuration)
            .Text();
    }
    bool FromJsonString(WebServices::WebServicesConfiguration* configuration,
                        std::string const& text) override
    {
        Call const call("ISSOClientPrivate::FromJsonString", ConsumerKeyOf(*configuration),
                        configuration, text);
        configuration->SetConsumerKey(call.WideText().c_str());
        return call.Answer(true);
    }
    bool Equals(WebServices::WebServicesConfiguration const& left,
                WebServices::WebServicesConfiguration const& right) override
    {
        return Call("ISSOClientPrivate::Equals", ConsumerKeyOf(left), &left, ConsumerKeyOf(right),
                    &right)
            .Answer(true);
    }
    void LockLoginStateFile() override { Call("ISSOClientPrivate::LockLoginStateFile"); }
    void UnlockLoginStateFile() override { Call("ISSOClientPrivate::UnlockLoginStateFile"); }
    bool Ping(std::map<std::string, std::string>& answers) override
    {
        Call const call("ISSOClientPrivate::Ping", answers);
        answers["answer"] = call.Text();
        return call.Answer(true);
    }
    void ClearEventQueue() override { Call("ISSOClientPrivate::ClearEventQueue"); }
    bool FreezeSSOServerProcess(BufferTransformCallback callback) override
    {
        return Call("ISSOClientPrivate::FreezeSSOServerProcess", callback).Answer(true);
    }
    std::chrono::seconds GetKillFrozenServerTimeout() override
    {
        return std::chrono::seconds(
            Call("ISSOClientPrivate::GetKillFrozenServerTimeout").Answer(31));
    }
    bool SetKillFrozenServerTimeout(std::chrono::seconds timeout) override
    {
        return Call("ISSOClientPrivate::SetKillFrozenServerTimeout", timeout).Answer(true);
    }
    std::string GetSessionState() override
    {
        return Call("ISSOClientPrivate::GetSessionState").Text();
    }
};

class ServerManager : public ISSOServerManager {
public:
    void SetSSOServerAppFiles(wchar_t const* appPath, wchar_t const* appExeFile) override
    {
        Call("ISSOServerManager::SetSSOServerAppFiles", appPath, appExeFile);
    }
    std::wstring GetSSOServerAppFile() override
    {
        return Call("ISSOServerManager::GetSSOServerAppFile").WideText();
    }
    std::wstring GetSSOServerAppExeFile() override
    {
        return Call("ISSOServerManager::GetSSOServerAppExeFile").WideText();
    }
    void SetSSOServerProcessName(char const* processName) override
    {
        Call("ISSOServerManager::SetSSOServerProcessName", processName);
    }
    int GetSSOServerName(char* buffer, int capacity) override
    {
        return Call("ISSOServerManager::GetSSOServerName", capacity).Fill(buffer, capacity);
    }
    void SetSSOServerName(char const* serverName) override
    {
        Call("ISSOServerManager::SetSSOServerName", serverName);
    }
    int GetSSOEventServerName(char* buffer, int capacity) override
    {
        return Call("ISSOServerManager::GetSSOEventServerName", capacity).Fill(buffer, capacity);
    }
    bool StartSSOServerProcess(std::vector<std::string> const& arguments,
                               std::chrono::milliseconds timeout, long long& processId) override
    {
        Call const call("ISSOServerManager::StartSSOServerProcess", arguments, timeout, processId);
        processId = 6000000001;
        return call.Answer(true);
    }
    bool StartSSOServerProcess(std::chrono::milliseconds timeout, long long& processId) override
    {
        Call const call("ISSOServerManager::StartSSOServerProcess", timeout, processId);
        processId = 6000000002;
        return call.Answer(true);
    }
    bool GetSSOServerProcessArguments(std::vector<std::string>& arguments) override
    {
        Call const call("ISSOServerManager::GetSSOServerProcessArguments", arguments);
        arguments = {call.Text()};
        return call.Answer(true);
    }
    void SetSSOServerProcessArguments(std::vector<std::string> const& arguments) override
    {
        Call("ISSOServerManager::SetSSOServerProcessArguments", arguments);
    }
    bool IsSSOServerProcessRunning(long long& processId) override
    {
        Call const call("ISSOServerManager::IsSSOServerProcessRunning");
        processId = 6000000003;
        return call.Answer(true);
    }
    bool IsSSOServerProcessReady() override
    {
        return Call("ISSOServerManager::IsSSOServerProcessReady").Answer(true);
    }
    bool QuitSSOServerProcess(std::chrono::milliseconds timeout) override
    {
        return Call("ISSOServerManager::QuitSSOServerProcess", timeout).Answer(true);
    }
    bool QuitAllSSOServerProcesses(std::chrono::milliseconds timeout) override
    {
        return Call("ISSOServerManager::QuitAllSSOServerProcesses", timeout).Answer(true);
    }
};

class Factory : public ISSOClientFactory {
public:
    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override
    {
        return Give<ISSOLogManager>("ISSOClientFactory::GetSSOLogManager", logManager);
    }
    std::shared_ptr<ISSOClientModule> GetSSOClientModule() override
    {
        return Give<ISSOClientModule>("ISSOClientFactory::GetSSOClientModule", module);
    }
    std::shared_ptr<ISSOClient> GetSSOClient() override
    {
        return Give<ISSOClient>("ISSOClientFactory::GetSSOClient", client);
    }
    std::shared_ptr<ISSOClientUI> GetSSOClientUI() override
    {
        return Give<ISSOClientUI>("ISSOClientFactory::GetSSOClientUI", ui);
    }
    std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() override
    {
        return Give<ISSOClientPrivate>("ISSOClientFactory::GetSSOClientPrivate", clientPrivate);
    }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override
    {
        return Give<ISSOServerManager>("ISSOClientFactory::GetSSOServerManager", serverManager);
    }

private:
    template <class Interface>
    static std::shared_ptr<Interface> Give(char const* getter,
                                           std::shared_ptr<Interface> const& interfacePointer)
    {
        Call const call(getter);
        if (call.IsFresh())
            return Fresh(getter, interfacePointer);
        return call.IsEmpty() ? nullptr : interfacePointer;
    }

    /// Behind it stands the same state.
    template <class Interface>
    static std::shared_ptr<Interface> Fresh(char const* getter,
                                            std::shared_ptr<Interface> const& interfacePointer)
    {
        std::string const name = getter;
        std::string const end = "~I" + name.substr(name.find("::Get") + 5);
        return {interfacePointer.get(), [end](Interface*) { Call(end.c_str()); }};
    }

    std::shared_ptr<ISSOLogManager> logManager = std::make_shared<LogManager>();
    std::shared_ptr<ISSOClientModule> module = std::make_shared<Module>();
    std::shared_ptr<ISSOClient> client = std::make_shared<Client>();
    std::shared_ptr<ISSOClientUI> ui = std::make_shared<ClientUI>();
    std::shared_ptr<ISSOClientPrivate> clientPrivate = std::make_shared<ClientPrivate>();
    std::shared_ptr<ISSOServerManager> serverManager = std::make_shared<ServerManager>();
};

class FreshFactory : public Factory {
public:
    ~FreshFactory() override { Call("~ISSOClientFactory"); }
};

} // namespace

std::shared_ptr<ISSOClientFactory> GetSSOClientFactory()
{
    // One state for the process: a second load asks the same module again.
    static std::shared_ptr<ISSOClientFactory> const factory = std::make_shared<Factory>();
    Call const call("GetSSOClientFactory");
    if (call.IsFresh())
        return std::make_shared<FreshFactory>();
    return call.IsEmpty() ? nullptr : factory;
}
