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
/// not Initialize ran; a load is tried once. Without a plugin, or with one that refuses the
/// interface, a member answers by its type: a `bool` false, a number or an enumerator 0, a pointer
/// null. Out parameters and buffers stay as they are, and a `void` member does nothing. Members
/// that differ say so. The log says why, unless the plugin declines by an empty factory or throws.
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
/// Threads: any, several at once. Only Initialize and Uninitialize run one at a time; the last
/// Uninitialize must not overlap GetConfiguration, and that of WebServicesUIManager must not
/// overlap any call. No lock is held while the plugin works, and a call blocks as long as it does.
///
/// Exceptions that reach the caller (docs/getting-started.md has their causes): from any call,
/// whatever the plugin throws and std::bad_alloc; from a call that loads the plugin, so from any
/// first one, Json::LogicError, Json::RuntimeError, boost::filesystem::filesystem_error, and on
/// Windows boost::system::system_error; from GetOAuth2AccessToken with a token and InitiateLogout,
/// which read a document, those of Json, and boost::archive::iterators::dataflow_exception or
/// std::out_of_range for bad base64.
class HXSSO_API WebServicesManager {
public:
    /// @name Life
    /// Counted: each Initialize, even one that threw, needs one Uninitialize.
    /// @{

    static bool Initialize(); ///< The same as Initialize(false).
    /// The first call hands the flag to the plugin and creates the instance; later calls only
    /// count. Always true, even without a plugin.
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
    /// library's, separated by ";"; `%name%` variables are expanded. Not null. Call it before
    /// anything else: it loads the plugin, and after that new paths reach only the plugin.
    static void SetSupportFileSearchPaths(wchar_t const* paths);
    static void EnableLog(bool enable); ///< Does nothing: the log is always on.
    bool IsLogEnabled() const;          ///< Always true.
    /// @}

    /// @name Configuration, cache, entitlement
    /// @{

    /// The plugin's configuration; the reference is the plugin's. Without a plugin an empty
    /// one that lives as long as the instance.
    WebServicesConfiguration const& GetConfiguration() const;
    bool SetConfiguration(WebServicesConfiguration const& configuration); ///< Copies it.
    int GetCachePath(wchar_t* buffer, int capacity) const;                ///< The plugin's.
    void SetCachePath(wchar_t const* path); ///< Does nothing: the plugin alone decides on the path.
    bool IsCacheEnabled(CacheType type) const;     ///< The plugin's answer.
    void EnableCache(CacheType type, bool enable); ///< Handed to the plugin.
    bool IsCacheAvailable(CacheType type) const;   ///< The plugin's answer.
    void InvalidateCache(CacheType type);          ///< Handed to the plugin.
    /// Licence entitlement; the next three ask for the same.
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
    bool InitiateLogin(wchar_t* buffer, int capacity); ///< Without error and value.
    bool CompleteLogin(NetworkCookieJar const& jar);   ///< With the cookies of a browser login.
    bool CompleteLogin();                              ///< The plugin's answer.
    bool RestoreLogin();                               ///< The plugin's answer.
    bool Logout();                                     ///< The plugin's answer.
    /// Fills the buffer and, if the plugin gives cookies, replaces those of the jar. False at
    /// once, without asking the plugin, for a null buffer or a capacity below 1; otherwise the
    /// buffer is made empty first, even without a plugin.
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
    /// Stores the plugin's token in `token`. False if the plugin refuses, returns nothing, or
    /// returns no token document. One without a text is refused too, but its spec is stored.
    bool GetOAuth2AccessToken(OAuth2TokenSpec const& spec, OAuth2Token& token,
                              BufferTransformCallback callback, bool flag);
    int GetOAuth2AccessToken(wchar_t* buffer, int capacity, BufferTransformCallback callback,
                             bool flag);
    bool RefreshOAuth2Token(OAuth2TokenSpec const& spec, bool flag);
    bool RefreshOAuth2Token(bool flag);
    bool IsOAuth2TokenExpired(OAuth2TokenSpec const& spec) const;
    bool IsOAuth2TokenExpired() const;
    /// A number in the plugin's unit; in the samples seconds since 1970 (UTC), 0 for no date.
    unsigned int GetOAuth2TokenExpiryDate(OAuth2TokenSpec const& spec) const;
    unsigned int GetOAuth2TokenExpiryDate() const; ///< Likewise.
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
    /// The plugin keeps the pointer until RemoveObserver and calls the observer itself. The
    /// interface of an observer is an agreement between the plugin and its hosts; its header
    /// comes with the plugin. Without it, use HasEvent and DispatchEvent.
    void AddObserver(IWebServicesObserver* observer);
    void RemoveObserver(IWebServicesObserver* observer); ///< Ends what AddObserver began.
    bool HasEvent() const; ///< Whether the plugin has an event waiting.
    /// By convention hands the oldest event to the observers; false if none waits.
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
