#pragma once

#include <string>

#include <boost/format.hpp>

#include <plugin/PluginTypes.h>

namespace Halvorix::SSOServices {

/// A line of the log: its text with positional placeholders, and its level. There are no
/// others than those of Messages, so that whoever logs makes no text of its own.
struct Message {
    Log::LogLevel level;
    wchar_t const* text;

private:
    friend struct Messages;
    constexpr Message(Log::LogLevel aLevel, wchar_t const* aText) : level(aLevel), text(aText) {}
};

/// The text with its placeholders filled in.
template <class... Arguments>
std::wstring Compose(Message const& message, Arguments const&... arguments)
{
    return (boost::wformat(message.text) % ... % arguments).str();
}

/// Everything that the library has to say.
struct Messages {
    using LogLevel = Log::LogLevel;

    // The load.
    static constexpr Message Banner{LogLevel::Info,
                                    L"%1% module loaded (Version: %2% Config: %3% File: %4%)"};
    static constexpr Message PluginNotFound{LogLevel::Error,
                                            L"Client plugin module not found: %1%"};
    static constexpr Message PluginLoading{LogLevel::Info,
                                           L"Dynamically loading client plugin module %1%"};
    static constexpr Message PluginLoadFailed{
        LogLevel::Error, L"Failed to load client plugin module %1%. Error: %2%"};
    static constexpr Message PluginLoaded{LogLevel::Info,
                                          L"Successfully loaded client plugin module %1%"};
    static constexpr Message FactoryProcGetting{
        LogLevel::Info, L"Getting factory proc from client plugin module %1%"};
    static constexpr Message FactoryProcMissing{
        LogLevel::Error, L"Failed to get factory proc from client plugin module %1%. Error: %2%"};
    static constexpr Message FactoryGetting{LogLevel::Info,
                                            L"Getting factory from client plugin module %1%"};
    static constexpr Message OpenSslModuleNotFound{LogLevel::Error,
                                                   L"Openssl module not found: %1%"};

    // Interfaces that a factory refuses.
    static constexpr Message NoSSOClientModule{
        LogLevel::Error,
        L"Failed to obtain ISSOClientModule. ISSOClientFactory::GetSSOClientModule "
        L"returned null."};
    static constexpr Message NoSSOServerManager{
        LogLevel::Error, L"Failed to obtain ISSOServerManager. "
                         L"ISSOClientFactory::GetSSOServerManager returned null."};
    static constexpr Message NoSSOClient{
        LogLevel::Error,
        L"Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."};
    static constexpr Message NoSSOClientUI{
        LogLevel::Error,
        L"Failed to obtain ISSOClientUI. ISSOClientFactory::GetSSOClientUI returned null."};
    static constexpr Message NoSSOClientPrivate{
        LogLevel::Error, L"Failed to obtain ISSOClientPrivate. "
                         L"ISSOClientFactory::GetSSOClientPrivate returned null."};

    // The client configuration file.
    static constexpr Message ConfigOverrideFound{LogLevel::Info,
                                                 L"Found client config file override at %1%"};
    static constexpr Message ConfigOverrideMissing{
        LogLevel::Error, L"Failed to find client config file override %1%"};
    static constexpr Message ConfigSearching{
        LogLevel::Info, L"Searching for client config file %1% in the following paths:\n%2%"};
    static constexpr Message ConfigFound{LogLevel::Info, L"Found client config file at %1%"};
    // A warning, unlike its sibling for the override: the file is optional.
    static constexpr Message ConfigMissing{
        LogLevel::Warning, L"Failed to find client config file %1% in the following paths:\n%2%"};
    static constexpr Message ConfigLoading{LogLevel::Info, L"Loading client config file %1%"};
    static constexpr Message ConfigInvalid{
        LogLevel::Error, L"Failed to load client config file %1%. Invalid file format."};
    static constexpr Message ConfigOverrideSet{LogLevel::Info,
                                               L"Client config file override set to %1%"};
    static constexpr Message ConfigOverrideTooLate{
        LogLevel::Error, L"Failed to set client config file override %1% since client config file "
                         L"%2% is already loaded"};

    // The server application.
    // Progress, not an error: an installation without the key is a normal state.
    static constexpr Message RegistryUnavailable{
        LogLevel::Info, L"Unable to get HxSSO path from registry, failed with error: %1%"};
    static constexpr Message RegistryRead{LogLevel::Info, L"Getting HxSSO path from registry: %1%"};
    static constexpr Message ServerSearching{
        LogLevel::Info, L"Searching for SSO server app %1% in the following paths:\n%2%"};
    static constexpr Message ServerFound{LogLevel::Info, L"Found SSO server app at %1%"};
    static constexpr Message ServerMissing{
        LogLevel::Error, L"Failed to find SSO server app %1% in the following paths:\n%2%"};

    // The version compatibility file.
    static constexpr Message CompatibilityOverrideFound{
        LogLevel::Info, L"Found version compatibility file override at %1%"};
    static constexpr Message CompatibilityOverrideMissing{
        LogLevel::Error, L"Failed to find version compatibility file override %1%"};
    static constexpr Message CompatibilitySearching{
        LogLevel::Info,
        L"Searching for version compatibility file %1% in the following paths:\n%2%"};
    static constexpr Message CompatibilityFound{LogLevel::Info,
                                                L"Found version compatibility file at %1%"};
    static constexpr Message CompatibilityMissing{
        LogLevel::Error,
        L"Failed to find version compatibility file %1% in the following paths:\n%2%"};
    static constexpr Message CompatibilityAbsent{LogLevel::Error,
                                                 L"Version compatibility file %1% not found"};
    static constexpr Message CompatibilityListEmpty{
        LogLevel::Error,
        L"Version compatibility list is empty under key %1% in version compatibility "
        L"file %2%"};
    static constexpr Message CompatibilityInvalid{
        LogLevel::Error, L"Failed to load file %1%. Possibly json format is not valid."};
    static constexpr Message ModuleBlank{
        LogLevel::Error, L"Blank or missing key 'module' in %1% in version compatibility file %2%. "
                         L"Object ignored."};
    static constexpr Message ModulePathBlank{
        LogLevel::Error,
        L"Blank or missing key 'modulePath' or 'modulePathWoW64' in %1% in version "
        L"compatibility file %2%. Object ignored."};
    static constexpr Message ModuleVersionBlank{
        LogLevel::Error,
        L"Blank or missing key 'version' in %1% in version compatibility file %2%. "
        L"Object ignored."};
    static constexpr Message RangeMissing{
        LogLevel::Error, L"Missing object 'compatibleSsoServicesVersion' in version compatibility "
                         L"file %1%. Object ignored."};
    static constexpr Message RangeInvalid{
        LogLevel::Error,
        L"Invalid version range in 'compatibleSsoServicesVersion' object in version "
        L"compatibility file %1%. Object ignored."};

    // The choice of the client plugin.
    static constexpr Message PluginSearching{
        LogLevel::Info, L"Searching for compatible client plugin version for HxSSOServices version "
                        L"%1% in version compatibility file %2%"};
    static constexpr Message PluginFound{
        LogLevel::Info, L"Found compatible client plugin for HxSSOServices version %1% in version "
                        L"compatibility file: %2%"};
    static constexpr Message PluginMissing{
        LogLevel::Error,
        L"Failed to find compatible client plugin version for HxSSOServices version "
        L"%1% in version compatibility file %2%"};
    static constexpr Message PluginMissingNoFile{
        LogLevel::Error,
        L"Failed to find compatible client plugin version for HxSSOServices version "
        L"%1% since version compatibility file %2% is not found"};

    // The choice of the OpenSSL module.
    static constexpr Message OpenSslOverrideSearching{
        LogLevel::Info, L"Searching for openssl override in client config file %1%"};
    static constexpr Message OpenSslOverrideFound{
        LogLevel::Info, L"Found openssl override in client config file %1% and using it: %2%"};
    static constexpr Message OpenSslOverrideNone{
        LogLevel::Info, L"No openssl override specified in client config file %1%"};
    static constexpr Message OpenSslSearching{
        LogLevel::Info,
        L"Searching for compatible openssl version for HxSSOServices version %1% in "
        L"version compatibility file %2%"};
    static constexpr Message OpenSslFound{
        LogLevel::Info,
        L"Found compatible openssl version for HxSSOServices version %1% in version "
        L"compatibility file: %2%"};
    static constexpr Message OpenSslMissing{
        LogLevel::Error,
        L"Failed to find compatible openssl version for HxSSOServices version %1% in "
        L"version compatibility file %2%"};
    static constexpr Message OpenSslMissingNoFile{
        LogLevel::Error, L"Failed to find compatible openssl version for HxSSOServices version %1% "
                         L"since version compatibility file %2% is not found"};
};

} // namespace Halvorix::SSOServices
