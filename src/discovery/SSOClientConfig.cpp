#include "SSOClientConfig.h"

namespace Halvorix::SSOServices {

namespace {

constexpr wchar_t const* DefaultServerApp = L"HxSSO.exe";
constexpr char const* DefaultServerName = "Halvorix.SSO.DefaultServer-v2";

} // namespace

void ApplyClientConfigDefaults(SSOClientConfig& config)
{
    if (config.appName.empty())
        config.appName = config.exeName;
    if (config.exeName.empty())
        config.exeName = config.appName;
    if (config.appName.empty() || config.exeName.empty())
        config.appName = config.exeName = DefaultServerApp;
    if (config.serverName.empty())
        config.serverName = DefaultServerName;
    if (config.processName.empty())
        config.processName = config.serverName;
}

} // namespace Halvorix::SSOServices
