// The sign-on server, a process that the plugin starts and talks to.

#include <chrono>
#include <iostream>

#include <SSOServerManager.h>

#include "Show.h"

using namespace Halvorix::SSOServices;

namespace {

void ShowState()
{
    long long processId = 0;
    bool const running = SSOServerManager::IsSSOServerProcessRunning(processId);
    std::cout << "server: running " << Answer(running) << ", ready "
              << Answer(SSOServerManager::IsSSOServerProcessReady()) << ", process " << processId
              << std::endl;
}

} // namespace

void ShowServer()
{
    std::chrono::seconds const timeout{10};
    long long processId = 0; // stays as it is with no plugin
    std::cout << "StartSSOServerProcess answers "
              << Answer(SSOServerManager::StartSSOServerProcess(timeout, processId)) << ", process "
              << processId << std::endl;
    ShowState();
    std::cout << "QuitSSOServerProcess answers "
              << Answer(SSOServerManager::QuitSSOServerProcess(timeout)) << std::endl;
    ShowState();
}
