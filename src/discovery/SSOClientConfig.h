#pragma once

#include <string>
#include <vector>

namespace Halvorix::SSOServices {

/// Name of the client configuration file.
inline constexpr wchar_t const* ClientConfigFileName = L"SSOClient.config";

/// Defaults of the file.
inline constexpr wchar_t const* DefaultServerApp = L"HxSSO.exe";
inline constexpr char const* DefaultServerName = "Halvorix.SSO.DefaultServer-v2";

/// Names that plugin and server share; nothing in the library reads them.
inline constexpr char const* SSOIpcServersName = "HxSSOIpcServers-v2";
inline constexpr char const* SSODefaultProcessName = "Halvorix.SSO.DefaultProcess-v2";
inline constexpr char const* SSOAppStateName = "HxSSOAppState-v2";

/// The values of the client configuration file. The two narrow ones go to the
/// plugin as the file spells them.
struct SSOClientConfig {
    std::wstring appName;
    std::wstring exeName;
    std::vector<std::wstring> searchPaths;
    std::string processName;
    std::string serverName;
    std::wstring bundleId; // read and kept; nothing uses it
    std::wstring versionCompatibilityConfigFilePath;
    std::wstring openSslModuleName;
    std::wstring openSslModulePath;
};

/// Fills in what the file left empty.
void ApplyClientConfigDefaults(SSOClientConfig& config);

} // namespace Halvorix::SSOServices
