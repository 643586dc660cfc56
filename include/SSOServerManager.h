#pragma once

#include <chrono>
#include <memory>

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

namespace Halvorix::SSOServices {

/// Control of the sign-on server, which is a process that the plugin starts and
/// talks to. From any thread; a call blocks for as long as the plugin takes,
/// with no lock held. Timeouts are passed on unchecked. No Initialize is needed. Without
/// a plugin a bool is false, a count 0, and an id stays as it was.
/// Exceptions of the plugin reach the caller, and those of a first call, which loads it
/// (WebServicesManager lists them).
class HXSSO_API SSOServerManager {
public:
    /// The server's file as the plugin reports it. A null buffer asks for the
    /// length; otherwise a text too long is cut, and the buffer is always
    /// terminated.
    /// @param buffer the caller's, or null
    /// @param capacity in wchar_t units, terminator included
    /// @return units stored, or, for a null buffer, the length, both without terminator;
    ///     0 and nothing written for a buffer with a capacity below 1, or without a plugin
    static int GetSSOServerAppFile(wchar_t* buffer, int capacity);
    /// The server's executable, by the same rules.
    static int GetSSOServerAppExeFile(wchar_t* buffer, int capacity);
    /// The plugin sets the id.
    static bool StartSSOServerProcess(std::chrono::milliseconds timeout, long long& processId);
    static bool IsSSOServerProcessRunning();                     ///< Without its id.
    static bool IsSSOServerProcessRunning(long long& processId); ///< The plugin sets the id.
    static bool IsSSOServerProcessReady();                       ///< The plugin's answer.
    static bool QuitSSOServerProcess(std::chrono::milliseconds timeout); ///< The plugin's answer.
    static bool QuitAllSSOServerProcesses(std::chrono::milliseconds timeout); ///< The same for all.
};

/// The cryptor with which plugin and trusted callers encrypt tokens. Threads and
/// exceptions as SSOServerManager.
class HXSSO_API SSOServicesManager {
public:
    /// The plugin's cryptor; empty without a plugin. The library keeps none.
    static std::shared_ptr<WebServices::IRsaCryptor> GetRsaCryptor();
    /// Shared with the plugin from then on. Without a plugin it is released,
    /// and not kept for later.
    static void SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor> cryptor);
};

} // namespace Halvorix::SSOServices
