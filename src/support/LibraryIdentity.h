#pragma once

#include <string>

namespace Halvorix::SSOServices {

/// Version of this library. The zeros count: versions keep their spelling.
inline constexpr char const* LibraryVersion = "10.22.00.1800";

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
