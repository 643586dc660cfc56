#pragma once

#include <memory>

namespace Halvorix::SSOServices {

class ISSOClient;
class ISSOClientModule;
class ISSOClientPrivate;
class ISSOClientUI;
class ISSOLogManager;
class ISSOServerManager;

/// Root of a plugin: hands out its interfaces, each of which may be empty.
///
/// The library keeps the factory and asks it again on every public call, from
/// any thread, with the library's lock held: answer at once, with the same
/// object each time or with objects that share their state.
///
/// It has to stay a class (not a struct): the decorated name of the procedure
/// below holds that word.
class ISSOClientFactory {
public:
    virtual ~ISSOClientFactory() = default;
    /// @name Operations
    /// @{

    /// The interface, or an empty pointer.
    virtual std::shared_ptr<ISSOLogManager> GetSSOLogManager() = 0;
    virtual std::shared_ptr<ISSOClientModule> GetSSOClientModule() = 0;
    virtual std::shared_ptr<ISSOClient> GetSSOClient() = 0;
    virtual std::shared_ptr<ISSOClientUI> GetSSOClientUI() = 0;
    virtual std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() = 0;
    virtual std::shared_ptr<ISSOServerManager> GetSSOServerManager() = 0;
    /// @}
};

} // namespace Halvorix::SSOServices

/// The one procedure that a plugin exports, under its decorated name; the CMake
/// function hxsso_add_plugin sees to the export on every compiler. The library
/// calls it once per load, with its lock held; an empty answer is a plugin that
/// declines. The module is never unloaded, since its code stands behind every
/// pointer that was handed out.
std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory();
