#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "SlotOrder.h"

namespace Halvorix::SSOServices {

/// Control of the sign-on server process, behind SSOServerManager and a part of
/// SSOClientPrivate. The setters of files and names belong to the load and run
/// with the library's lock held; everything else is called with no lock held,
/// from any thread.
class ISSOServerManager {
public:
    virtual ~ISSOServerManager() = default;
    virtual void Reserved1() {} ///< Never called.
    /// @param appPath directory of the server application, empty if not found
    /// @param appExeFile full name of its executable, empty if not found
    virtual void SetSSOServerAppFiles(wchar_t const* appPath, wchar_t const* appExeFile) = 0;
    /// @name Operations
    /// @{

    /// As the public function of this name.
    virtual std::wstring GetSSOServerAppFile() = 0;
    virtual std::wstring GetSSOServerAppExeFile() = 0;
    virtual void Reserved2() {} ///< Never called.
    /// UTF-8, as the configuration file spells it.
    virtual void SetSSOServerProcessName(char const* processName) = 0;
    virtual int GetSSOServerName(char* buffer, int capacity) = 0;
    /// UTF-8, as the configuration file spells it.
    virtual void SetSSOServerName(char const* serverName) = 0;
    virtual int GetSSOEventServerName(char* buffer, int capacity) = 0;
    HXSSO_OVERLOADS_2(virtual bool StartSSOServerProcess(std::vector<std::string> const& arguments,
                                                         std::chrono::milliseconds timeout,
                                                         long long& processId) = 0,
                      virtual bool StartSSOServerProcess(std::chrono::milliseconds timeout,
                                                         long long& processId) = 0);
    virtual bool GetSSOServerProcessArguments(std::vector<std::string>& arguments) = 0;
    virtual void SetSSOServerProcessArguments(std::vector<std::string> const& arguments) = 0;
    virtual bool IsSSOServerProcessRunning(long long& processId) = 0;
    virtual bool IsSSOServerProcessReady() = 0;
    virtual bool QuitSSOServerProcess(std::chrono::milliseconds timeout) = 0;
    virtual bool QuitAllSSOServerProcesses(std::chrono::milliseconds timeout) = 0;
    /// @}
};

} // namespace Halvorix::SSOServices
