#pragma once

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

namespace Halvorix::WebServices {

class NetworkCookieJar;
class OAuth2Token;
class OAuth2TokenSpec;

/// Sign-in, identity, tokens, signing, cache, proxy and events of the single sign-on service.
///
/// Nearly every member asks the client plugin. The first call that needs it loads it, whether or
/// not Initialize ran; a load is tried once. With no plugin, or one that refuses its interface,
/// the log says why, and a member answers by its type: a `bool` false, a number 0, a pointer null,
/// an enumerator or struct value 0. Out parameters and buffers stay as they are, and a `void`
/// member does nothing. Members that differ say so.
///
/// Texts are terminated: UTF-16 on Windows, UTF-32 on Linux. They must not be null unless the
/// plugin's documentation allows it. A member with a buffer and its capacity (wchar_t units,
/// terminator included) answers a count without terminator; the plugin fills the buffer, and by
/// convention a null one asks for the length, and a text that is too long is cut and terminated.
/// What comes back through a `wchar_t*&` or `unsigned char*&` or as a `wchar_t*` is allocated by
/// the plugin, whose documentation says how to release it, and what dates and unnamed values mean.
///
/// The first use changes the process: the global C++ locale and Boost's path locale become the
/// system's default, and on Windows a load leaves SetDllDirectoryW at the system's default. Until
/// a plugin has a logger, errors are shown on std::wcout.
///
/// Threads: any, several at the same time, but for Initialize and Uninitialize: one of these at a
/// time, the last Uninitialize not beside GetConfiguration, and the last Uninitialize of
/// WebServicesUIManager beside no call at all. No lock is held while the plugin works, and a call
/// blocks as long as it does.
///
/// Exceptions: the library throws none of its own and catches none. What reaches the caller:
/// - from any call, whatever the plugin throws, and std::bad_alloc;
/// - from a call that loads the plugin, so from any first one: Json::LogicError for wrong types in
///   a configuration file, Json::RuntimeError for one nested too deeply; filesystem_error of Boost
///   for a folder that may not be searched (on Linux also for a name too long), on Windows its
///   system_error for a path with characters above U+FFFF or that the environment's locale lacks;
/// - from GetOAuth2AccessToken with a token and InitiateLogout, which read a document: those of
///   Json, and boost::archive::iterators::dataflow_exception or std::out_of_range for bad base64.
class HXSSO_API WebServicesManager {
public:
    /// @name Life
    /// Counted: each Initialize needs one Uninitialize, also one that threw.
    /// @{

    static bool Initialize(); ///< The same as Initialize(false).
    /// The first call hands the flag to the plugin and creates the instance; later calls only
    /// count. Always true, with no plugin too.
    static bool Initialize(bool flag);
    static bool Initialize(bool flag, bool ignored);     ///< The same as Initialize(flag).
    static bool Initialize(OAuth2TokenSpec const& spec); ///< With the spec in place of the flag.
    /// The last call destroys the instance and tells the plugin, which stays loaded; one too
    /// many changes nothing. Always true.
    static bool Uninitialize();
    static WebServicesManager* GetInstance(); ///< The library's; null while not initialized.
    static bool IsInitialized(); ///< Whether Initialize ran more often than Uninitialize.
    static int GetSupportFileSearchPaths(wchar_t* buffer, int capacity); ///< The plugin's.
    /// Directories in which SSOClient.config is looked for after the executable's and the
    /// library's, separated by ";"; `%name%` variables are expanded. Not null. Call it first: it
    /// loads the plugin itself, and after a load the paths reach the plugin only.
    static void SetSupportFileSearchPaths(wchar_t const* paths);
    static void EnableLog(bool enable); ///< Does nothing: the log is always on.
    bool IsLogEnabled() const;          ///< Always true.
    /// @}

    /// @name Configuration, cache, entitlement
    /// @{

    /// The plugin's configuration; the reference is the plugin's. With no plugin an empty one
    /// that lives as long as the instance.
    WebServicesConfiguration const& GetConfiguration() const;
    bool SetConfiguration(WebServicesConfiguration const& configuration); ///< Copies it.
    int GetCachePath(wchar_t* buffer, int capacity) const;                ///< The plugin's.
    void SetCachePath(wchar_t const* path); ///< Does nothing: the plugin alone decides on the path.
    bool IsCacheEnabled(CacheType type) const;     ///< The plugin's answer.
    void EnableCache(CacheType type, bool enable); ///< Handed to the plugin.
    bool IsCacheAvailable(CacheType type) const;   ///< The plugin's answer.
    void InvalidateCache(CacheType type);          ///< Handed to the plugin.
    /// Licence entitlement, as are the next three.
    ServiceEntitlement GetServiceEntitlement(wchar_t const* service, wchar_t*& text);
    ServiceEntitlement GetServiceEntitlement(wchar_t const* service);     ///< Without the text.
    bool GetServiceEntitlementEx(wchar_t*& text);                         ///< Without a service.
    bool GetServiceEntitlementEx(wchar_t const* service, wchar_t*& text); ///< With both.
    /// @}

    /// @name The user, login and logout
    /// @{

    /// The plugin's answer.
    int GetLoginStateFile(wchar_t* buffer, int capacity) const;
    int GetUserNameW(wchar_t* buffer, int capacity) const;
    int GetLoginUserName(wchar_t* buffer, int capacity) const;
    int GetUserId(wchar_t* buffer, int capacity) const;
    int GetUserEmail(wchar_t* buffer, int capacity) const;
    int GetUserFirstName(wchar_t* buffer, int capacity) const;
    int GetUserLastName(wchar_t* buffer, int capacity) const;
    bool GetUserInfo(wchar_t*& info); ///< Sets `info` to null first.
    bool IsLoggedIn() const;
    unsigned int GetLoginExpiryDate() const; ///< A plain number whose unit is the plugin's.
    bool IsLoginExpired() const;
    bool IsLoginValid() const;
    bool IsSSOEnabledForAllUsers() const;
    int GetLdapDomainKey(wchar_t* buffer, int capacity);
    /// Sets both to 0 first; the units are the plugin's.
    bool GetCloudStorageQuota(long long& first, long long& second) const;
    /// Each sets `value` to 0 first, and `error` to 7 for LoginErrorEx, to 2 for LoginError.
    bool InitiateLogin(wchar_t const* text, wchar_t* buffer, int capacity, LoginErrorEx& error,
                       int& value);
    bool InitiateLogin(wchar_t const* text, int number, wchar_t* buffer, int capacity,
                       LoginError& error, int& value);
    bool InitiateLogin(wchar_t* buffer, int capacity, LoginError& error, int& value);
    bool InitiateLogin(wchar_t* buffer, int capacity); ///< Without those.
    bool CompleteLogin(NetworkCookieJar const& jar);   ///< With the cookies of a browser login.
    bool CompleteLogin();                              ///< The plugin's answer.
    bool RestoreLogin();                               ///< The plugin's answer.
    bool Logout();                                     ///< The plugin's answer.
    /// Fills the buffer and, if the plugin gives cookies, replaces those of the jar. False at
    /// once, without asking the plugin, for a null buffer or a capacity below 1; otherwise the
    /// buffer is made empty first, with no plugin too.
    bool InitiateLogout(wchar_t* buffer, int capacity, NetworkCookieJar& jar,
                        BufferTransformCallback callback);
    bool CompleteLogout(); ///< The plugin's answer.
    /// @}

    /// @name Tokens and signing
    /// @{

    /// The plugin's answer. A spec is handed over as a document and not kept by the library.
    bool IsTokenAvailable() const;
    int GetAccessToken(wchar_t* buffer, int capacity, bool flag);
    int GetAccessToken(wchar_t* buffer, int capacity);
    unsigned int GetTokenExpiryDate() const; ///< A plain number whose unit is the plugin's.
    bool IsTokenExpired() const;
    bool RefreshToken(bool flag);
    int GetLoginCookie(unsigned char*& cookie); ///< Sets `cookie` to null first.
    wchar_t* SignRequest(wchar_t const* url, RequestParam const* params, int paramCount,
                         HttpMethod method, ParsingMode mode, wchar_t const* first,
                         wchar_t const* second, BufferTransformCallback callback);
    wchar_t* SignUrlForBrowser(wchar_t const* url, bool flag, BufferTransformCallback callback);
    bool IsOAuth2Enabled() const;
    bool EnableOAuth2(OAuth2TokenSpec const& spec);
    bool EnableOAuth2(bool enable);
    bool DisableOAuth2();
    /// Stores the plugin's token in `token`. False, too, if the plugin refuses or gives nothing,
    /// and if what it gives is not a token document; a document with a spec and no text changes the
    /// spec of `token` alone.
    bool GetOAuth2AccessToken(OAuth2TokenSpec const& spec, OAuth2Token& token,
                              BufferTransformCallback callback, bool flag);
    int GetOAuth2AccessToken(wchar_t* buffer, int capacity, BufferTransformCallback callback,
                             bool flag);
    bool RefreshOAuth2Token(OAuth2TokenSpec const& spec, bool flag);
    bool RefreshOAuth2Token(bool flag);
    bool IsOAuth2TokenExpired(OAuth2TokenSpec const& spec) const;
    bool IsOAuth2TokenExpired() const;
    unsigned int GetOAuth2TokenExpiryDate(OAuth2TokenSpec const& spec) const; ///< Likewise.
    unsigned int GetOAuth2TokenExpiryDate() const;
    bool IsOAuth2TokenAvailable(OAuth2TokenSpec const& spec) const;
    bool IsOAuth2TokenAvailable() const;
    /// @}

    /// @name Servers, proxy, events
    /// @{

    /// The plugin's answer.
    Server GetServer() const;
    bool SetServer(Server server);
    int GetUrl(WebServicesUrlCode code, wchar_t* buffer, int capacity) const;
    bool GetProxyAuthenticationDialogText(wchar_t* title, int titleCapacity, wchar_t* text,
                                          int textCapacity);
    void SetProxyAuthenticationDialogText(wchar_t const* title, wchar_t const* text);
    bool HasProxyAuthentication(wchar_t const* host, int port);
    bool GetProxyAuthentication(wchar_t const* host, int port, wchar_t* user, int userCapacity,
                                wchar_t* password, int passwordCapacity,
                                BufferTransformCallback callback);
    bool SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                wchar_t const* password, BufferTransformCallback callback);
    bool HasProxyInfo() const;
    bool ClearProxyInfo();
    /// The plugin keeps the pointer until RemoveObserver and calls the observer itself.
    void AddObserver(IWebServicesObserver* observer);
    void RemoveObserver(IWebServicesObserver* observer); ///< Ends what AddObserver began.
    bool HasEvent() const;
    bool DispatchEvent();
    /// @}

private:
    WebServicesManager();
    ~WebServicesManager();
    WebServicesManager(WebServicesManager const&) = delete;
    WebServicesManager& operator=(WebServicesManager const&) = delete;

    WebServicesConfiguration* fallbackConfiguration;
};

} // namespace Halvorix::WebServices
