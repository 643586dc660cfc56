#pragma once

#include <string>

namespace Halvorix::SSOServices {

/// Version of this library. The zeros count: versions keep their spelling.
inline constexpr char const* LibraryVersion = "10.22.00.1800";

/// Names that plugin and server share; nothing in the library reads them.
inline constexpr char const* SSOIpcServersName = "HxSSOIpcServers-v2";
inline constexpr char const* SSODefaultProcessName = "Halvorix.SSO.DefaultProcess-v2";
inline constexpr char const* SSOAppStateName = "HxSSOAppState-v2";
inline constexpr char const* LogConfigFileName = "WebServices.logconfig";

/// What this build is, such as "x64-Release".
inline std::wstring BuildName()
{
    std::wstring const platform = sizeof(void*) == 8 ? L"x64" : L"x86";
#ifdef NDEBUG
    return platform + L"-Release";
#else
    return platform + L"-Debug";
#endif
}

} // namespace Halvorix::SSOServices
