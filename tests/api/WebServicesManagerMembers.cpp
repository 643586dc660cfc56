#include "api/MemberWalk.h"

#include <WebServicesManager.h>
#include "framework/Secrets.h"

using namespace Halvorix::WebServices;

namespace MemberWalk {

namespace {

WebServicesManager& Manager() { return *WebServicesManager::GetInstance(); }

namespace Secrets = Rig::Secrets;

std::wstring const password = Secrets::Wide(Secrets::ProxyPassword);

OAuth2TokenSpec Spec()
{
    return OAuth2TokenSpec(static_cast<OAuth2TokenType>(2),
                           (Secrets::Wide(Secrets::Scope) + L" a").c_str());
}

// The same as the plugin is given it, in the record's spelling.
std::string const specDocument = R"("{\n\t\"legacy\" : false,\n\t\"scope\" : \"a )" +
                                 std::string(Secrets::Scope) + R"(\",\n\t\"type\" : 2\n}")";

std::string const noText = "0, untouched";

/// A getter whose buffer and answer are the plugin's.
Member TextGetter(std::string const& name, int (WebServicesManager::*getter)(wchar_t*, int) const,
                  int capacity)
{
    std::string const operation = "ISSOClient::" + name;
    return {"WebServicesManager::" + name + "(wchar_t*, int) const",
            [getter, capacity] {
                Room<wchar_t> room(capacity);
                int const length = (Manager().*getter)(room.Data(), room.Capacity());
                return Told(length, room);
            },
            noText,
            Filled(operation),
            {operation + "(" + std::to_string(capacity) + ")"}};
}

Member Question(std::string const& name, bool (WebServicesManager::*question)() const)
{
    return {"WebServicesManager::" + name + "() const",
            [question] { return Told((Manager().*question)()); },
            "false",
            "true",
            {"ISSOClient::" + name + "()"}};
}

Member Action(std::string const& name, bool (WebServicesManager::*action)())
{
    return {"WebServicesManager::" + name + "()",
            [action] { return Told((Manager().*action)()); },
            "false",
            "true",
            {"ISSOClient::" + name + "()"}};
}

std::vector<Member> StaticMembers()
{
    return {
        {"WebServicesManager::Initialize()",
         [] {
             bool const answer = WebServicesManager::Initialize();
             bool const initialized = WebServicesManager::IsInitialized();
             bool const instance = WebServicesManager::GetInstance() != nullptr;
             WebServicesManager::Uninitialize();
             return Told(answer, initialized, instance);
         },
         "true, true, true",
         "true, true, true",
         {"ISSOClientModule::Initialize(false, false)", "ISSOClientModule::Uninitialize()"}},
        {"WebServicesManager::Initialize(bool, bool)",
         [] {
             bool const answer = WebServicesManager::Initialize(true, true);
             bool const initialized = WebServicesManager::IsInitialized();
             bool const instance = WebServicesManager::GetInstance() != nullptr;
             WebServicesManager::Uninitialize();
             return Told(answer, initialized, instance);
         },
         "true, true, true",
         "true, true, true",
         {"ISSOClientModule::Initialize(true, false)", "ISSOClientModule::Uninitialize()"}},
        {"WebServicesManager::Initialize(OAuth2TokenSpec const&)",
         [] {
             bool const answer = WebServicesManager::Initialize(Spec());
             bool const initialized = WebServicesManager::IsInitialized();
             bool const instance = WebServicesManager::GetInstance() != nullptr;
             WebServicesManager::Uninitialize();
             return Told(answer, initialized, instance);
         },
         "true, true, true",
         "true, true, true",
         {"ISSOClientModule::Initialize(" + specDocument + ")",
          "ISSOClientModule::Uninitialize()"}},
        {"WebServicesManager::IsInitialized()",
         [] {
             bool const before = WebServicesManager::IsInitialized();
             WebServicesManager::Initialize();
             bool const during = WebServicesManager::IsInitialized();
             WebServicesManager::Uninitialize();
             return Told(before, during, WebServicesManager::IsInitialized());
         },
         "false, true, false",
         "false, true, false",
         {"ISSOClientModule::Initialize(false, false)", "ISSOClientModule::Uninitialize()"}},
        {"WebServicesManager::GetSupportFileSearchPaths(wchar_t*, int)",
         [] {
             Room<wchar_t> room(59);
             int const length =
                 WebServicesManager::GetSupportFileSearchPaths(room.Data(), room.Capacity());
             return Told(length, room);
         },
         noText,
         Filled("ISSOClientModule::GetSupportFileSearchPaths"),
         {"ISSOClientModule::GetSupportFileSearchPaths(59)"}},
        {"WebServicesManager::SetSupportFileSearchPaths(wchar_t const*)",
         [] {
             WebServicesManager::SetSupportFileSearchPaths(L"one;;two");
             return Returned;
         },
         Returned,
         Returned,
         {R"(ISSOClientModule::SetSupportFileSearchPaths("one;;two"))"}},
        OfTheLibrary(
            "WebServicesManager::EnableLog(bool)",
            [] {
                WebServicesManager::EnableLog(true);
                return Returned;
            },
            Returned),
        // Leaves the manager initialized for the members that follow.
        {"WebServicesManager::Initialize(bool)",
         [] {
             bool const answer = WebServicesManager::Initialize(true);
             return Told(answer, WebServicesManager::IsInitialized());
         },
         "true, true",
         "true, true",
         {"ISSOClientModule::Initialize(true, false)"}},
        OfTheLibrary(
            "WebServicesManager::GetInstance()",
            [] {
                WebServicesManager* const instance = WebServicesManager::GetInstance();
                return Told(instance != nullptr, WebServicesManager::GetInstance() == instance);
            },
            "true, true"),
        OfTheLibrary(
            "WebServicesManager::IsLogEnabled() const",
            [] {
                WebServicesManager::EnableLog(false);
                return Told(Manager().IsLogEnabled());
            },
            "true"),
    };
}

std::vector<Member> ConfigurationAndCacheMembers()
{
    return {
        {"WebServicesManager::GetConfiguration() const",
         [] {
             WebServicesConfiguration const& configuration = Manager().GetConfiguration();
             return Told(configuration, &Manager().GetConfiguration() == &configuration);
         },
         "0, true",
         "0 ConsumerKey=ISSOClient::GetConfiguration, true",
         {"ISSOClient::GetConfiguration()", "ISSOClient::GetConfiguration()"}},
        {"WebServicesManager::SetConfiguration(WebServicesConfiguration const&)",
         [] {
             static WebServicesConfiguration configuration;
             AddressOf("given configuration", &configuration);
             configuration.SetConsumerKey(L"given");
             bool const answer = Manager().SetConfiguration(configuration);
             return Told(answer, configuration);
         },
         "false, 0 ConsumerKey=given",
         "true, 0 ConsumerKey=given",
         {R"(ISSOClient::SetConfiguration("given", {given configuration}))"}},
        TextGetter("GetCachePath", &WebServicesManager::GetCachePath, 41),
        OfTheLibrary(
            "WebServicesManager::SetCachePath(wchar_t const*)",
            [] {
                Manager().SetCachePath(L"path");
                return Returned;
            },
            Returned),
        {"WebServicesManager::IsCacheEnabled(CacheType) const",
         [] { return Told(Manager().IsCacheEnabled(static_cast<CacheType>(31))); },
         "false",
         "true",
         {"ISSOClient::IsCacheEnabled(31)"}},
        {"WebServicesManager::EnableCache(CacheType, bool)",
         [] {
             Manager().EnableCache(static_cast<CacheType>(-32), true);
             Manager().EnableCache(static_cast<CacheType>(37), false);
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClient::EnableCache(-32, true)", "ISSOClient::EnableCache(37, false)"}},
        {"WebServicesManager::IsCacheAvailable(CacheType) const",
         [] { return Told(Manager().IsCacheAvailable(static_cast<CacheType>(33))); },
         "false",
         "true",
         {"ISSOClient::IsCacheAvailable(33)"}},
        {"WebServicesManager::InvalidateCache(CacheType)",
         [] {
             Manager().InvalidateCache(static_cast<CacheType>(34));
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClient::InvalidateCache(34)"}},
        {"WebServicesManager::GetServiceEntitlement(wchar_t const*, wchar_t*&)",
         [] {
             Handed<wchar_t> text;
             ServiceEntitlement const answer =
                 Manager().GetServiceEntitlement(L"first service", text.pointer);
             return Told(answer, text);
         },
         "0, untouched",
         "3, 'ISSOClient::GetServiceEntitlement'",
         {R"(ISSOClient::GetServiceEntitlement("first service", 81))"}},
        {"WebServicesManager::GetServiceEntitlement(wchar_t const*)",
         [] { return Told(Manager().GetServiceEntitlement(L"second service")); },
         "0",
         "4",
         {R"(ISSOClient::GetServiceEntitlement("second service"))"}},
        {"WebServicesManager::GetServiceEntitlementEx(wchar_t*&)",
         [] {
             Handed<wchar_t> text;
             bool const answer = Manager().GetServiceEntitlementEx(text.pointer);
             return Told(answer, text);
         },
         "false, untouched",
         "true, 'ISSOClient::GetServiceEntitlementEx'",
         {"ISSOClient::GetServiceEntitlementEx(81)"}},
        {"WebServicesManager::GetServiceEntitlementEx(wchar_t const*, wchar_t*&)",
         [] {
             Handed<wchar_t> text;
             bool const answer = Manager().GetServiceEntitlementEx(L"third service", text.pointer);
             return Told(answer, text);
         },
         "false, untouched",
         "true, 'ISSOClient::GetServiceEntitlementEx'",
         {R"(ISSOClient::GetServiceEntitlementEx("third service", 81))"}},
    };
}

std::vector<Member> UserMembers()
{
    return {
        TextGetter("GetLoginStateFile", &WebServicesManager::GetLoginStateFile, 42),
        TextGetter("GetUserNameW", &WebServicesManager::GetUserNameW, 43),
        TextGetter("GetLoginUserName", &WebServicesManager::GetLoginUserName, 44),
        TextGetter("GetUserId", &WebServicesManager::GetUserId, 45),
        TextGetter("GetUserEmail", &WebServicesManager::GetUserEmail, 46),
        TextGetter("GetUserFirstName", &WebServicesManager::GetUserFirstName, 47),
        TextGetter("GetUserLastName", &WebServicesManager::GetUserLastName, 48),
        {"WebServicesManager::GetUserInfo(wchar_t*&)",
         [] {
             Handed<wchar_t> info;
             bool const answer = Manager().GetUserInfo(info.pointer);
             return Told(answer, info);
         },
         "false, null",
         "true, 'ISSOClient::GetUserInfo'",
         {"ISSOClient::GetUserInfo(0)"}},
        Question("IsLoggedIn", &WebServicesManager::IsLoggedIn),
        {"WebServicesManager::GetLoginExpiryDate() const",
         [] { return Told(Manager().GetLoginExpiryDate()); },
         "0",
         "4000000002",
         {"ISSOClient::GetLoginExpiryDate()"}},
        Question("IsLoginExpired", &WebServicesManager::IsLoginExpired),
        Question("IsLoginValid", &WebServicesManager::IsLoginValid),
        Question("IsSSOEnabledForAllUsers", &WebServicesManager::IsSSOEnabledForAllUsers),
        {"WebServicesManager::GetLdapDomainKey(wchar_t*, int)",
         [] {
             Room<wchar_t> room(49);
             int const length = Manager().GetLdapDomainKey(room.Data(), room.Capacity());
             return Told(length, room);
         },
         noText,
         Filled("ISSOClient::GetLdapDomainKey"),
         {"ISSOClient::GetLdapDomainKey(49)"}},
        {"WebServicesManager::GetCloudStorageQuota(long long&, long long&) const",
         [] {
             long long first = 11;
             long long second = 12;
             bool const answer = Manager().GetCloudStorageQuota(first, second);
             return Told(answer, first, second);
         },
         "false, 0, 0",
         "true, 5000000001, 5000000002",
         {"ISSOClient::GetCloudStorageQuota(0, 0)"}},
    };
}

std::vector<Member> LoginMembers()
{
    return {
        {"WebServicesManager::InitiateLogin(wchar_t const*, wchar_t*, int, LoginErrorEx&, int&)",
         [] {
             Room<wchar_t> room(51);
             auto error = static_cast<LoginErrorEx>(91);
             int value = 92;
             bool const answer =
                 Manager().InitiateLogin(L"extended", room.Data(), room.Capacity(), error, value);
             return Told(answer, room, error, value);
         },
         "false, untouched, 7, 0",
         R"(true, 'ISSOClient::InitiateLogin\0', 11, 12)",
         {R"(ISSOClient::InitiateLogin("extended", 51, 7, 0))"}},
        {"WebServicesManager::InitiateLogin(wchar_t const*, int, wchar_t*, int, LoginError&, int&)",
         [] {
             Room<wchar_t> room(52);
             auto error = static_cast<LoginError>(91);
             int value = 92;
             bool const answer = Manager().InitiateLogin(L"numbered", 93, room.Data(),
                                                         room.Capacity(), error, value);
             return Told(answer, room, error, value);
         },
         "false, untouched, 2, 0",
         R"(true, 'ISSOClient::InitiateLogin\0', 13, 14)",
         {R"(ISSOClient::InitiateLogin("numbered", 93, 52, 2, 0))"}},
        {"WebServicesManager::InitiateLogin(wchar_t*, int, LoginError&, int&)",
         [] {
             Room<wchar_t> room(53);
             auto error = static_cast<LoginError>(91);
             int value = 92;
             bool const answer =
                 Manager().InitiateLogin(room.Data(), room.Capacity(), error, value);
             return Told(answer, room, error, value);
         },
         "false, untouched, 2, 0",
         R"(true, 'ISSOClient::InitiateLogin\0', 15, 16)",
         {"ISSOClient::InitiateLogin(53, 2, 0)"}},
        {"WebServicesManager::InitiateLogin(wchar_t*, int)",
         [] {
             Room<wchar_t> room(54);
             bool const answer = Manager().InitiateLogin(room.Data(), room.Capacity());
             return Told(answer, room);
         },
         "false, untouched",
         R"(true, 'ISSOClient::InitiateLogin\0')",
         {"ISSOClient::InitiateLogin(54)"}},
        {"WebServicesManager::CompleteLogin(NetworkCookieJar const&)",
         [] {
             NetworkCookie cookie;
             cookie.SetName("n");
             cookie.SetValue("v");
             cookie.SetDomain(L"d");
             cookie.SetPath(L"p");
             cookie.SetHttpOnly(true);
             cookie.SetExpiryDate(5000000003);
             NetworkCookieJar jar;
             jar.AddCookie(cookie);
             bool const answer = Manager().CompleteLogin(jar);
             return Told(answer, jar);
         },
         "false, [n=v;d;p;;httpOnly;5000000003]",
         "true, [n=v;d;p;;httpOnly;5000000003]",
         {R"(ISSOClient::CompleteLogin("{\n\t\"Cookies\" : \n\t[\n\t\t{\n)"
          R"(\t\t\t\"Domain\" : \"d\",\n\t\t\t\"ExpiryDate\" : 5000000003,\n)"
          R"(\t\t\t\"IsHttpOnly\" : true,\n\t\t\t\"IsSecure\" : false,\n)"
          R"(\t\t\t\"Name\" : \"n\",\n\t\t\t\"Path\" : \"p\",\n\t\t\t\"Value\" : \"v\"\n)"
          R"(\t\t}\n\t]\n}"))"}},
        Action("CompleteLogin", &WebServicesManager::CompleteLogin),
        Action("RestoreLogin", &WebServicesManager::RestoreLogin),
        Action("Logout", &WebServicesManager::Logout),
        // The walk's script gives the cookies.
        {"WebServicesManager::InitiateLogout(wchar_t*, int, NetworkCookieJar&, "
         "BufferTransformCallback)",
         [] {
             Room<wchar_t> room(55);
             NetworkCookieJar jar;
             jar.AddCookie(NetworkCookie());
             bool const answer =
                 Manager().InitiateLogout(room.Data(), room.Capacity(), jar, Callback);
             return Told(answer, room, jar);
         },
         R"(false, '\0', [=;;;;;0])",
         R"(true, '\0', [first=)" + std::string(Secrets::CookieValue) + ";;;;;0 second=;;;;;0]",
         {R"(ISSOClient::InitiateLogout("", 55, true, 86))"}},
        Action("CompleteLogout", &WebServicesManager::CompleteLogout),
    };
}

std::vector<Member> SigningMembers()
{
    return {
        Question("IsTokenAvailable", &WebServicesManager::IsTokenAvailable),
        {"WebServicesManager::GetAccessToken(wchar_t*, int, bool)",
         [] {
             Room<wchar_t> room(56);
             int const whole = Manager().GetAccessToken(nullptr, -1, false);
             int const length = Manager().GetAccessToken(room.Data(), room.Capacity(), true);
             return Told(whole, length, room);
         },
         "0, " + noText,
         "26, " + Filled("ISSOClient::GetAccessToken"),
         {"ISSOClient::GetAccessToken(-1, false)", "ISSOClient::GetAccessToken(56, true)"}},
        // Cut by the plugin, since the whole text has no room.
        {"WebServicesManager::GetAccessToken(wchar_t*, int)",
         [] {
             Room<wchar_t> room(11);
             int const length = Manager().GetAccessToken(room.Data(), room.Capacity());
             return Told(length, room);
         },
         noText,
         Filled("ISSOClient"),
         {"ISSOClient::GetAccessToken(11)"}},
        {"WebServicesManager::GetTokenExpiryDate() const",
         [] { return Told(Manager().GetTokenExpiryDate()); },
         "0",
         "4000000001",
         {"ISSOClient::GetTokenExpiryDate()"}},
        Question("IsTokenExpired", &WebServicesManager::IsTokenExpired),
        {"WebServicesManager::RefreshToken(bool)",
         [] {
             bool const first = Manager().RefreshToken(false);
             return Told(first, Manager().RefreshToken(true));
         },
         "false, false",
         "true, true",
         {"ISSOClient::RefreshToken(false)", "ISSOClient::RefreshToken(true)"}},
        {"WebServicesManager::GetLoginCookie(unsigned char*&)",
         [] {
             Handed<unsigned char> cookie;
             int const length = Manager().GetLoginCookie(cookie.pointer);
             return Told(length, cookie);
         },
         "0, null",
         "26, 'ISSOClient::GetLoginCookie'",
         {"ISSOClient::GetLoginCookie(0)"}},
        {"WebServicesManager::SignRequest(wchar_t const*, RequestParam const*, int, HttpMethod, "
         "ParsingMode, wchar_t const*, wchar_t const*, BufferTransformCallback)",
         [] {
             Handed<wchar_t> text;
             text.pointer = Manager().SignRequest(
                 L"url", Nowhere<RequestParam const*>(61), 62, static_cast<HttpMethod>(63),
                 static_cast<ParsingMode>(64), L"first", L"second", Callback);
             return Told(text);
         },
         "null",
         "'ISSOClient::SignRequest'",
         {R"(ISSOClient::SignRequest("url", 61, 62, 63, 64, "first", "second", 86))"}},
        {"WebServicesManager::SignUrlForBrowser(wchar_t const*, bool, BufferTransformCallback)",
         [] {
             Handed<wchar_t> text;
             text.pointer = Manager().SignUrlForBrowser(L"url", true, Callback);
             Handed<wchar_t> other;
             other.pointer = Manager().SignUrlForBrowser(L"other", false, nullptr);
             return Told(text, other);
         },
         "null, null",
         "'ISSOClient::SignUrlForBrowser', 'ISSOClient::SignUrlForBrowser'",
         {R"(ISSOClient::SignUrlForBrowser("url", true, 86))",
          R"(ISSOClient::SignUrlForBrowser("other", false, 0))"}},
    };
}

std::vector<Member> ServerAndProxyMembers()
{
    return {
        {"WebServicesManager::GetServer() const",
         [] { return Told(Manager().GetServer()); },
         "0",
         "5",
         {"ISSOClient::GetServer()"}},
        {"WebServicesManager::SetServer(Server)",
         [] { return Told(Manager().SetServer(static_cast<Server>(-35))); },
         "false",
         "true",
         {"ISSOClient::SetServer(-35)"}},
        {"WebServicesManager::GetUrl(WebServicesUrlCode, wchar_t*, int) const",
         [] {
             Room<wchar_t> room(57);
             int const length = Manager().GetUrl(static_cast<WebServicesUrlCode>(36), room.Data(),
                                                 room.Capacity());
             return Told(length, room);
         },
         noText,
         Filled("ISSOClient::GetUrl"),
         {"ISSOClient::GetUrl(36, 57)"}},
        {"WebServicesManager::GetProxyAuthenticationDialogText(wchar_t*, int, wchar_t*, int)",
         [] {
             Room<wchar_t> title(11);
             Room<wchar_t> text(58);
             bool const answer = Manager().GetProxyAuthenticationDialogText(
                 title.Data(), title.Capacity(), text.Data(), text.Capacity());
             return Told(answer, title, text);
         },
         "false, untouched, untouched",
         R"(true, 'ISSOClient\0', 'ISSOClient::GetProxyAuthenticationDialogText\0')",
         {"ISSOClient::GetProxyAuthenticationDialogText(11, 58)"}},
        {"WebServicesManager::SetProxyAuthenticationDialogText(wchar_t const*, wchar_t const*)",
         [] {
             Manager().SetProxyAuthenticationDialogText(L"title", L"text");
             return Returned;
         },
         Returned,
         Returned,
         {R"(ISSOClient::SetProxyAuthenticationDialogText("title", "text"))"}},
        {"WebServicesManager::HasProxyAuthentication(wchar_t const*, int)",
         [] { return Told(Manager().HasProxyAuthentication(L"host", 71)); },
         "false",
         "true",
         {R"(ISSOClient::HasProxyAuthentication("host", 71))"}},
        {"WebServicesManager::GetProxyAuthentication(wchar_t const*, int, wchar_t*, int, wchar_t*, "
         "int, BufferTransformCallback)",
         [] {
             Room<wchar_t> user(11);
             Room<wchar_t> password(60);
             bool const answer =
                 Manager().GetProxyAuthentication(L"host", 72, user.Data(), user.Capacity(),
                                                  password.Data(), password.Capacity(), Callback);
             return Told(answer, user, password);
         },
         "false, untouched, untouched",
         R"(true, 'ISSOClient\0', 'ISSOClient::GetProxyAuthentication\0')",
         {R"(ISSOClient::GetProxyAuthentication("host", 72, 11, 60, 86))"}},
        {"WebServicesManager::SetProxyAuthentication(wchar_t const*, int, wchar_t const*, "
         "wchar_t const*, BufferTransformCallback)",
         [] {
             return Told(Manager().SetProxyAuthentication(L"host", 73, L"user", password.c_str(),
                                                          Callback));
         },
         "false",
         "true",
         {R"(ISSOClient::SetProxyAuthentication("host", 73, "user", ")" +
          std::string(Secrets::ProxyPassword) + R"(", 86))"}},
        Question("HasProxyInfo", &WebServicesManager::HasProxyInfo),
        Action("ClearProxyInfo", &WebServicesManager::ClearProxyInfo),
        {"WebServicesManager::AddObserver(IWebServicesObserver*)",
         [] {
             Manager().AddObserver(Nowhere<IWebServicesObserver*>(74));
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClient::AddObserver(74)"}},
        {"WebServicesManager::RemoveObserver(IWebServicesObserver*)",
         [] {
             Manager().RemoveObserver(Nowhere<IWebServicesObserver*>(75));
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClient::RemoveObserver(75)"}},
        Question("HasEvent", &WebServicesManager::HasEvent),
        Action("DispatchEvent", &WebServicesManager::DispatchEvent),
    };
}

std::vector<Member> OAuth2Members()
{
    return {
        Question("IsOAuth2Enabled", &WebServicesManager::IsOAuth2Enabled),
        {"WebServicesManager::EnableOAuth2(OAuth2TokenSpec const&)",
         [] { return Told(Manager().EnableOAuth2(Spec())); },
         "false",
         "true",
         {"ISSOClient::EnableOAuth2(" + specDocument + ")"}},
        {"WebServicesManager::EnableOAuth2(bool)",
         [] {
             bool const first = Manager().EnableOAuth2(false);
             return Told(first, Manager().EnableOAuth2(true));
         },
         "false, false",
         "true, true",
         {"ISSOClient::EnableOAuth2(false)", "ISSOClient::EnableOAuth2(true)"}},
        Action("DisableOAuth2", &WebServicesManager::DisableOAuth2),
        // The walk's script gives the token.
        {"WebServicesManager::GetOAuth2AccessToken(OAuth2TokenSpec const&, OAuth2Token&, "
         "BufferTransformCallback, bool)",
         [] {
             OAuth2Token token;
             bool const answer = Manager().GetOAuth2AccessToken(Spec(), token, Callback, true);
             return Told(answer, token);
         },
         "false, '' of 1 ''",
         "true, '" + std::string(Secrets::AccessToken) + "' of 3 'c'",
         {"ISSOClient::GetOAuth2AccessToken(" + specDocument + ", true, 86, true)"}},
        {"WebServicesManager::GetOAuth2AccessToken(wchar_t*, int, BufferTransformCallback, bool)",
         [] {
             Room<wchar_t> room(12);
             int const length =
                 Manager().GetOAuth2AccessToken(room.Data(), room.Capacity(), Callback, true);
             return Told(length, room);
         },
         noText,
         Filled(R"({"OAuth2Acc)"),
         {"ISSOClient::GetOAuth2AccessToken(12, 86, true)"}},
        {"WebServicesManager::RefreshOAuth2Token(OAuth2TokenSpec const&, bool)",
         [] {
             bool const first = Manager().RefreshOAuth2Token(Spec(), false);
             return Told(first, Manager().RefreshOAuth2Token(Spec(), true));
         },
         "false, false",
         "true, true",
         {"ISSOClient::RefreshOAuth2Token(" + specDocument + ", false)",
          "ISSOClient::RefreshOAuth2Token(" + specDocument + ", true)"}},
        {"WebServicesManager::RefreshOAuth2Token(bool)",
         [] {
             bool const first = Manager().RefreshOAuth2Token(false);
             return Told(first, Manager().RefreshOAuth2Token(true));
         },
         "false, false",
         "true, true",
         {"ISSOClient::RefreshOAuth2Token(false)", "ISSOClient::RefreshOAuth2Token(true)"}},
        {"WebServicesManager::IsOAuth2TokenExpired(OAuth2TokenSpec const&) const",
         [] { return Told(Manager().IsOAuth2TokenExpired(Spec())); },
         "false",
         "true",
         {"ISSOClient::IsOAuth2TokenExpired(" + specDocument + ")"}},
        Question("IsOAuth2TokenExpired", &WebServicesManager::IsOAuth2TokenExpired),
        {"WebServicesManager::GetOAuth2TokenExpiryDate(OAuth2TokenSpec const&) const",
         [] { return Told(Manager().GetOAuth2TokenExpiryDate(Spec())); },
         "0",
         "4000000003",
         {"ISSOClient::GetOAuth2TokenExpiryDate(" + specDocument + ")"}},
        {"WebServicesManager::GetOAuth2TokenExpiryDate() const",
         [] { return Told(Manager().GetOAuth2TokenExpiryDate()); },
         "0",
         "4000000004",
         {"ISSOClient::GetOAuth2TokenExpiryDate()"}},
        {"WebServicesManager::IsOAuth2TokenAvailable(OAuth2TokenSpec const&) const",
         [] { return Told(Manager().IsOAuth2TokenAvailable(Spec())); },
         "false",
         "true",
         {"ISSOClient::IsOAuth2TokenAvailable(" + specDocument + ")"}},
        Question("IsOAuth2TokenAvailable", &WebServicesManager::IsOAuth2TokenAvailable),
        {"WebServicesManager::Uninitialize()",
         [] {
             bool const answer = WebServicesManager::Uninitialize();
             return Told(answer, WebServicesManager::IsInitialized(),
                         WebServicesManager::GetInstance() == nullptr);
         },
         "true, false, true",
         "true, false, true",
         {"ISSOClientModule::Uninitialize()"}},
    };
}

} // namespace

std::vector<Member> WebServicesManagerMembers()
{
    std::vector<Member> members;
    for (auto const& part : {StaticMembers, ConfigurationAndCacheMembers, UserMembers, LoginMembers,
                             SigningMembers, ServerAndProxyMembers, OAuth2Members})
        for (Member const& member : part())
            members.push_back(member);
    return members;
}

} // namespace MemberWalk
