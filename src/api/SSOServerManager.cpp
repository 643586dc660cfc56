#include <SSOServerManager.h>

#include "api/Plugin.h"
#include "support/ReturnBuffers.h"

namespace Halvorix::SSOServices {

int SSOServerManager::GetSSOServerAppFile(wchar_t* buffer, int capacity)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? GetTruncated(server->GetSSOServerAppFile(), buffer, capacity) : 0;
}

int SSOServerManager::GetSSOServerAppExeFile(wchar_t* buffer, int capacity)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? GetTruncated(server->GetSSOServerAppExeFile(), buffer, capacity) : 0;
}

bool SSOServerManager::StartSSOServerProcess(std::chrono::milliseconds timeout,
                                             long long& processId)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->StartSSOServerProcess(timeout, processId) : false;
}

bool SSOServerManager::IsSSOServerProcessRunning()
{
    long long ignored = 0;
    return IsSSOServerProcessRunning(ignored);
}

bool SSOServerManager::IsSSOServerProcessRunning(long long& processId)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->IsSSOServerProcessRunning(processId) : false;
}

bool SSOServerManager::IsSSOServerProcessReady()
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->IsSSOServerProcessReady() : false;
}

bool SSOServerManager::QuitSSOServerProcess(std::chrono::milliseconds timeout)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->QuitSSOServerProcess(timeout) : false;
}

bool SSOServerManager::QuitAllSSOServerProcesses(std::chrono::milliseconds timeout)
{
    auto const server = Plugin<ISSOServerManager>();
    return server ? server->QuitAllSSOServerProcesses(timeout) : false;
}

} // namespace Halvorix::SSOServices
