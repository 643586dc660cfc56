#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "discovery/SharedPathResolver.h"
#include "platform/Platform.h"
#include "support/Messages.h"

namespace Halvorix::SSOServices {

class ISSOClient;
class ISSOClientFactory;
class ISSOClientModule;
class ISSOClientPrivate;
class ISSOClientUI;
class ISSOServerManager;

/// Finds the client plugin, loads it on first need and hands out its
/// interfaces. One per process, until it is released.
class SSOClientManager : public SharedPathResolver {
public:
    /// Creates the manager on first use and then sets the process's locale.
    /// Takes no lock once the manager exists. Never empty.
    static std::shared_ptr<SSOClientManager> GetInstance();

    /// Makes it the process's manager, in place of any other, without the process's locale.
    /// Under the lock, or while nobody else calls.
    static void Publish(std::shared_ptr<SSOClientManager> manager);

    /// Drops the process's reference; the next use creates a new manager, which
    /// loads again. Takes no lock: not to run beside any other call. Always true.
    static bool ReleaseInstance();

    SSOClientManager();
    /// Its lines go where this function sends them.
    explicit SSOClientManager(LogFunction log);

    // Each fills the pointer, which stays empty with no plugin. The factory is
    // asked every time, and an interface that it refuses is logged.
    void GetSSOClientModule(std::shared_ptr<ISSOClientModule>& result);
    void GetSSOServerManager(std::shared_ptr<ISSOServerManager>& result);
    void GetSSOClient(std::shared_ptr<ISSOClient>& result);
    void GetSSOClientUI(std::shared_ptr<ISSOClientUI>& result);
    void GetSSOClientPrivate(std::shared_ptr<ISSOClientPrivate>& result);

private:
    // There is no value for failure: an attempt that was begun is never repeated.
    enum LoadState : std::int32_t { Untouched = 0, LoadEnded = 1, LoadBegun = 2 };

    template <class Interface>
    void GetInterface(std::shared_ptr<Interface> (ISSOClientFactory::*getter)(),
                      Message const& refused, std::shared_ptr<Interface>& result);

    static void CreateInstance();
    static void ReleasePlugin();

    // These with the lock held.
    bool EnsurePluginLoaded() { return clientFactory || AnnounceAndLoad(); }
    bool AnnounceAndLoad();
    bool LoadPlugin();
    bool LoadPluginModule(std::wstring const& file);
    bool GetFactory(std::wstring const& file);
    void SetUpPlugin();

    std::wstring const libraryFile;                // as the process has it loaded
    Platform::ModuleHandle moduleHandle = nullptr; // never released
    std::shared_ptr<ISSOClientFactory> clientFactory;
    LoadState loadState = Untouched;
};

} // namespace Halvorix::SSOServices
