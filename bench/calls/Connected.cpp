#include "calls/Connected.h"

#include <cstdio>
#include <cstdlib>

#include <WebServicesManager.h>

#include "framework/Floor.h"
#include "framework/System.h"

using Halvorix::WebServices::WebServicesManager;

namespace Bench {

void Connect()
{
    ConnectFloor(LoadPlugin(PluginFile()));
    WebServicesManager::Initialize(false);
    if (!FloorIsLoggedIn() || !WebServicesManager::GetInstance()->IsLoggedIn()) {
        std::fputs("the plugin does not answer\n", stderr);
        std::exit(1);
    }
}

} // namespace Bench
