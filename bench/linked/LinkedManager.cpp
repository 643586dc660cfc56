// In place of src/host and of the searches in src/discovery: the manager of a host
// that has its plugin linked in, and so has nothing to find and nothing to load.

#include <mutex>

#include "host/SSOClientManager.h"

#include "../../include/plugin/ISSOClientFactory.h"
#include "support/LogSink.h"
#include "support/ProcessState.h"

namespace Halvorix::SSOServices {

SSOPathResolver::SSOPathResolver(Version version, LogFunction log)
    : logFunction(std::move(log)), ssoServicesVersion(std::move(version))
{
}

bool SSOPathResolver::ExpandPathVariables(std::wstring&) { return true; }
std::wstring SSOPathResolver::GetSSOClientConfigFile() { return {}; }
std::wstring SSOPathResolver::GetSSOClientConfigFileOverride() const { return {}; }
void SSOPathResolver::SetSSOClientConfigFileOverride(std::wstring) {}
std::wstring SSOPathResolver::GetSSOServerAppPath() { return {}; }
std::wstring SSOPathResolver::GetSSOServerAppExeDirPath() { return {}; }
std::wstring SSOPathResolver::GetSSOServerAppExeFile() { return {}; }
std::string SSOPathResolver::GetSSOServerProcessName() const { return {}; }
std::string SSOPathResolver::GetSSOServerName() const { return {}; }
std::wstring SSOPathResolver::GetSSOClientPluginModule() { return {}; }
std::wstring SSOPathResolver::GetSSOClientPluginFileName() { return {}; }
std::wstring SSOPathResolver::GetOpenSslModule() { return {}; }

SharedPathResolver::SharedPathResolver(Version version, LogFunction aLog)
    : SSOPathResolver(std::move(version), nullptr), log(std::move(aLog))
{
}

void SharedPathResolver::Ask(Question const& question) { question(*this); }

SSOClientManager::SSOClientManager()
    : SharedPathResolver({}, nullptr), clientFactory(GetSSOClientFactory())
{
}

void SSOClientManager::CreateInstance()
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    if (!clientManager)
        clientManager = std::make_shared<SSOClientManager>();
    clientManagerPublished.store(true, std::memory_order_release);
}

bool SSOClientManager::ReleaseInstance()
{
    clientManagerPublished.store(false, std::memory_order_release);
    clientManager.reset();
    return true;
}

void SSOClientManager::GetSSOClientModule(std::shared_ptr<ISSOClientModule>& result)
{
    result = clientFactory->GetSSOClientModule();
}

void SSOClientManager::GetSSOServerManager(std::shared_ptr<ISSOServerManager>& result)
{
    result = clientFactory->GetSSOServerManager();
}

void SSOClientManager::GetSSOClient(std::shared_ptr<ISSOClient>& result)
{
    result = clientFactory->GetSSOClient();
}

void SSOClientManager::GetSSOClientUI(std::shared_ptr<ISSOClientUI>& result)
{
    result = clientFactory->GetSSOClientUI();
}

void SSOClientManager::GetSSOClientPrivate(std::shared_ptr<ISSOClientPrivate>& result)
{
    result = clientFactory->GetSSOClientPrivate();
}

} // namespace Halvorix::SSOServices
