#include "../../include/SSOClientPrivate.h"

#include <mutex>
#include <utility>

#include "../discovery/ModuleFiles.h"
#include "../discovery/PathText.h"
#include "../support/ProcessState.h"
#include "EventNames.h"
#include "Forward.h"

namespace Halvorix::SSOServices {

std::wstring SSOClientPrivate::GetLoginInfo(BufferTransformCallback callback)
{
    return AskPrivate(L"", [&](auto& plugin) { return plugin.GetLoginInfo(callback); });
}

std::wstring SSOClientPrivate::GetUrl(WebServices::WebServicesUrlCode code)
{
    return AskPrivate(L"", [&](auto& plugin) { return plugin.GetUrl(code); });
}

std::wstring SSOClientPrivate::GetUrl(std::wstring name)
{
    return AskPrivate(L"", [&](auto& plugin) { return plugin.GetUrl(name); });
}

std::map<std::wstring, std::wstring> SSOClientPrivate::GetUrlOverrides(WebServices::Server server)
{
    return AskPrivate(std::map<std::wstring, std::wstring>(),
                      [&](auto& plugin) { return plugin.GetUrlOverrides(server); });
}

bool SSOClientPrivate::SetUrlOverrides(WebServices::Server server,
                                       std::map<std::wstring, std::wstring> const& overrides)
{
    return AskPrivate(false,
                      [&](auto& plugin) { return plugin.SetUrlOverrides(server, overrides); });
}

bool SSOClientPrivate::ClearUrlOverrides(WebServices::Server server)
{
    return AskPrivate(false, [&](auto& plugin) { return plugin.ClearUrlOverrides(server); });
}

std::wstring SSOClientPrivate::ServerToServerName(WebServices::Server server)
{
    return AskPrivate(L"", [&](auto& plugin) { return plugin.ServerToServerName(server); });
}

WebServices::Server SSOClientPrivate::ServerNameToServer(std::wstring name)
{
    constexpr auto noServer = static_cast<WebServices::Server>(-1);
    return AskPrivate(noServer, [&](auto& plugin) { return plugin.ServerNameToServer(name); });
}

std::wstring SSOClientPrivate::Encrypt(std::wstring const& text)
{
    return AskPrivate(L"", [&](auto& plugin) { return plugin.Encrypt(text); });
}

void SSOClientPrivate::GetCurrentConfigurationConsumerKey(std::wstring& key, std::wstring& secret)
{
    key.clear();
    secret.clear();
    AskPrivate([&](auto& plugin) { plugin.GetCurrentConfigurationConsumerKey(key, secret); });
}

std::wstring SSOClientPrivate::GetSettingsPath()
{
    return AskPrivate(L"", [](auto& plugin) { return plugin.GetSettingsPath(); });
}

std::wstring SSOClientPrivate::GetLoginStateFile()
{
    return AskPrivate(L"", [](auto& plugin) { return plugin.GetLoginStateFile(); });
}

StdUtil::RetrySchedule SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule()
{
    return AskPrivate(StdUtil::RetrySchedule(), [](auto& plugin) {
        return plugin.GetActiveOAuth2TokenRefreshRetrySchedule();
    });
}

bool SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule const& schedule)
{
    return AskPrivate(
        false, [&](auto& plugin) { return plugin.SetOAuth2TokenRefreshRetrySchedule(schedule); });
}

std::wstring SSOClientPrivate::GetLoginStateCacheFile(std::wstring text, WebServices::Server server,
                                                      bool flag)
{
    return AskPrivate(
        L"", [&](auto& plugin) { return plugin.GetLoginStateCacheFile(text, server, flag); });
}

std::wstring SSOClientPrivate::GetLoginStateCacheFile(std::wstring text, WebServices::Server server)
{
    return AskPrivate(L"",
                      [&](auto& plugin) { return plugin.GetLoginStateCacheFile(text, server); });
}

bool SSOClientPrivate::RestoreLogin(bool flag)
{
    return AskPrivate(false, [&](auto& plugin) { return plugin.RestoreLogin(flag); });
}

void SSOClientPrivate::RaiseEvent(WebServices::WebServicesPrivateCore::WebServicesEvent event,
                                  bool flag)
{
    AskPrivate([&](auto& plugin) { plugin.RaiseEvent(event, flag); });
}

std::string
SSOClientPrivate::ToJsonString(WebServices::WebServicesConfiguration const* configuration)
{
    return AskPrivate("", [&](auto& plugin) { return plugin.ToJsonString(configuration); });
}

bool SSOClientPrivate::FromJsonString(WebServices::WebServicesConfiguration* configuration,
                                      std::string const& text)
{
    return AskPrivate(false,
                      [&](auto& plugin) { return plugin.FromJsonString(configuration, text); });
}

bool SSOClientPrivate::Equals(WebServices::WebServicesConfiguration const& left,
                              WebServices::WebServicesConfiguration const& right)
{
    return AskPrivate(false, [&](auto& plugin) { return plugin.Equals(left, right); });
}

void SSOClientPrivate::LockLoginStateFile()
{
    AskPrivate([](auto& plugin) { plugin.LockLoginStateFile(); });
}

void SSOClientPrivate::UnlockLoginStateFile()
{
    AskPrivate([](auto& plugin) { plugin.UnlockLoginStateFile(); });
}

bool SSOClientPrivate::Ping(std::map<std::string, std::string>& answers)
{
    return AskPrivate(false, [&](auto& plugin) { return plugin.Ping(answers); });
}

bool SSOClientPrivate::Ping()
{
    std::map<std::string, std::string> ignored;
    return Ping(ignored);
}

void SSOClientPrivate::ClearEventQueue()
{
    AskPrivate([](auto& plugin) { plugin.ClearEventQueue(); });
}

bool SSOClientPrivate::FreezeSSOServerProcess(BufferTransformCallback callback)
{
    return AskPrivate(false, [&](auto& plugin) { return plugin.FreezeSSOServerProcess(callback); });
}

std::chrono::seconds SSOClientPrivate::GetKillFrozenServerTimeout()
{
    return AskPrivate(std::chrono::seconds(0),
                      [](auto& plugin) { return plugin.GetKillFrozenServerTimeout(); });
}

bool SSOClientPrivate::SetKillFrozenServerTimeout(std::chrono::seconds timeout)
{
    return AskPrivate(false,
                      [&](auto& plugin) { return plugin.SetKillFrozenServerTimeout(timeout); });
}

std::string SSOClientPrivate::GetSessionState()
{
    return AskPrivate("", [](auto& plugin) { return plugin.GetSessionState(); });
}

bool SSOClientPrivate::StartSSOServerProcess(std::vector<std::string> const& arguments,
                                             std::chrono::milliseconds timeout,
                                             long long& processId)
{
    return AskServer(false, [&](auto& server) {
        return server.StartSSOServerProcess(arguments, timeout, processId);
    });
}

bool SSOClientPrivate::GetSSOServerProcessArguments(std::vector<std::string>& arguments)
{
    return AskServer(false,
                     [&](auto& server) { return server.GetSSOServerProcessArguments(arguments); });
}

void SSOClientPrivate::SetSSOServerProcessArguments(std::vector<std::string> const& arguments)
{
    AskServer([&](auto& server) { server.SetSSOServerProcessArguments(arguments); });
}

int SSOClientPrivate::GetSSOServerName(char* buffer, int capacity)
{
    return AskServer(0, [&](auto& server) { return server.GetSSOServerName(buffer, capacity); });
}

int SSOClientPrivate::GetSSOEventServerName(char* buffer, int capacity)
{
    return AskServer(0,
                     [&](auto& server) { return server.GetSSOEventServerName(buffer, capacity); });
}

std::wstring SSOClientPrivate::GetProductName()
{
    return AskModule(L"", [](auto& module) {
        constexpr int capacity = 256;
        wchar_t name[capacity] = {};
        // The whole array, whatever count the plugin gives, on purpose: callers
        // read the result as a terminated text.
        return module.GetProductName(name, capacity) > 0 ? std::wstring(name, capacity)
                                                         : std::wstring();
    });
}

void SSOClientPrivate::SetProductName(std::wstring const& name)
{
    AskModule([&](auto& module) { module.SetProductName(name.c_str()); });
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
    std::wstring path = GetKnownFolderPath(Platform::KnownFolder::LocalAppData);
    for (wchar_t const* const name : {L"Halvorix/Web Services", L"Log", L"WebServices.log"})
        path = JoinPath(path, name);
    return path;
}

} // namespace Halvorix::SSOServices
