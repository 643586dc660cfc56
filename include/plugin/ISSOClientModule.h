#pragma once

#include <memory>

#include "PluginTypes.h"
#include "SlotOrder.h"

namespace Halvorix::SSOServices {

/// Operations on the plugin as a whole. Called with no lock held, from any
/// thread, except SetOpenSslModule, which belongs to the load. Texts that come
/// in are terminated and valid for the call only.
class ISSOClientModule {
public:
    virtual ~ISSOClientModule() = default;
    /// @name Operations
    /// @{

    /// By spec (JSON text of an OAuth2TokenSpec) or by flags, of which the first
    /// is the host's and the second always false.
    HXSSO_OVERLOADS_2(virtual void Initialize(char const* oauth2TokenSpecJson) = 0,
                      virtual void Initialize(bool, bool) = 0);
    virtual void Reserved1() {} ///< Never called.
    /// The host's last Uninitialize.
    virtual void Uninitialize() = 0;
    /// As Initialize, for hosts with a user interface; comes before it.
    HXSSO_OVERLOADS_2(virtual void InitializeUI(char const* oauth2TokenSpecJson) = 0,
                      virtual void InitializeUI(bool, bool) = 0);
    virtual void Reserved2() {} ///< Never called.
    /// Comes before Uninitialize.
    virtual void UninitializeUI() = 0;
    virtual void Reserved3() {} ///< Never called.
    /// @param path the OpenSSL module that fits; empty if none was found, and
    ///     not necessarily a file that exists. The library never loads it.
    virtual void SetOpenSslModule(wchar_t const* path) = 0;
    /// The cryptor in use; may be empty.
    virtual std::shared_ptr<WebServices::IRsaCryptor> GetRsaCryptor() = 0;
    /// The plugin shares the cryptor from then on.
    virtual void SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor> cryptor) = 0;
    /// Text by the common convention: a null buffer asks for the length.
    virtual int GetSupportFileSearchPaths(wchar_t* buffer, int capacity) = 0;
    /// @param paths as the host gave them, separated by ";"
    virtual void SetSupportFileSearchPaths(wchar_t const* paths) = 0;
    /// The library passes a capacity of 256 and reads the buffer whole if the
    /// answer is positive.
    virtual int GetProductName(wchar_t* buffer, int capacity) = 0;
    /// @param name terminated
    virtual void SetProductName(wchar_t const* name) = 0;
    /// @}
};

} // namespace Halvorix::SSOServices
