#pragma once

#include "PluginTypes.h"
#include "SlotOrder.h"

namespace Halvorix::SSOServices {

/// The operations behind WebServicesManager, each with the arguments and the
/// result of the public method of its name.
///
/// Called with no lock held, from any thread, several at once. Value objects
/// arrive as JSON text, terminated and valid for the call only. A JSON result
/// goes into a `char*&` that arrives null: allocate it with `new char[]`; the
/// library reads it only if the operation returns true, and then releases it with
/// `delete[]`; a text beside a false is the plugin's to release. An exception of
/// an operation reaches the host. Buffers through `wchar_t*&` and `unsigned char*&` and returned
/// `wchar_t*` pass straight to the host, so the plugin's documentation has to
/// say how the host releases them. Expiry dates are plain numbers, whose unit it has to say
/// as well (docs/boundary-documents.md).
class ISSOClient {
public:
    virtual ~ISSOClient() = default;
    /// @name Operations
    /// @{

    /// As the public method of this name.
    virtual WebServices::WebServicesConfiguration const& GetConfiguration() = 0;
    virtual bool SetConfiguration(WebServices::WebServicesConfiguration const& configuration) = 0;
    virtual int GetCachePath(wchar_t* buffer, int capacity) = 0;
    HXSSO_OVERLOADS_2(
        virtual WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const*,
                                                                      wchar_t*&) = 0,
        virtual WebServices::ServiceEntitlement GetServiceEntitlement(wchar_t const*) = 0);
    HXSSO_OVERLOADS_2(virtual bool GetServiceEntitlementEx(wchar_t*&) = 0,
                      virtual bool GetServiceEntitlementEx(wchar_t const*, wchar_t*&) = 0);
    virtual int GetLoginStateFile(wchar_t* buffer, int capacity) = 0;
    virtual int GetUserNameW(wchar_t* buffer, int capacity) = 0;
    virtual int GetLoginUserName(wchar_t* buffer, int capacity) = 0;
    virtual int GetUserId(wchar_t* buffer, int capacity) = 0;
    virtual int GetUserEmail(wchar_t* buffer, int capacity) = 0;
    virtual int GetUserFirstName(wchar_t* buffer, int capacity) = 0;
    virtual int GetUserLastName(wchar_t* buffer, int capacity) = 0;
    virtual bool GetUserInfo(wchar_t*& info) = 0;
    virtual bool IsTokenAvailable() = 0;
    HXSSO_OVERLOADS_2(virtual int GetAccessToken(wchar_t* buffer, int capacity, bool) = 0,
                      virtual int GetAccessToken(wchar_t* buffer, int capacity) = 0);
    virtual bool IsCacheEnabled(WebServices::CacheType type) = 0;
    virtual void EnableCache(WebServices::CacheType type, bool enable) = 0;
    virtual bool IsCacheAvailable(WebServices::CacheType type) = 0;
    virtual void InvalidateCache(WebServices::CacheType type) = 0;
    virtual int GetLoginCookie(unsigned char*& cookie) = 0;
    virtual bool IsLoggedIn() = 0;
    virtual unsigned int GetTokenExpiryDate() = 0;
    virtual bool IsTokenExpired() = 0;
    virtual unsigned int GetLoginExpiryDate() = 0;
    virtual bool IsLoginExpired() = 0;
    virtual bool IsLoginValid() = 0;
    virtual bool RefreshToken(bool) = 0;
    virtual wchar_t* SignRequest(wchar_t const* url, WebServices::RequestParam const* params,
                                 int paramCount, WebServices::HttpMethod method,
                                 WebServices::ParsingMode mode, wchar_t const*, wchar_t const*,
                                 BufferTransformCallback callback) = 0;
    virtual wchar_t* SignUrlForBrowser(wchar_t const* url, bool,
                                       BufferTransformCallback callback) = 0;
    virtual WebServices::Server GetServer() = 0;
    virtual bool SetServer(WebServices::Server server) = 0;
    virtual int GetUrl(WebServices::WebServicesUrlCode code, wchar_t* buffer, int capacity) = 0;
    virtual bool GetCloudStorageQuota(long long&, long long&) = 0;
    HXSSO_OVERLOADS_4(virtual bool InitiateLogin(wchar_t const*, wchar_t* buffer, int capacity,
                                                 WebServices::LoginErrorEx& error, int&) = 0,
                      virtual bool InitiateLogin(wchar_t const*, int, wchar_t* buffer, int capacity,
                                                 WebServices::LoginError& error, int&) = 0,
                      virtual bool InitiateLogin(wchar_t* buffer, int capacity,
                                                 WebServices::LoginError& error, int&) = 0,
                      virtual bool InitiateLogin(wchar_t* buffer, int capacity) = 0);
    HXSSO_OVERLOADS_2(virtual bool CompleteLogin(char const* networkCookieJarJson) = 0,
                      virtual bool CompleteLogin() = 0);
    virtual bool RestoreLogin() = 0;
    virtual bool Logout() = 0;
    virtual void AddObserver(WebServices::IWebServicesObserver* observer) = 0;
    virtual void RemoveObserver(WebServices::IWebServicesObserver* observer) = 0;
    virtual bool GetProxyAuthenticationDialogText(wchar_t* titleBuffer, int titleCapacity,
                                                  wchar_t* textBuffer, int textCapacity) = 0;
    virtual void SetProxyAuthenticationDialogText(wchar_t const* title, wchar_t const* text) = 0;
    virtual bool HasProxyAuthentication(wchar_t const* host, int port) = 0;
    virtual bool GetProxyAuthentication(wchar_t const* host, int port, wchar_t* userBuffer,
                                        int userCapacity, wchar_t* passwordBuffer,
                                        int passwordCapacity, BufferTransformCallback callback) = 0;
    virtual bool SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                        wchar_t const* password,
                                        BufferTransformCallback callback) = 0;
    virtual void Reserved1() {} ///< Never called.
    virtual bool HasProxyInfo() = 0;
    virtual bool ClearProxyInfo() = 0;
    virtual bool IsOAuth2Enabled() = 0;
    HXSSO_OVERLOADS_2(virtual bool EnableOAuth2(char const* oauth2TokenSpecJson) = 0,
                      virtual bool EnableOAuth2(bool) = 0);
    HXSSO_OVERLOADS_2(virtual bool GetOAuth2AccessToken(char const* oauth2TokenSpecJson,
                                                        char*& oauth2TokenJson,
                                                        BufferTransformCallback callback, bool) = 0,
                      virtual int GetOAuth2AccessToken(wchar_t* buffer, int capacity,
                                                       BufferTransformCallback callback, bool) = 0);
    HXSSO_OVERLOADS_2(virtual bool RefreshOAuth2Token(char const* oauth2TokenSpecJson, bool) = 0,
                      virtual bool RefreshOAuth2Token(bool) = 0);
    HXSSO_OVERLOADS_2(virtual bool IsOAuth2TokenExpired(char const* oauth2TokenSpecJson) = 0,
                      virtual bool IsOAuth2TokenExpired() = 0);
    HXSSO_OVERLOADS_2(
        virtual unsigned int GetOAuth2TokenExpiryDate(char const* oauth2TokenSpecJson) = 0,
        virtual unsigned int GetOAuth2TokenExpiryDate() = 0);
    HXSSO_OVERLOADS_2(virtual bool IsOAuth2TokenAvailable(char const* oauth2TokenSpecJson) = 0,
                      virtual bool IsOAuth2TokenAvailable() = 0);
    virtual bool IsSSOEnabledForAllUsers() = 0;
    virtual int GetLdapDomainKey(wchar_t* buffer, int capacity) = 0;
    virtual bool DispatchEvent() = 0;
    virtual bool HasEvent() = 0;
    virtual bool DisableOAuth2() = 0;
    virtual bool InitiateLogout(wchar_t* buffer, int capacity, char*& networkCookieJarJson,
                                BufferTransformCallback callback) = 0;
    virtual bool CompleteLogout() = 0;
    /// @}
};

} // namespace Halvorix::SSOServices
