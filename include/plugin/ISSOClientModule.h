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
    /// By spec: JSON text of an OAuth2TokenSpec, empty if it could not be
    /// written. By flags: the first is the host's, the second always false.
    HXSSO_OVERLOADS_2(virtual void Initialize(char const* oauth2TokenSpecJson) = 0,
                      virtual void Initialize(bool, bool) = 0);
    virtual void Reserved1() {}
    virtual void Uninitialize() = 0;
    HXSSO_OVERLOADS_2(virtual void InitializeUI(char const* oauth2TokenSpecJson) = 0,
                      virtual void InitializeUI(bool, bool) = 0);
    virtual void Reserved2() {}
    virtual void UninitializeUI() = 0;
    virtual void Reserved3() {}
    /// @param path the OpenSSL module that fits; empty if none was found, and
    ///     not necessarily a file that exists. The library never loads it.
    virtual void SetOpenSslModule(wchar_t const* path) = 0;
    virtual std::shared_ptr<WebServices::IRsaCryptor> GetRsaCryptor() = 0;
    virtual void SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor> cryptor) = 0;
    virtual int GetSupportFileSearchPaths(wchar_t* buffer, int capacity) = 0;
    /// @param paths as the host gave them, separated by ";"
    virtual void SetSupportFileSearchPaths(wchar_t const* paths) = 0;
    /// The library passes a capacity of 256 and reads the buffer whole if the
    /// answer is positive.
    virtual int GetProductName(wchar_t* buffer, int capacity) = 0;
    virtual void SetProductName(wchar_t const* name) = 0;
};

} // namespace Halvorix::SSOServices
