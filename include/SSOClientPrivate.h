#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

namespace Halvorix::SSOServices {

/// What trusted callers need beyond the public managers: URL overrides, login
/// state files, the server process, events, and the library's own view of where
/// its parts lie. No instance and no state of its own; no Initialize is needed.
///
/// Wide texts are UTF-16 on Windows and UTF-32 on Linux. Narrow ones are UTF-8 by convention: they
/// pass between host and plugin unchanged.
/// The first use changes the process's locale (WebServicesManager tells how).
/// Exceptions of the plugin and the allocator reach the caller; so do those of the JSON library
/// and Boost.Filesystem, from calls that load or search (WebServicesManager lists them).
class HXSSO_API SSOClientPrivate {
public:
    /// @name Asking the plugin
    /// From any thread; no lock is held while the plugin works. Without a plugin, or with
    /// one that refuses the interface behind a function, texts and maps are empty, bool is
    /// false, numbers are 0, actions have no effect and outputs stay as they are, except
    /// where stated.
    /// @{

    static std::wstring GetLoginInfo(BufferTransformCallback callback); ///< A text.
    static std::wstring GetUrl(WebServices::WebServicesUrlCode code);   ///< URL by number.
    static std::wstring GetUrl(std::wstring name);                      ///< URL by name.
    /// The overrides of a server, name to URL.
    static std::map<std::wstring, std::wstring> GetUrlOverrides(WebServices::Server server);
    /// Replaces the overrides of a server.
    static bool SetUrlOverrides(WebServices::Server server,
                                std::map<std::wstring, std::wstring> const& overrides);
    static bool ClearUrlOverrides(WebServices::Server server);          ///< Removes the overrides.
    static std::wstring ServerToServerName(WebServices::Server server); ///< Name by number.
    /// Number by name. Without a plugin -1, which is no server.
    static WebServices::Server ServerNameToServer(std::wstring name);
    static std::wstring Encrypt(std::wstring const& text); ///< The text, encrypted.
    /// Both are made empty first, even without a plugin.
    static void GetCurrentConfigurationConsumerKey(std::wstring& key, std::wstring& secret);
    static std::wstring GetSettingsPath();   ///< A path.
    static std::wstring GetLoginStateFile(); ///< A path.
    /// The schedule in force; a default one without a plugin.
    static StdUtil::RetrySchedule GetActiveOAuth2TokenRefreshRetrySchedule();
    /// Copied by the plugin.
    static bool SetOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule const& schedule);
    /// A path.
    static std::wstring GetLoginStateCacheFile(std::wstring text, WebServices::Server server,
                                               bool flag);
    /// A path.
    static std::wstring GetLoginStateCacheFile(std::wstring text, WebServices::Server server);
    static bool RestoreLogin(bool flag); ///< Whether the plugin restored a login.
    /// The event's number goes to the plugin unchanged.
    static void RaiseEvent(WebServices::WebServicesPrivateCore::WebServicesEvent event, bool flag);
    /// The configuration as the plugin writes it.
    static std::string ToJsonString(WebServices::WebServicesConfiguration const* configuration);
    /// Fills the configuration from the plugin's form; untouched without a plugin.
    static bool FromJsonString(WebServices::WebServicesConfiguration* configuration,
                               std::string const& text);
    /// The plugin's comparison; without a plugin false, even for one object.
    static bool Equals(WebServices::WebServicesConfiguration const& left,
                       WebServices::WebServicesConfiguration const& right);
    static void LockLoginStateFile();   ///< Blocks as long as the plugin does.
    static void UnlockLoginStateFile(); ///< The counterpart.
    /// Whether the plugin answers; it may put details into the map.
    static bool Ping(std::map<std::string, std::string>& answers);
    static bool Ping();            ///< The same, without the details.
    static void ClearEventQueue(); ///< Drops the plugin's waiting events.
    static bool FreezeSSOServerProcess(BufferTransformCallback callback); ///< The plugin's.
    static std::chrono::seconds GetKillFrozenServerTimeout();             ///< Without a plugin 0 s.
    static bool SetKillFrozenServerTimeout(std::chrono::seconds timeout); ///< Passed unchecked.
    static std::string GetSessionState();                                 ///< The plugin's text.
    /// @param arguments the server's command line, copied by the plugin
    /// @param timeout passed unchecked; blocks as long as the plugin does
    /// @param processId set by the plugin
    static bool StartSSOServerProcess(std::vector<std::string> const& arguments,
                                      std::chrono::milliseconds timeout, long long& processId);
    /// The arguments that the plugin holds for the server.
    static bool GetSSOServerProcessArguments(std::vector<std::string>& arguments);
    /// Copied by the plugin.
    static void SetSSOServerProcessArguments(std::vector<std::string> const& arguments);
    /// Filled by the plugin, by its convention; bytes, terminator included.
    static int GetSSOServerName(char* buffer, int capacity);
    /// Filled by the plugin, by its convention; bytes, terminator included.
    static int GetSSOEventServerName(char* buffer, int capacity);
    /// Always 256 units long if there is a name: the name, its terminator and
    /// whatever the plugin left behind it. Read it as a terminated text.
    static std::wstring GetProductName();
    /// Reaches the plugin or is lost; the library keeps no copy.
    static void SetProductName(std::wstring const& name);
    /// @}

    /// @name The library's own view
    /// Answered without a plugin and without loading one, from any thread. Paths have
    /// forward slashes, except an override, which is given back as it was set, and are
    /// empty where nothing was found; the log says why. All but GetLogFile take the library's
    /// lock briefly for each line that they log, and the first call of the process also to
    /// create the plugin manager. ExpandPathVariables and GetModuleDirPath hold it throughout.
    /// @{

    static std::wstring GetSSOServerAppPath();       ///< Directory of the server application.
    static std::wstring GetSSOServerAppExeDirPath(); ///< The same directory.
    /// The chosen client plugin, which need not exist as a file.
    static std::wstring GetSSOClientPluginModule();
    /// The chosen OpenSSL module, which need not exist as a file.
    static std::wstring GetOpenSslModule();
    /// Replaces each known `%name%` and brings the path into normal form. True.
    static bool ExpandPathVariables(std::wstring& path);
    /// Directory of a module that the process has loaded, by its file name.
    static std::wstring GetModuleDirPath(std::wstring const& moduleName);
    /// The client configuration file; the bare name if none was found. An override as it
    /// was set.
    static std::wstring GetSSOClientConfigFile();
    static std::wstring GetSSOClientConfigFileOverride(); ///< The override, empty for none.
    /// Names the client configuration file, in place of the search. Refused, with
    /// an error in the log, as soon as the file's load has begun, however it ended;
    /// empty turns it off.
    static void SetSSOClientConfigFileOverride(std::wstring path);
    /// Where the service's log file belongs. The library neither opens nor
    /// writes it, and does not look whether it exists. Relative where the system
    /// knows no folder for it. Takes no lock.
    static std::wstring GetLogFile();
    /// @}
};

} // namespace Halvorix::SSOServices
