#include <SSOClientPrivate.h>

#include <mutex>
#include <utility>

#include "api/EventNames.h"
#include "api/Plugin.h"
#include "discovery/ModuleFiles.h"
#include "discovery/PathText.h"
#include "support/LogSink.h"
#include "support/SSOClientManagerMutex.h"

namespace Halvorix::SSOServices {

std::wstring SSOClientPrivate::GetLoginInfo(BufferTransformCallback callback)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetLoginInfo(callback) : L"";
}

std::wstring SSOClientPrivate::GetUrl(WebServices::WebServicesUrlCode code)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetUrl(code) : L"";
}

std::wstring SSOClientPrivate::GetUrl(std::wstring name)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetUrl(name) : L"";
}

std::map<std::wstring, std::wstring> SSOClientPrivate::GetUrlOverrides(WebServices::Server server)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetUrlOverrides(server) : std::map<std::wstring, std::wstring>();
}

bool SSOClientPrivate::SetUrlOverrides(WebServices::Server server,
                                       std::map<std::wstring, std::wstring> const& overrides)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->SetUrlOverrides(server, overrides) : false;
}

bool SSOClientPrivate::ClearUrlOverrides(WebServices::Server server)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->ClearUrlOverrides(server) : false;
}

std::wstring SSOClientPrivate::ServerToServerName(WebServices::Server server)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->ServerToServerName(server) : L"";
}

WebServices::Server SSOClientPrivate::ServerNameToServer(std::wstring name)
{
    constexpr auto noServer = static_cast<WebServices::Server>(-1);
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->ServerNameToServer(name) : noServer;
}

std::wstring SSOClientPrivate::Encrypt(std::wstring const& text)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->Encrypt(text) : L"";
}

void SSOClientPrivate::GetCurrentConfigurationConsumerKey(std::wstring& key, std::wstring& secret)
{
    key.clear();
    secret.clear();
    if (auto const plugin = Plugin<ISSOClientPrivate>())
        plugin->GetCurrentConfigurationConsumerKey(key, secret);
}

std::wstring SSOClientPrivate::GetSettingsPath()
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetSettingsPath() : L"";
}

std::wstring SSOClientPrivate::GetLoginStateFile()
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetLoginStateFile() : L"";
}

StdUtil::RetrySchedule SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule()
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetActiveOAuth2TokenRefreshRetrySchedule() : StdUtil::RetrySchedule();
}

bool SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule const& schedule)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->SetOAuth2TokenRefreshRetrySchedule(schedule) : false;
}

std::wstring SSOClientPrivate::GetLoginStateCacheFile(std::wstring text, WebServices::Server server,
                                                      bool flag)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetLoginStateCacheFile(text, server, flag) : L"";
}

std::wstring SSOClientPrivate::GetLoginStateCacheFile(std::wstring text, WebServices::Server server)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetLoginStateCacheFile(text, server) : L"";
}

bool SSOClientPrivate::RestoreLogin(bool flag)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->RestoreLogin(flag) : false;
}

void SSOClientPrivate::RaiseEvent(WebServices::WebServicesPrivateCore::WebServicesEvent event,
                                  bool flag)
{
    if (auto const plugin = Plugin<ISSOClientPrivate>())
        plugin->RaiseEvent(event, flag);
}

std::string
SSOClientPrivate::ToJsonString(WebServices::WebServicesConfiguration const* configuration)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->ToJsonString(configuration) : "";
}

bool SSOClientPrivate::FromJsonString(WebServices::WebServicesConfiguration* configuration,
                                      std::string const& text)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->FromJsonString(configuration, text) : false;
}

bool SSOClientPrivate::Equals(WebServices::WebServicesConfiguration const& left,
                              WebServices::WebServicesConfiguration const& right)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->Equals(left, right) : false;
}

void SSOClientPrivate::LockLoginStateFile()
{
    if (auto const plugin = Plugin<ISSOClientPrivate>())
        plugin->LockLoginStateFile();
}

void SSOClientPrivate::UnlockLoginStateFile()
{
    if (auto const plugin = Plugin<ISSOClientPrivate>())
        plugin->UnlockLoginStateFile();
}

bool SSOClientPrivate::Ping(std::map<std::string, std::string>& answers)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->Ping(answers) : false;
}

bool SSOClientPrivate::Ping()
{
    std::map<std::string, std::string> ignored;
    return Ping(ignored);
}

void SSOClientPrivate::ClearEventQueue()
{
    if (auto const plugin = Plugin<ISSOClientPrivate>())
        plugin->ClearEventQueue();
}

bool SSOClientPrivate::FreezeSSOServerProcess(BufferTransformCallback callback)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->FreezeSSOServerProcess(callback) : false;
}

std::chrono::seconds SSOClientPrivate::GetKillFrozenServerTimeout()
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetKillFrozenServerTimeout() : std::chrono::seconds(0);
}

bool SSOClientPrivate::SetKillFrozenServerTimeout(std::chrono::seconds timeout)
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->SetKillFrozenServerTimeout(timeout) : false;
}

std::string SSOClientPrivate::GetSessionState()
{
    auto const plugin = Plugin<ISSOClientPrivate>();
    return plugin ? plugin->GetSessionState() : "";
}

bool SSOClientPrivate::StartSSOServerProcess(std::vector<std::string> const& arguments,
                                             std::chrono::milliseconds timeout,
                                             long long& processId)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->StartSSOServerProcess(arguments, timeout, processId) : false;
}

bool SSOClientPrivate::GetSSOServerProcessArguments(std::vector<std::string>& arguments)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->GetSSOServerProcessArguments(arguments) : false;
}

void SSOClientPrivate::SetSSOServerProcessArguments(std::vector<std::string> const& arguments)
{
    if (auto const server = Plugin<ISSOServerManager>())
        server->SetSSOServerProcessArguments(arguments);
}

int SSOClientPrivate::GetSSOServerName(char* buffer, int capacity)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->GetSSOServerName(buffer, capacity) : 0;
}

int SSOClientPrivate::GetSSOEventServerName(char* buffer, int capacity)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->GetSSOEventServerName(buffer, capacity) : 0;
}

std::wstring SSOClientPrivate::GetProductName()
{
    auto const module = Plugin<ISSOClientModule>();
    if (!module)
        return L"";
    constexpr int capacity = 256;
    wchar_t name[capacity] = {};
    // The whole array, whatever count the plugin gives, on purpose: callers
    // read the result as a terminated text.
    return module->GetProductName(name, capacity) > 0 ? std::wstring(name, capacity)
                                                      : std::wstring();
}

void SSOClientPrivate::SetProductName(std::wstring const& name)
{
    if (auto const module = Plugin<ISSOClientModule>())
        module->SetProductName(name.c_str());
}

std::wstring SSOClientPrivate::GetSSOServerAppPath()
{
    return SSOClientManager::GetInstance()->Ask(&SSOPathResolver::GetSSOServerAppPath);
}

std::wstring SSOClientPrivate::GetSSOServerAppExeDirPath()
{
    return SSOClientManager::GetInstance()->Ask(&SSOPathResolver::GetSSOServerAppExeDirPath);
}

std::wstring SSOClientPrivate::GetSSOClientPluginModule()
{
    return SSOClientManager::GetInstance()->Ask(&SSOPathResolver::GetSSOClientPluginModule);
}

std::wstring SSOClientPrivate::GetOpenSslModule()
{
    return SSOClientManager::GetInstance()->Ask(&SSOPathResolver::GetOpenSslModule);
}

bool SSOClientPrivate::ExpandPathVariables(std::wstring& path)
{
    std::shared_ptr<SSOClientManager> const manager = SSOClientManager::GetInstance();
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    std::wstring expanded;
    manager->Ask([&](SSOPathResolver& resolver) {
        expanded = path;
        resolver.ExpandPathVariables(expanded);
    });
    path = std::move(expanded);
    return true;
}

std::wstring SSOClientPrivate::GetModuleDirPath(std::wstring const& moduleName)
{
    // The manager is not needed here, but comes into being first.
    std::shared_ptr<SSOClientManager> const manager = SSOClientManager::GetInstance();
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    return SSOServices::GetModuleDirPath(moduleName);
}

std::wstring SSOClientPrivate::GetSSOClientConfigFile()
{
    return SSOClientManager::GetInstance()->Ask(&SSOPathResolver::GetSSOClientConfigFile);
}

std::wstring SSOClientPrivate::GetSSOClientConfigFileOverride()
{
    return SSOClientManager::GetInstance()->Ask(&SSOPathResolver::GetSSOClientConfigFileOverride);
}

void SSOClientPrivate::SetSSOClientConfigFileOverride(std::wstring path)
{
    SSOClientManager::GetInstance()->SetSSOClientConfigFileOverride(path);
}

std::wstring SSOClientPrivate::GetLogFile()
{
    return JoinPath(GetKnownFolderPath(Platform::KnownFolder::LocalAppData), LogFile);
}

} // namespace Halvorix::SSOServices
