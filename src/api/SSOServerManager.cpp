#include "../../include/SSOServerManager.h"

#include "../support/ReturnBuffers.h"
#include "Forward.h"

namespace Halvorix::SSOServices {

int SSOServerManager::GetSSOServerAppFile(wchar_t* buffer, int capacity)
{
    return AskServer(0, [&](auto& server) {
        return GetTruncated(server.GetSSOServerAppFile(), buffer, capacity);
    });
}

int SSOServerManager::GetSSOServerAppExeFile(wchar_t* buffer, int capacity)
{
    return AskServer(0, [&](auto& server) {
        return GetTruncated(server.GetSSOServerAppExeFile(), buffer, capacity);
    });
}

bool SSOServerManager::StartSSOServerProcess(std::chrono::milliseconds timeout,
                                             long long& processId)
{
    return AskServer(
        false, [&](auto& server) { return server.StartSSOServerProcess(timeout, processId); });
}

bool SSOServerManager::IsSSOServerProcessRunning()
{
    long long ignored = 0;
    return IsSSOServerProcessRunning(ignored);
}

bool SSOServerManager::IsSSOServerProcessRunning(long long& processId)
{
    return AskServer(false,
                     [&](auto& server) { return server.IsSSOServerProcessRunning(processId); });
}

bool SSOServerManager::IsSSOServerProcessReady()
{
    return AskServer(false, [](auto& server) { return server.IsSSOServerProcessReady(); });
}

bool SSOServerManager::QuitSSOServerProcess(std::chrono::milliseconds timeout)
{
    return AskServer(false, [&](auto& server) { return server.QuitSSOServerProcess(timeout); });
}

bool SSOServerManager::QuitAllSSOServerProcesses(std::chrono::milliseconds timeout)
{
    return AskServer(false,
                     [&](auto& server) { return server.QuitAllSSOServerProcesses(timeout); });
}

} // namespace Halvorix::SSOServices
