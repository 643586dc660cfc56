#include "discovery/SSOClientConfig.h"

namespace Halvorix::SSOServices {

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
