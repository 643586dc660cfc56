#pragma once

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

namespace Halvorix::WebServices {

class NetworkCookieJar;
class OAuth2Token;
class OAuth2TokenSpec;

/// Sign-in, identity, tokens, signing, cache, proxy and events of the single
/// sign-on service.
///
/// Nearly every member asks the client plugin. The first call that needs the
/// plugin loads it, whether or not Initialize ran; a load is tried once. With no
/// plugin, or one that refuses its interface, a member gives the answer stated
/// at it as "with no plugin", and only the log says why.
///
/// The first use of the library changes the process: the global C++ locale and
/// Boost's path locale become the system's default. On Windows a load leaves
/// SetDllDirectoryW at the system's default. Until a plugin has a logger, errors
/// are shown on std::wcout.
///
/// Texts are terminated wide texts: UTF-16 on Windows, UTF-32 on Linux. They
/// must not be null unless the plugin's documentation allows it; the library
/// passes them on unread.
///
/// Text getters take a buffer and its capacity in wchar_t units, terminator
/// included, and answer a count of units without terminator. The plugin fills
/// the buffer, by the convention that a null buffer asks for the length and
/// that a text too long is cut and terminated. With no plugin they answer 0 and
/// leave the buffer as it is. Dates are in the plugin's count.
///
/// Threads: every member may be called from any thread, several at the same time, but
/// for Initialize and Uninitialize: one of these at a time, the last Uninitialize not
/// beside GetConfiguration, and the last WebServicesUIManager::Uninitialize beside no
/// call at all. No lock is held while the plugin works, and a call blocks as long as it
/// does.
///
/// Exceptions: the library throws none of its own, and catches none. What reaches the
/// caller: whatever the plugin throws; std::bad_alloc; from a call that loads the
/// plugin, so from any first one, Json::LogicError for a configuration file with values
/// of wrong types, Json::RuntimeError for one nested too deeply, and
/// boost::filesystem::filesystem_error for a folder that may not be searched or a name
/// that is too long; on Windows boost::system::system_error for a path with characters
/// that the environment's locale (LC_ALL and so on) does not have; from the members that
/// read a document of the plugin (GetOAuth2AccessToken with a token, InitiateLogout),
/// Json::LogicError for values of wrong types, Json::RuntimeError for one nested too
/// deeply, and for a token that is not base64
/// boost::archive::iterators::dataflow_exception or std::out_of_range. An Initialize that
/// threw has counted all the same: call Uninitialize before the next one.
class HXSSO_API WebServicesManager {
public:
    /// @name Life
    /// Counted: each Initialize needs one Uninitialize, also one that threw. These two
    /// belong to one thread at a time.
    /// @{

    /// The same as Initialize(false).
    static bool Initialize();
    /// The first call tells the plugin, handing on the flag, and creates the
    /// instance; later calls only count. Always true, with no plugin too.
    static bool Initialize(bool flag);
    /// The same as Initialize(flag): the second argument is ignored.
    static bool Initialize(bool flag, bool ignored);
    /// As Initialize(bool), but hands the spec to the plugin in place of flags.
    static bool Initialize(OAuth2TokenSpec const& spec);
    /// The last call destroys the instance and tells the plugin; one too many
    /// changes nothing. Always true. The plugin stays loaded.
    static bool Uninitialize();
    /// The instance, owned by the library; null outside Initialize and
    /// Uninitialize.
    static WebServicesManager* GetInstance();
    /// Whether Initialize ran more often than Uninitialize. Says nothing about
    /// the presence of a plugin.
    static bool IsInitialized();
    /// Text getter: the plugin's search paths.
    static int GetSupportFileSearchPaths(wchar_t* buffer, int capacity);
    /// Directories in which SSOClient.config is looked for beside the
    /// executable's and the library's, separated by ";"; `%name%` variables are
    /// expanded. Not null. Call it before anything else: it loads the plugin
    /// itself, and after a load the paths reach the plugin only.
    static void SetSupportFileSearchPaths(wchar_t const* paths);
    /// Does nothing: the log is always on.
    static void EnableLog(bool enable);
    /// Always true.
    bool IsLogEnabled() const;
    /// @}

    /// @name Configuration, cache, entitlement
    /// @{

    /// The plugin's configuration; the reference is the plugin's. With no
    /// plugin an empty one that lives as long as the instance.
    WebServicesConfiguration const& GetConfiguration() const;
    /// Copied by the plugin. False with no plugin.
    bool SetConfiguration(WebServicesConfiguration const& configuration);
    /// Text getter.
    int GetCachePath(wchar_t* buffer, int capacity) const;
    /// Does nothing: the plugin alone decides on the path.
    void SetCachePath(wchar_t const* path);
    /// False with no plugin.
    bool IsCacheEnabled(CacheType type) const;
    /// No effect with no plugin.
    void EnableCache(CacheType type, bool enable);
    /// False with no plugin.
    bool IsCacheAvailable(CacheType type) const;
    /// No effect with no plugin.
    void InvalidateCache(CacheType type);
    /// Licence entitlement. The text is the plugin's to allocate and its
    /// documentation says how it is released. With no plugin value 0, text
    /// untouched.
    ServiceEntitlement GetServiceEntitlement(wchar_t const* service, wchar_t*& text);
    /// Licence entitlement; value 0 with no plugin.
    ServiceEntitlement GetServiceEntitlement(wchar_t const* service);
    /// Licence entitlement, text as above. With no plugin false, text untouched.
    bool GetServiceEntitlementEx(wchar_t*& text);
    /// Licence entitlement, text as above. With no plugin false, text untouched.
    bool GetServiceEntitlementEx(wchar_t const* service, wchar_t*& text);
    /// @}

    /// @name The user
    /// @{

    int GetLoginStateFile(wchar_t* buffer, int capacity) const; ///< Text getter.
    int GetUserNameW(wchar_t* buffer, int capacity) const;      ///< Text getter.
    int GetLoginUserName(wchar_t* buffer, int capacity) const;  ///< Text getter.
    int GetUserId(wchar_t* buffer, int capacity) const;         ///< Text getter.
    int GetUserEmail(wchar_t* buffer, int capacity) const;      ///< Text getter.
    int GetUserFirstName(wchar_t* buffer, int capacity) const;  ///< Text getter.
    int GetUserLastName(wchar_t* buffer, int capacity) const;   ///< Text getter.
    /// Set to null first; the plugin allocates and its documentation says how
    /// it is released. False with no plugin.
    bool GetUserInfo(wchar_t*& info);
    bool IsLoggedIn() const;                 ///< False with no plugin.
    unsigned int GetLoginExpiryDate() const; ///< 0 with no plugin.
    bool IsLoginExpired() const;             ///< False with no plugin.
    bool IsLoginValid() const;               ///< False with no plugin.
    bool IsSSOEnabledForAllUsers() const;    ///< False with no plugin.
    /// Text getter.
    int GetLdapDomainKey(wchar_t* buffer, int capacity);
    /// Both set to 0 first; the units are the plugin's. False with no plugin.
    bool GetCloudStorageQuota(long long& first, long long& second) const;
    /// @}

    /// @name Login and logout
    /// Meaning of the unnamed values: the plugin's documentation.
    /// @{

    /// Presets `error` to 7 and `value` to 0. False with no plugin.
    bool InitiateLogin(wchar_t const* text, wchar_t* buffer, int capacity, LoginErrorEx& error,
                       int& value);
    /// Presets `error` to 2 and `value` to 0. False with no plugin.
    bool InitiateLogin(wchar_t const* text, int number, wchar_t* buffer, int capacity,
                       LoginError& error, int& value);
    /// Presets `error` to 2 and `value` to 0. False with no plugin.
    bool InitiateLogin(wchar_t* buffer, int capacity, LoginError& error, int& value);
    /// False with no plugin.
    bool InitiateLogin(wchar_t* buffer, int capacity);
    /// Hands the cookies of a browser login to the plugin. False with no plugin.
    bool CompleteLogin(NetworkCookieJar const& jar);
    bool CompleteLogin(); ///< False with no plugin.
    bool RestoreLogin();  ///< False with no plugin.
    bool Logout();        ///< False with no plugin.
    /// Fills the buffer and, if the plugin gives cookies, replaces those of the
    /// jar. False at once, without asking the plugin, for a null buffer or a
    /// capacity below 1 (wchar_t units, terminator included); otherwise the
    /// buffer is made empty first. False with no plugin.
    bool InitiateLogout(wchar_t* buffer, int capacity, NetworkCookieJar& jar,
                        BufferTransformCallback callback);
    bool CompleteLogout(); ///< False with no plugin.
    /// @}

    /// @name Token and signing
    /// @{

    bool IsTokenAvailable() const; ///< False with no plugin.
    /// Text getter.
    int GetAccessToken(wchar_t* buffer, int capacity, bool flag);
    int GetAccessToken(wchar_t* buffer, int capacity); ///< Text getter.
    unsigned int GetTokenExpiryDate() const;           ///< 0 with no plugin.
    bool IsTokenExpired() const;                       ///< False with no plugin.
    bool RefreshToken(bool flag);                      ///< False with no plugin.
    /// Set to null first; the plugin allocates and its documentation says how
    /// it is released. Answers the plugin's count, 0 with no plugin.
    int GetLoginCookie(unsigned char*& cookie);
    /// The plugin allocates the answer and its documentation says how it is
    /// released. Null with no plugin.
    wchar_t* SignRequest(wchar_t const* url, RequestParam const* params, int paramCount,
                         HttpMethod method, ParsingMode mode, wchar_t const* first,
                         wchar_t const* second, BufferTransformCallback callback);
    /// As SignRequest. Null with no plugin.
    wchar_t* SignUrlForBrowser(wchar_t const* url, bool flag, BufferTransformCallback callback);
    /// @}

    /// @name Servers, proxy, events
    /// @{

    Server GetServer() const;      ///< Value 0 with no plugin.
    bool SetServer(Server server); ///< False with no plugin.
    /// Text getter.
    int GetUrl(WebServicesUrlCode code, wchar_t* buffer, int capacity) const;
    /// Two buffers, each with its capacity. False with no plugin.
    bool GetProxyAuthenticationDialogText(wchar_t* title, int titleCapacity, wchar_t* text,
                                          int textCapacity);
    /// No effect with no plugin.
    void SetProxyAuthenticationDialogText(wchar_t const* title, wchar_t const* text);
    /// False with no plugin.
    bool HasProxyAuthentication(wchar_t const* host, int port);
    /// Two buffers, each with its capacity. False with no plugin.
    bool GetProxyAuthentication(wchar_t const* host, int port, wchar_t* user, int userCapacity,
                                wchar_t* password, int passwordCapacity,
                                BufferTransformCallback callback);
    /// False with no plugin.
    bool SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                wchar_t const* password, BufferTransformCallback callback);
    bool HasProxyInfo() const; ///< False with no plugin.
    bool ClearProxyInfo();     ///< False with no plugin.
    /// The plugin keeps the pointer until RemoveObserver and calls the observer
    /// itself. No effect with no plugin.
    void AddObserver(IWebServicesObserver* observer);
    void RemoveObserver(IWebServicesObserver* observer); ///< No effect with no plugin.
    bool HasEvent() const;                               ///< False with no plugin.
    bool DispatchEvent();                                ///< False with no plugin.
    /// @}

    /// @name OAuth2
    /// A spec is handed to the plugin by value and not kept by the library.
    /// @{

    bool IsOAuth2Enabled() const;                   ///< False with no plugin.
    bool EnableOAuth2(OAuth2TokenSpec const& spec); ///< False with no plugin.
    bool EnableOAuth2(bool enable);                 ///< False with no plugin.
    bool DisableOAuth2();                           ///< False with no plugin.
    /// Stores the plugin's token in `token`. False with no plugin, if the plugin
    /// refuses or gives nothing, and if what it gives is no token document; a
    /// document with a spec and no text changes the spec of `token` alone.
    bool GetOAuth2AccessToken(OAuth2TokenSpec const& spec, OAuth2Token& token,
                              BufferTransformCallback callback, bool flag);
    /// Text getter.
    int GetOAuth2AccessToken(wchar_t* buffer, int capacity, BufferTransformCallback callback,
                             bool flag);
    bool RefreshOAuth2Token(OAuth2TokenSpec const& spec, bool flag); ///< False with no plugin.
    bool RefreshOAuth2Token(bool flag);                              ///< False with no plugin.
    bool IsOAuth2TokenExpired(OAuth2TokenSpec const& spec) const;    ///< False with no plugin.
    bool IsOAuth2TokenExpired() const;                               ///< False with no plugin.
    unsigned int GetOAuth2TokenExpiryDate(OAuth2TokenSpec const& spec) const; ///< 0 with no plugin.
    unsigned int GetOAuth2TokenExpiryDate() const;                            ///< 0 with no plugin.
    bool IsOAuth2TokenAvailable(OAuth2TokenSpec const& spec) const; ///< False with no plugin.
    bool IsOAuth2TokenAvailable() const;                            ///< False with no plugin.
    /// @}

private:
    WebServicesManager();
    ~WebServicesManager();
    WebServicesManager(WebServicesManager const&) = delete;
    WebServicesManager& operator=(WebServicesManager const&) = delete;

    WebServicesConfiguration* fallbackConfiguration;
};

} // namespace Halvorix::WebServices
