// What of the public surface the compiler can hold: signatures with their
// constness, sizes, what can be copied. There is nothing to run.

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <WebServicesConfiguration.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;
using namespace Halvorix::WebServicesUI;

namespace {

/// Of a member pointer: the parameter's type chooses among the overloads, and
/// no conversion adds or removes a const.
template <class Signature>
std::true_type Exactly(Signature);

// Never evaluated: the address of an imported function is no constant.
#define IS_A(Class, member, Result, ...)                                                           \
    static_assert(decltype(Exactly<Result(Class::*) __VA_ARGS__>(&Class::member))::value)
#define IS_STATIC(Class, member, Result, ...)                                                      \
    static_assert(decltype(Exactly<Result(*) __VA_ARGS__>(&Class::member))::value)

namespace OfTheManager {

using C = WebServicesManager;

IS_STATIC(C, Initialize, bool, ());
IS_STATIC(C, Initialize, bool, (bool));
IS_STATIC(C, Initialize, bool, (bool, bool));
IS_STATIC(C, Initialize, bool, (OAuth2TokenSpec const&));
IS_STATIC(C, Uninitialize, bool, ());
IS_STATIC(C, GetInstance, C*, ());
IS_STATIC(C, IsInitialized, bool, ());
IS_STATIC(C, GetSupportFileSearchPaths, int, (wchar_t*, int));
IS_STATIC(C, SetSupportFileSearchPaths, void, (wchar_t const*));
IS_STATIC(C, EnableLog, void, (bool));

IS_A(C, IsLogEnabled, bool, () const);
IS_A(C, GetConfiguration, WebServicesConfiguration const&, () const);
IS_A(C, GetCachePath, int, (wchar_t*, int) const);
IS_A(C, GetLoginStateFile, int, (wchar_t*, int) const);
IS_A(C, GetUserNameW, int, (wchar_t*, int) const);
IS_A(C, GetLoginUserName, int, (wchar_t*, int) const);
IS_A(C, GetUserId, int, (wchar_t*, int) const);
IS_A(C, GetUserEmail, int, (wchar_t*, int) const);
IS_A(C, GetUserFirstName, int, (wchar_t*, int) const);
IS_A(C, GetUserLastName, int, (wchar_t*, int) const);
IS_A(C, IsTokenAvailable, bool, () const);
IS_A(C, IsCacheEnabled, bool, (CacheType) const);
IS_A(C, IsCacheAvailable, bool, (CacheType) const);
IS_A(C, IsLoggedIn, bool, () const);
IS_A(C, GetTokenExpiryDate, unsigned int, () const);
IS_A(C, IsTokenExpired, bool, () const);
IS_A(C, GetLoginExpiryDate, unsigned int, () const);
IS_A(C, IsLoginExpired, bool, () const);
IS_A(C, IsLoginValid, bool, () const);
IS_A(C, GetUrl, int, (WebServicesUrlCode, wchar_t*, int) const);
IS_A(C, GetCloudStorageQuota, bool, (long long&, long long&) const);
IS_A(C, GetServer, Server, () const);
IS_A(C, HasProxyInfo, bool, () const);
IS_A(C, IsOAuth2Enabled, bool, () const);
IS_A(C, IsOAuth2TokenExpired, bool, (OAuth2TokenSpec const&) const);
IS_A(C, IsOAuth2TokenExpired, bool, () const);
IS_A(C, GetOAuth2TokenExpiryDate, unsigned int, (OAuth2TokenSpec const&) const);
IS_A(C, GetOAuth2TokenExpiryDate, unsigned int, () const);
IS_A(C, IsOAuth2TokenAvailable, bool, (OAuth2TokenSpec const&) const);
IS_A(C, IsOAuth2TokenAvailable, bool, () const);
IS_A(C, IsSSOEnabledForAllUsers, bool, () const);
IS_A(C, HasEvent, bool, () const);

IS_A(C, SetConfiguration, bool, (WebServicesConfiguration const&));
IS_A(C, SetCachePath, void, (wchar_t const*));
IS_A(C, GetServiceEntitlement, ServiceEntitlement, (wchar_t const*, wchar_t*&));
IS_A(C, GetServiceEntitlement, ServiceEntitlement, (wchar_t const*));
IS_A(C, GetServiceEntitlementEx, bool, (wchar_t*&));
IS_A(C, GetServiceEntitlementEx, bool, (wchar_t const*, wchar_t*&));
IS_A(C, GetUserInfo, bool, (wchar_t*&));
IS_A(C, GetAccessToken, int, (wchar_t*, int, bool));
IS_A(C, GetAccessToken, int, (wchar_t*, int));
IS_A(C, EnableCache, void, (CacheType, bool));
IS_A(C, InvalidateCache, void, (CacheType));
IS_A(C, GetLoginCookie, int, (unsigned char*&));
IS_A(C, RefreshToken, bool, (bool));
IS_A(C, SignRequest, wchar_t*,
     (wchar_t const*, RequestParam const*, int, HttpMethod, ParsingMode, wchar_t const*,
      wchar_t const*, BufferTransformCallback));
IS_A(C, SignUrlForBrowser, wchar_t*, (wchar_t const*, bool, BufferTransformCallback));
IS_A(C, SetServer, bool, (Server));
IS_A(C, InitiateLogin, bool, (wchar_t const*, wchar_t*, int, LoginErrorEx&, int&));
IS_A(C, InitiateLogin, bool, (wchar_t const*, int, wchar_t*, int, LoginError&, int&));
IS_A(C, InitiateLogin, bool, (wchar_t*, int, LoginError&, int&));
IS_A(C, InitiateLogin, bool, (wchar_t*, int));
IS_A(C, CompleteLogin, bool, (NetworkCookieJar const&));
IS_A(C, CompleteLogin, bool, ());
IS_A(C, RestoreLogin, bool, ());
IS_A(C, Logout, bool, ());
IS_A(C, InitiateLogout, bool, (wchar_t*, int, NetworkCookieJar&, BufferTransformCallback));
IS_A(C, CompleteLogout, bool, ());
IS_A(C, AddObserver, void, (IWebServicesObserver*));
IS_A(C, RemoveObserver, void, (IWebServicesObserver*));
IS_A(C, GetProxyAuthenticationDialogText, bool, (wchar_t*, int, wchar_t*, int));
IS_A(C, SetProxyAuthenticationDialogText, void, (wchar_t const*, wchar_t const*));
IS_A(C, HasProxyAuthentication, bool, (wchar_t const*, int));
IS_A(C, GetProxyAuthentication, bool,
     (wchar_t const*, int, wchar_t*, int, wchar_t*, int, BufferTransformCallback));
IS_A(C, SetProxyAuthentication, bool,
     (wchar_t const*, int, wchar_t const*, wchar_t const*, BufferTransformCallback));
IS_A(C, ClearProxyInfo, bool, ());
IS_A(C, EnableOAuth2, bool, (OAuth2TokenSpec const&));
IS_A(C, EnableOAuth2, bool, (bool));
IS_A(C, DisableOAuth2, bool, ());
IS_A(C, GetOAuth2AccessToken, bool,
     (OAuth2TokenSpec const&, OAuth2Token&, BufferTransformCallback, bool));
IS_A(C, GetOAuth2AccessToken, int, (wchar_t*, int, BufferTransformCallback, bool));
IS_A(C, RefreshOAuth2Token, bool, (OAuth2TokenSpec const&, bool));
IS_A(C, RefreshOAuth2Token, bool, (bool));
IS_A(C, GetLdapDomainKey, int, (wchar_t*, int));
IS_A(C, DispatchEvent, bool, ());

} // namespace OfTheManager

namespace OfTheUIManager {

using C = WebServicesUIManager;

IS_STATIC(C, Initialize, bool, ());
IS_STATIC(C, Initialize, bool, (bool));
IS_STATIC(C, Initialize, bool, (bool, bool));
IS_STATIC(C, Initialize, bool, (OAuth2TokenSpec const&));
IS_STATIC(C, Uninitialize, bool, ());
IS_STATIC(C, GetInstance, C*, ());
IS_STATIC(C, IsInitialized, bool, ());
IS_STATIC(C, EnablePlatformIndependentMessageBoxStyle, void, (bool));
IS_STATIC(C, IsPlatformIndependentMessageBoxStyleEnabled, bool, ());

IS_A(C, GetCurrentLocale, int, (wchar_t*, int) const);
IS_A(C, IsLoginInProgress, bool, () const);
IS_A(C, IsLoggedIn, bool, () const);
IS_A(C, IsLoginValid, bool, () const);

IS_A(C, SetCurrentLocale, void, (wchar_t const*));
IS_A(C, GetHostApplicationWindow, unsigned long long, ());
IS_A(C, SetHostApplicationWindow, void, (unsigned long long));
IS_A(C, Login, bool, ());
IS_A(C, Login, bool, (wchar_t const*));
IS_A(C, Logout, bool, ());
IS_A(C, ShowAccountSettings, bool, ());
IS_A(C, AddObserver, void, (IWebServicesUIObserver*));
IS_A(C, RemoveObserver, void, (IWebServicesUIObserver*));

IS_STATIC(WebServicesAutomation, Login, bool, (wchar_t const*, wchar_t const*, bool));
IS_STATIC(WebServicesAutomation, Login, bool,
          (wchar_t const*, wchar_t const*, bool, bool, std::wstring&));

} // namespace OfTheUIManager

namespace OfTheTrustedCallers {

using C = SSOClientPrivate;
using Arguments = std::vector<std::string>;
using Overrides = std::map<std::wstring, std::wstring>;
using Schedule = StdUtil::RetrySchedule;
using Event = WebServicesPrivateCore::WebServicesEvent;
using std::chrono::milliseconds;
using std::chrono::seconds;

IS_STATIC(C, GetLoginInfo, std::wstring, (BufferTransformCallback));
IS_STATIC(C, GetUrl, std::wstring, (WebServicesUrlCode));
IS_STATIC(C, GetUrl, std::wstring, (std::wstring));
IS_STATIC(C, GetUrlOverrides, Overrides, (Server));
IS_STATIC(C, SetUrlOverrides, bool, (Server, Overrides const&));
IS_STATIC(C, ClearUrlOverrides, bool, (Server));
IS_STATIC(C, ServerToServerName, std::wstring, (Server));
IS_STATIC(C, ServerNameToServer, Server, (std::wstring));
IS_STATIC(C, Encrypt, std::wstring, (std::wstring const&));
IS_STATIC(C, GetCurrentConfigurationConsumerKey, void, (std::wstring&, std::wstring&));
IS_STATIC(C, GetSettingsPath, std::wstring, ());
IS_STATIC(C, GetLoginStateFile, std::wstring, ());
IS_STATIC(C, GetActiveOAuth2TokenRefreshRetrySchedule, Schedule, ());
IS_STATIC(C, SetOAuth2TokenRefreshRetrySchedule, bool, (Schedule const&));
IS_STATIC(C, GetLoginStateCacheFile, std::wstring, (std::wstring, Server, bool));
IS_STATIC(C, GetLoginStateCacheFile, std::wstring, (std::wstring, Server));
IS_STATIC(C, RestoreLogin, bool, (bool));
IS_STATIC(C, RaiseEvent, void, (Event, bool));
IS_STATIC(C, ToJsonString, std::string, (WebServicesConfiguration const*));
IS_STATIC(C, FromJsonString, bool, (WebServicesConfiguration*, std::string const&));
IS_STATIC(C, Equals, bool, (WebServicesConfiguration const&, WebServicesConfiguration const&));
IS_STATIC(C, LockLoginStateFile, void, ());
IS_STATIC(C, UnlockLoginStateFile, void, ());
IS_STATIC(C, Ping, bool, (std::map<std::string, std::string>&));
IS_STATIC(C, Ping, bool, ());
IS_STATIC(C, ClearEventQueue, void, ());
IS_STATIC(C, FreezeSSOServerProcess, bool, (BufferTransformCallback));
IS_STATIC(C, GetKillFrozenServerTimeout, seconds, ());
IS_STATIC(C, SetKillFrozenServerTimeout, bool, (seconds));
IS_STATIC(C, GetSessionState, std::string, ());
IS_STATIC(C, StartSSOServerProcess, bool, (Arguments const&, milliseconds, long long&));
IS_STATIC(C, GetSSOServerProcessArguments, bool, (Arguments&));
IS_STATIC(C, SetSSOServerProcessArguments, void, (Arguments const&));
IS_STATIC(C, GetSSOServerName, int, (char*, int));
IS_STATIC(C, GetSSOEventServerName, int, (char*, int));
IS_STATIC(C, GetProductName, std::wstring, ());
IS_STATIC(C, SetProductName, void, (std::wstring const&));
IS_STATIC(C, GetSSOServerAppPath, std::wstring, ());
IS_STATIC(C, GetSSOServerAppExeDirPath, std::wstring, ());
IS_STATIC(C, GetSSOClientPluginModule, std::wstring, ());
IS_STATIC(C, GetOpenSslModule, std::wstring, ());
IS_STATIC(C, ExpandPathVariables, bool, (std::wstring&));
IS_STATIC(C, GetModuleDirPath, std::wstring, (std::wstring const&));
IS_STATIC(C, GetSSOClientConfigFile, std::wstring, ());
IS_STATIC(C, GetSSOClientConfigFileOverride, std::wstring, ());
IS_STATIC(C, SetSSOClientConfigFileOverride, void, (std::wstring));
IS_STATIC(C, GetLogFile, std::wstring, ());

IS_STATIC(SSOServerManager, GetSSOServerAppFile, int, (wchar_t*, int));
IS_STATIC(SSOServerManager, GetSSOServerAppExeFile, int, (wchar_t*, int));
IS_STATIC(SSOServerManager, StartSSOServerProcess, bool, (milliseconds, long long&));
IS_STATIC(SSOServerManager, IsSSOServerProcessRunning, bool, ());
IS_STATIC(SSOServerManager, IsSSOServerProcessRunning, bool, (long long&));
IS_STATIC(SSOServerManager, IsSSOServerProcessReady, bool, ());
IS_STATIC(SSOServerManager, QuitSSOServerProcess, bool, (milliseconds));
IS_STATIC(SSOServerManager, QuitAllSSOServerProcesses, bool, (milliseconds));

IS_STATIC(SSOServicesManager, GetRsaCryptor, std::shared_ptr<IRsaCryptor>, ());
IS_STATIC(SSOServicesManager, SetRsaCryptor, void, (std::shared_ptr<IRsaCryptor>));

} // namespace OfTheTrustedCallers

namespace OfTheConfiguration {

using C = WebServicesConfiguration;

IS_A(C, operator=, C&, (C const&));
IS_A(C, GetServer, Server, () const);
IS_A(C, SetServer, void, (Server));

#define IS_A_TEXT(name)                                                                            \
    IS_A(C, Get##name, int, (wchar_t*, int) const);                                                \
    IS_A(C, Set##name, void, (wchar_t const*))

IS_A_TEXT(ConsumerKey);
IS_A_TEXT(ConsumerSecret);
IS_A_TEXT(SerialNumber);
IS_A_TEXT(ProductLineCode);
IS_A_TEXT(CIPUserId);
IS_A_TEXT(UPIRelease);
IS_A_TEXT(UPIMaster);
IS_A_TEXT(UPIBuild);
IS_A_TEXT(FeatureName);
IS_A_TEXT(FeatureVersion);
IS_A_TEXT(OAuth2ConsumerKey);
IS_A_TEXT(OAuth2ConsumerSecret);
IS_A_TEXT(OAuth2AccessTokenScope);

// One pointer beside that to the virtual operations.
static_assert(sizeof(C) == 2 * sizeof(void*));
static_assert(std::has_virtual_destructor_v<C>);
static_assert(std::is_copy_constructible_v<C> && std::is_default_constructible_v<C>);

} // namespace OfTheConfiguration

namespace OfTheTokens {

using Spec = OAuth2TokenSpec;

IS_A(Spec, operator=, Spec&, (Spec const&));
IS_A(Spec, operator==, bool, (Spec const&) const);
IS_A(Spec, operator!=, bool, (Spec const&) const);
IS_A(Spec, GetType, OAuth2TokenType, () const);
IS_A(Spec, SetType, bool, (OAuth2TokenType));
IS_A(Spec, GetScope, int, (wchar_t*, int) const);
// Const, and yet it writes.
IS_A(Spec, SetScope, bool, (wchar_t const*) const);

static_assert(sizeof(Spec) == sizeof(void*));
static_assert(!std::is_polymorphic_v<Spec>);
static_assert(std::is_default_constructible_v<Spec> && std::is_copy_constructible_v<Spec>);
static_assert(std::is_constructible_v<Spec, OAuth2TokenType, wchar_t const*>);

using Token = OAuth2Token;

IS_A(Token, operator=, Token&, (Token const&));
IS_A(Token, operator==, bool, (Token const&) const);
IS_A(Token, operator!=, bool, (Token const&) const);
IS_A(Token, IsValid, bool, () const);
IS_A(Token, GetTokenSize, int, () const);
IS_A(Token, GetToken, wchar_t const*, () const);
IS_A(Token, GetToken, int, (wchar_t*, int) const);
IS_A(Token, GetSpec, Spec, () const);

static_assert(sizeof(Token) == sizeof(void*));
static_assert(!std::is_polymorphic_v<Token>);
static_assert(std::is_default_constructible_v<Token> && std::is_copy_constructible_v<Token>);

} // namespace OfTheTokens

namespace OfTheCookies {

using Cookie = NetworkCookie;

IS_A(Cookie, operator=, Cookie&, (Cookie const&));
IS_A(Cookie, GetName, int, (char*, int) const);
IS_A(Cookie, SetName, void, (char const*));
IS_A(Cookie, GetValue, int, (char*, int) const);
IS_A(Cookie, SetValue, void, (char const*));
IS_A(Cookie, GetDomain, int, (wchar_t*, int) const);
IS_A(Cookie, SetDomain, void, (wchar_t const*));
IS_A(Cookie, GetPath, int, (wchar_t*, int) const);
IS_A(Cookie, SetPath, void, (wchar_t const*));
IS_A(Cookie, IsSecure, bool, () const);
IS_A(Cookie, SetSecure, void, (bool));
IS_A(Cookie, IsHttpOnly, bool, () const);
IS_A(Cookie, SetHttpOnly, void, (bool));
IS_A(Cookie, GetExpiryDate, long long, () const);
IS_A(Cookie, SetExpiryDate, void, (long long));

template <class Value, class = void>
constexpr bool isComparable = false;
template <class Value>
constexpr bool
    isComparable<Value, std::void_t<decltype(std::declval<Value>() == std::declval<Value>())>> =
        true;

static_assert(sizeof(Cookie) == sizeof(void*));
static_assert(!std::is_polymorphic_v<Cookie>);
static_assert(std::is_default_constructible_v<Cookie> && std::is_copy_constructible_v<Cookie>);
static_assert(!isComparable<Cookie> && isComparable<OAuth2Token>);

using Jar = NetworkCookieJar;

IS_A(Jar, AddCookie, bool, (Cookie const&));
IS_A(Jar, GetCookieCount, int, () const);
IS_A(Jar, GetCookie, Cookie, (int) const);
IS_A(Jar, DeleteAll, void, ());

static_assert(sizeof(Jar) == sizeof(void*));
static_assert(!std::is_polymorphic_v<Jar>);
static_assert(std::is_default_constructible_v<Jar>);
static_assert(!std::is_copy_constructible_v<Jar> && !std::is_copy_assignable_v<Jar>);
static_assert(!std::is_move_constructible_v<Jar> && !std::is_move_assignable_v<Jar>);

} // namespace OfTheCookies

namespace OfTheManagersAlone {

// Only the library makes and destroys the one instance of each.
template <class Manager>
constexpr bool isTheLibrarys =
    !std::is_default_constructible_v<Manager> && !std::is_destructible_v<Manager> &&
    !std::is_copy_constructible_v<Manager> && !std::is_copy_assignable_v<Manager>;

static_assert(isTheLibrarys<WebServicesManager>);
static_assert(isTheLibrarys<WebServicesUIManager>);
// Each holds one owned pointer and nothing else.
static_assert(sizeof(WebServicesManager) == sizeof(void*));
static_assert(sizeof(WebServicesUIManager) == sizeof(void*));

} // namespace OfTheManagersAlone

namespace OfTheSharedTypes {

template <class Enumeration>
constexpr bool
    hasSigned32Bits = std::is_same_v<std::underlying_type_t<Enumeration>, std::int32_t> &&
                      sizeof(Enumeration) == 4;

static_assert(hasSigned32Bits<Log::LogLevel>);
static_assert(hasSigned32Bits<Server>);
static_assert(hasSigned32Bits<CacheType>);
static_assert(hasSigned32Bits<HttpMethod>);
static_assert(hasSigned32Bits<ParsingMode>);
static_assert(hasSigned32Bits<LoginError>);
static_assert(hasSigned32Bits<LoginErrorEx>);
static_assert(hasSigned32Bits<WebServicesUrlCode>);
static_assert(hasSigned32Bits<ServiceEntitlement>);
static_assert(hasSigned32Bits<WebServicesPrivateCore::WebServicesEvent>);
static_assert(hasSigned32Bits<OAuth2TokenType>);

static_assert(static_cast<int>(Log::LogLevel::Error) == 2);
static_assert(static_cast<int>(Log::LogLevel::Warning) == 4);
static_assert(static_cast<int>(Log::LogLevel::Info) == 8);
static_assert(OAuth2TokenTypeDefault == 1);

static_assert(
    std::is_same_v<BufferTransformCallback, int (*)(char const*, int, char*, int, void*)>);

// The entries are copied bit for bit.
using Entry = decltype(StdUtil::RetrySchedule::second)::value_type;
static_assert(sizeof(StdUtil::RetrySchedule::first) == 8);
static_assert(sizeof(Entry) == 16 && std::is_trivially_copyable_v<Entry> &&
              std::is_trivially_destructible_v<Entry>);

} // namespace OfTheSharedTypes

} // namespace
