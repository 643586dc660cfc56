#include "host/SSOClientManager.h"

#include <atomic>
#include <chrono>
#include <locale>
#include <mutex>
#include <thread>
#include <utility>

#include <plugin/ISSOClientFactory.h>
#include "discovery/ModuleFiles.h"
#include "host/ProcessLocale.h"
#include "support/LibraryIdentity.h"
#include "support/LogSink.h"
#include "support/ProcessEnd.h"
#include "support/SSOClientManagerMutex.h"
#include "support/Undestroyed.h"

namespace Halvorix::SSOServices {

namespace {

// Created under SSOClientManagerMutex, and read without it once isPublished is set;
// released without it. Never destroyed: threads of the host may still call.
Undestroyed<std::shared_ptr<SSOClientManager>> undestroyedManager;
std::shared_ptr<SSOClientManager>& theManager = undestroyedManager.value;
std::atomic<bool> isPublished{false};

Version OwnVersion()
{
    Version version;
    ParseVersion(version, LibraryVersion);
    return version;
}

// Another thread may hold the lock for a moment, or forever: it waits in the plugin, or
// the system ended it while it held the lock.
std::unique_lock<std::recursive_mutex> LockAtProcessEnd()
{
    std::unique_lock<std::recursive_mutex> lock(SSOClientManagerMutex, std::defer_lock);
    auto const limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    while (!lock.try_lock() && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return lock;
}

} // namespace

SSOClientManager::SSOClientManager() : SSOClientManager(&LogWrite) {}

SSOClientManager::SSOClientManager(LogFunction log)
    : SharedPathResolver(OwnVersion(), std::move(log)),
      libraryFile(ResolveModuleFile(Platform::LibraryFileName()))
{
}

std::shared_ptr<SSOClientManager> SSOClientManager::GetInstance()
{
    if (!isPublished.load(std::memory_order_acquire))
        CreateInstance();
    return theManager;
}

void SSOClientManager::CreateInstance()
{
    // The locale is code of this library, and the process keeps it; the manager asks for the
    // library's file. All before the lock: the loader may be busy with a module whose
    // constructors wait for that.
    std::locale locale;
    std::locale ofTheCLibrary;
    if (WorkBeforeTheEnd const work; work.MayBegin()) {
        Platform::KeepLibraryLoaded();
        locale = SystemLocale();
        ofTheCLibrary = LocaleOfTheCLibrary();
    }
    auto manager = std::make_shared<SSOClientManager>();
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    if (theManager)
        return;
    releasePlugin = &SSOClientManager::ReleasePlugin;
    // Before anyone sees the manager: if this fails, the next use does both again.
    if (WorkBeforeTheEnd const work; work.MayBegin())
        SetProcessLocale(locale, ofTheCLibrary);
    Publish(std::move(manager));
}

void SSOClientManager::Publish(std::shared_ptr<SSOClientManager> manager)
{
    theManager = std::move(manager);
    isPublished.store(true, std::memory_order_release);
}

bool SSOClientManager::ReleaseInstance()
{
    isPublished.store(false, std::memory_order_release);
    std::shared_ptr<SSOClientManager> const released = std::move(theManager);
    return true;
}

// At the end of the process. First the factory, while there is still a logger for
// what the plugin may do meanwhile. Both are let go without the lock: the plugin may
// wait there for a thread of its own. The manager stays: other threads may use it.
void SSOClientManager::ReleasePlugin()
{
    std::shared_ptr<ISSOClientFactory> factory;
    if (auto const lock = LockAtProcessEnd()) {
        if (theManager)
            factory.swap(theManager->clientFactory);
    } else {
        return;
    }
    factory.reset();
    std::shared_ptr<ILogger> lastLogger; // outlives the lock
    if (auto const lock = LockAtProcessEnd())
        lastLogger = InstallLogger(nullptr);
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
        LogMessage(log, refused);
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
