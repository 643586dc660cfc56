#include "SSOClientManager.h"

#include <locale>
#include <mutex>
#include <utility>

#include <boost/filesystem/path.hpp>
#include <boost/locale/generator.hpp>

#include "../../include/plugin/ISSOClientFactory.h"
#include "../support/LibraryIdentity.h"
#include "../support/LogSink.h"
#include "../support/ProcessState.h"

namespace Halvorix::SSOServices {

namespace {

Version OwnVersion()
{
    Version version;
    ParseVersion(version, LibraryVersion);
    return version;
}

// The host's global locale changes with the first use of the library, on
// purpose: narrow path text is converted by it from then on.
void SetProcessLocale()
{
    std::locale::global(boost::locale::generator()(""));
    boost::filesystem::path::imbue(std::locale());
}

} // namespace

SSOClientManager::SSOClientManager() : SSOPathResolver(OwnVersion(), &SSOClientManager::LogWrite) {}

std::shared_ptr<SSOClientManager> SSOClientManager::GetInstance()
{
    if (!clientManagerPublished.load(std::memory_order_acquire)) {
        std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
        if (!clientManager) {
            releasePlugin = &SSOClientManager::ReleasePlugin;
            clientManager = std::make_shared<SSOClientManager>();
            clientManagerPublished.store(true, std::memory_order_release);
            SetProcessLocale();
        }
    }
    return clientManager;
}

bool SSOClientManager::ReleaseInstance()
{
    clientManagerPublished.store(false, std::memory_order_release);
    std::shared_ptr<SSOClientManager> const released = std::move(clientManager);
    return true;
}

void SSOClientManager::LogWrite(std::wstring message, Log::LogLevel level)
{
    WriteLogLine(std::move(message), level);
}

void SSOClientManager::FlushEarlyLog() { SSOServices::FlushEarlyLog(); }

// At the end of the process. First the factory, while the manager still answers
// what the plugin may ask meanwhile, then the logger, then the manager.
void SSOClientManager::ReleasePlugin()
{
    if (clientManager)
        std::shared_ptr<ISSOClientFactory>().swap(clientManager->clientFactory);
    InstallLogger(nullptr);
    ReleaseInstance();
}

template <class Interface>
void SSOClientManager::GetInterface(std::shared_ptr<Interface> (ISSOClientFactory::*getter)(),
                                    Message const& refused, std::shared_ptr<Interface>& result)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    if (!EnsurePluginLoaded()) {
        result.reset();
        return;
    }
    std::shared_ptr<Interface> answer = ((*clientFactory).*getter)();
    if (!answer)
        LogLine(refused);
    result = std::move(answer);
}

void SSOClientManager::GetSSOClientModule(std::shared_ptr<ISSOClientModule>& result)
{
    GetInterface(&ISSOClientFactory::GetSSOClientModule, Messages::NoSSOClientModule, result);
}

void SSOClientManager::GetSSOServerManager(std::shared_ptr<ISSOServerManager>& result)
{
    GetInterface(&ISSOClientFactory::GetSSOServerManager, Messages::NoSSOServerManager, result);
}

void SSOClientManager::GetSSOClient(std::shared_ptr<ISSOClient>& result)
{
    GetInterface(&ISSOClientFactory::GetSSOClient, Messages::NoSSOClient, result);
}

void SSOClientManager::GetSSOClientUI(std::shared_ptr<ISSOClientUI>& result)
{
    GetInterface(&ISSOClientFactory::GetSSOClientUI, Messages::NoSSOClientUI, result);
}

void SSOClientManager::GetSSOClientPrivate(std::shared_ptr<ISSOClientPrivate>& result)
{
    GetInterface(&ISSOClientFactory::GetSSOClientPrivate, Messages::NoSSOClientPrivate, result);
}

} // namespace Halvorix::SSOServices
