// What is behind WebServicesManager.

#include <algorithm>
#include <functional>
#include <limits>
#include <list>
#include <mutex>
#include <utility>

#include <plugin/Defaults.h>

#include "openid/interfaces/Claims.h"
#include "openid/interfaces/HostConfiguration.h"
#include "openid/interfaces/HostTexts.h"
#include "openid/interfaces/Interfaces.h"
#include "openid/interfaces/OnSession.h"
#include "openid/interfaces/TokenSpecs.h"
#include "openid/interfaces/UrlCodes.h"
#include "openid/platform/Files.h"
#include "openid/session/AtEnd.h"

namespace Halvorix::OpenId {

namespace {

using namespace SSOServices;
using namespace WebServices;

unsigned int AsDate(std::int64_t seconds)
{
    constexpr std::int64_t last = std::numeric_limits<unsigned int>::max();
    return static_cast<unsigned int>(std::clamp<std::int64_t>(seconds, 0, last));
}

bool IsExpired(TokenView const& token) { return !token.text->empty() && !token.usable; }

TokenView AskedOAuth2Token(Session& session, TokenSpec const& spec)
{
    return session.OAuth2Enabled() ? session.AccessToken(spec) : TokenView();
}

bool IsLoginPast(Session& session)
{
    std::int64_t const date = session.LoginExpiryDate();
    return date != 0 && date <= WallClock();
}

/// The number for InitiateLogin that asks for a sign-in on another device.
constexpr int OnAnotherDevice = 1;

/// What a host shows, a line each: the address, and for another device the code and, if there is
/// one, the address that has the code in it.
Secret TextToShow(BegunLogin const& login)
{
    std::string text = *login.url;
    for (std::string const& line : {login.userCode, login.urlWithCode})
        if (!line.empty())
            text += '\n' + line;
    return Secret(std::move(text));
}

class OpenIdClient : public OnSession<SSOClientDefaults> {
public:
    using OnSession::OnSession;

    // Configuration. Earlier ones stay where they are: a host may hold a reference to one.
    WebServicesConfiguration const& GetConfiguration() override
    {
        auto const* const current =
            Ask([this](Session& session) { return &CurrentConfiguration(session); });
        return current == nullptr ? SSOClientDefaults::GetConfiguration() : *current;
    }
    bool SetConfiguration(WebServicesConfiguration const& configuration) override
    {
        return Ask([&](Session& session) {
            if (!session.SelectServer(static_cast<std::int32_t>(configuration.GetServer())))
                return false;
            session.UseClient(ClientIdOf(configuration), ScopesOf(configuration));
            std::lock_guard<std::mutex> const lock(mutex);
            given = &Keep(configuration);
            return true;
        });
    }

    // The cache: what is in memory of the store. It is always on; to empty it is safe.
    int GetCachePath(wchar_t* buffer, int capacity) override
    {
        return Ask([&](Session& session) {
            return CopyText(PathText(session.StoreFolder()), buffer, capacity);
        });
    }
    bool IsCacheEnabled(CacheType) override { return true; }
    bool IsCacheAvailable(CacheType) override { return IsLoggedIn(); }
    void InvalidateCache(CacheType) override
    {
        Ask([](Session& session) { session.ForgetMemory(); });
    }
    int GetLoginStateFile(wchar_t* buffer, int capacity) override
    {
        return Ask([&](Session& session) {
            return CopyText(PathText(session.StoreFile(session.Server())), buffer, capacity);
        });
    }

    // The user.
    int GetUserNameW(wchar_t* buffer, int capacity) override
    {
        return Ask([&](Session& session) {
            return CopyText(FullName(session.Claims()), buffer, capacity);
        });
    }
    int GetLoginUserName(wchar_t* buffer, int capacity) override
    {
        return CopyClaim({"preferred_username", "email", "sub"}, buffer, capacity);
    }
    int GetUserId(wchar_t* buffer, int capacity) override
    {
        return CopyClaim({"sub"}, buffer, capacity);
    }
    int GetUserEmail(wchar_t* buffer, int capacity) override
    {
        return CopyClaim({"email"}, buffer, capacity);
    }
    int GetUserFirstName(wchar_t* buffer, int capacity) override
    {
        return CopyClaim({"given_name"}, buffer, capacity);
    }
    int GetUserLastName(wchar_t* buffer, int capacity) override
    {
        return CopyClaim({"family_name"}, buffer, capacity);
    }
    bool GetUserInfo(wchar_t*& info) override
    {
        return Ask([&](Session& session) {
            Json::Value const claims = session.Claims();
            if (claims.isNull())
                return false;
            info = NewWideText(WriteJson(claims));
            return true;
        });
    }
    bool IsLoggedIn() override
    {
        return Ask([](Session& session) { return session.IsLoggedIn(); });
    }
    unsigned int GetLoginExpiryDate() override
    {
        return Ask([](Session& session) { return AsDate(session.LoginExpiryDate()); });
    }
    bool IsLoginExpired() override
    {
        return Ask([](Session& session) { return session.IsLoggedIn() && IsLoginPast(session); });
    }
    bool IsLoginValid() override
    {
        return Ask([](Session& session) { return session.IsLoggedIn() && !IsLoginPast(session); });
    }

    // Signing in and out.
    bool InitiateLogin(wchar_t const* loginHint, wchar_t* buffer, int capacity, LoginErrorEx& error,
                       int& value) override
    {
        bool const begun = Initiate(loginHint, buffer, capacity, value);
        error = begun ? LoginErrorEx() : error;
        return begun;
    }
    bool InitiateLogin(wchar_t const* loginHint, int where, wchar_t* buffer, int capacity,
                       LoginError& error, int& value) override
    {
        bool const begun = where == OnAnotherDevice
                               ? InitiateBy(&Session::BeginDeviceLogin, buffer, capacity, value)
                               : Initiate(loginHint, buffer, capacity, value);
        error = begun ? LoginError() : error;
        return begun;
    }
    bool InitiateLogin(wchar_t* buffer, int capacity, LoginError& error, int& value) override
    {
        return InitiateLogin(nullptr, 0, buffer, capacity, error, value);
    }
    bool InitiateLogin(wchar_t* buffer, int capacity) override
    {
        int value = 0;
        return Initiate(nullptr, buffer, capacity, value);
    }
    bool CompleteLogin(char const*) override
    {
        return Ask([](Session& session) {
            Report(session, "Cannot sign in with cookies",
                   "they need a browser inside the program, which RFC 8252 rules out",
                   "call CompleteLogin without a jar");
            return false;
        });
    }
    bool CompleteLogin() override
    {
        return Ask([this](Session& session) { return session.FinishLogin(TakeInitiated()); });
    }
    bool RestoreLogin() override
    {
        return Ask([](Session& session) { return session.RestoreLogin(); });
    }
    bool Logout() override
    {
        return Ask([](Session& session) { return session.Logout(); });
    }
    bool InitiateLogout(wchar_t* buffer, int capacity, char*&, BufferTransformCallback) override
    {
        return Ask([&](Session& session) {
            Secret const address(session.EndSessionAddress());
            return CopyWhole(address, buffer, capacity) > 0;
        });
    }
    bool CompleteLogout() override { return Logout(); }

    // The token that is not OAuth2's to the hosts: the default spec's.
    bool IsTokenAvailable() override { return StoredToken().usable; }
    int GetAccessToken(wchar_t* buffer, int capacity, bool) override
    {
        return Ask([&](Session& session) {
            return CopyWhole(session.AccessToken(session.DefaultSpec()).text, buffer, capacity);
        });
    }
    int GetAccessToken(wchar_t* buffer, int capacity) override
    {
        return GetAccessToken(buffer, capacity, false);
    }
    unsigned int GetTokenExpiryDate() override { return AsDate(StoredToken().expiryDate); }
    bool IsTokenExpired() override { return IsExpired(StoredToken()); }
    bool RefreshToken(bool) override
    {
        return Ask([](Session& session) { return session.RefreshToken(session.DefaultSpec()); });
    }

    // OAuth2, for the spec that is given or for the default.
    bool IsOAuth2Enabled() override
    {
        return Ask([](Session& session) { return session.OAuth2Enabled(); });
    }
    bool EnableOAuth2(char const* specJson) override
    {
        return Ask([&](Session& session) {
            auto const spec = ReadSpec(specJson);
            if (!spec)
                return false;
            session.SetDefaultSpec(MeantBy(*spec));
            session.EnableOAuth2(true);
            return true;
        });
    }
    bool EnableOAuth2(bool enable) override
    {
        return Ask([&](Session& session) {
            session.EnableOAuth2(enable);
            return true;
        });
    }
    bool DisableOAuth2() override { return EnableOAuth2(false); }
    bool GetOAuth2AccessToken(char const* specJson, char*& tokenJson, BufferTransformCallback,
                              bool) override
    {
        return Ask([&](Session& session) {
            auto const spec = ReadSpec(specJson);
            if (!spec)
                return false;
            TokenView const token = AskedOAuth2Token(session, MeantBy(*spec));
            if (token.text->empty())
                return false;
            tokenJson = NewTokenDocument(token.text, *spec);
            return true;
        });
    }
    int GetOAuth2AccessToken(wchar_t* buffer, int capacity, BufferTransformCallback, bool) override
    {
        return Ask([&](Session& session) {
            return CopyWhole(AskedOAuth2Token(session, session.DefaultSpec()).text, buffer,
                             capacity);
        });
    }
    bool RefreshOAuth2Token(char const* specJson, bool) override
    {
        return Ask([&](Session& session) {
            auto const spec = ReadSpec(specJson);
            return spec && session.OAuth2Enabled() && session.RefreshToken(MeantBy(*spec));
        });
    }
    bool RefreshOAuth2Token(bool) override
    {
        return Ask([](Session& session) {
            return session.OAuth2Enabled() && session.RefreshToken(session.DefaultSpec());
        });
    }
    bool IsOAuth2TokenExpired(char const* specJson) override
    {
        return IsExpired(StoredToken(specJson));
    }
    bool IsOAuth2TokenExpired() override { return IsExpired(StoredToken()); }
    unsigned int GetOAuth2TokenExpiryDate(char const* specJson) override
    {
        return AsDate(StoredToken(specJson).expiryDate);
    }
    unsigned int GetOAuth2TokenExpiryDate() override { return AsDate(StoredToken().expiryDate); }
    bool IsOAuth2TokenAvailable(char const* specJson) override
    {
        return StoredToken(specJson).usable;
    }
    bool IsOAuth2TokenAvailable() override { return StoredToken().usable; }

    // Servers.
    WebServices::Server GetServer() override
    {
        return Ask([](Session& session) { return WebServices::Server{session.Server()}; });
    }
    bool SetServer(WebServices::Server server) override
    {
        return Ask([&](Session& session) {
            return session.SelectServer(static_cast<std::int32_t>(server));
        });
    }
    int GetUrl(WebServicesUrlCode code, wchar_t* buffer, int capacity) override
    {
        return Ask([&](Session& session) {
            // A part of an address leads somewhere else.
            return CopyWhole(Secret(session.Url(UrlName(code))), buffer, capacity);
        });
    }

    // Proxies.
    bool HasProxyAuthentication(wchar_t const* host, int port) override
    {
        return Ask([&](Session& session) {
            auto found = session.FindProxyCredential(Given(host), port);
            if (found)
                Wipe(found->password);
            return found.has_value();
        });
    }
    bool GetProxyAuthentication(wchar_t const* host, int port, wchar_t* userBuffer,
                                int userCapacity, wchar_t* passwordBuffer, int passwordCapacity,
                                BufferTransformCallback) override
    {
        return Ask([&](Session& session) {
            auto found = session.FindProxyCredential(Given(host), port);
            if (!found)
                return false;
            CopyText(found->user, userBuffer, userCapacity);
            Secret const password(std::move(found->password));
            return CopyWhole(password, passwordBuffer, passwordCapacity) > 0 || password->empty();
        });
    }
    bool SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                wchar_t const* password, BufferTransformCallback) override
    {
        return Ask([&](Session& session) {
            session.SetProxyCredential({Given(host), port, Given(user), Given(password)});
            return true;
        });
    }
    bool HasProxyInfo() override
    {
        return Ask([](Session& session) { return session.HasProxyCredentials(); });
    }
    bool ClearProxyInfo() override
    {
        return Ask([](Session& session) {
            session.ClearProxyCredentials();
            return true;
        });
    }

    // Events. To dispatch one is to take it off: nobody can be called with it.
    bool HasEvent() override
    {
        return Ask([](Session& session) { return session.Events().HasEvent(); });
    }
    bool DispatchEvent() override
    {
        return Ask([](Session& session) { return session.Events().Dispatch(); });
    }

private:
    int CopyClaim(std::initializer_list<char const*> names, wchar_t* buffer, int capacity)
    {
        return Ask([&](Session& session) {
            return CopyText(FirstClaim(session.Claims(), names), buffer, capacity);
        });
    }

    bool Initiate(wchar_t const* loginHint, wchar_t* buffer, int capacity, int& status)
    {
        return InitiateBy([&](Session& session) { return session.BeginLogin(Given(loginHint)); },
                          buffer, capacity, status);
    }

    template <class Begin>
    bool InitiateBy(Begin const& begin, wchar_t* buffer, int capacity, int& status)
    {
        bool const begun = Ask([&](Session& session) {
            if (buffer == nullptr || capacity < 1)
                return false;
            auto login = std::invoke(begin, session);
            if (!login)
                return false;
            bool isTaken = false;
            AtEnd const ending([&] {
                if (!isTaken)
                    session.CancelLogin(*login);
            });
            Secret const text = TextToShow(*login);
            if (CopyWhole(text, buffer, capacity) == 0) {
                Report(session, "Cannot begin a sign-in",
                       "the address does not fit into the program's buffer of " +
                           std::to_string(capacity) + " characters",
                       "pass one for at least " + std::to_string(text->size() + 1));
                return false;
            }
            std::lock_guard<std::mutex> const lock(mutex);
            initiated = std::move(*login);
            isTaken = true;
            return true;
        });
        status = begun ? 200 : 404;
        return begun;
    }

    /// The sign-in that InitiateLogin began last; it is finished once.
    BegunLogin TakeInitiated()
    {
        std::lock_guard<std::mutex> const lock(mutex);
        return std::exchange(initiated, BegunLogin());
    }

    TokenView StoredToken()
    {
        return Ask([](Session& session) { return session.TokenAtHand(session.DefaultSpec()); });
    }
    TokenView StoredToken(char const* specJson)
    {
        return Ask([&](Session& session) {
            auto const spec = ReadSpec(specJson);
            return spec ? session.TokenAtHand(MeantBy(*spec)) : TokenView();
        });
    }

    /// As the host gave it, or as the file has it, with the server that is chosen now.
    WebServicesConfiguration const& CurrentConfiguration(Session& session)
    {
        ServerConfiguration const server = session.ChosenServer();
        std::int32_t const number = session.Server();
        std::lock_guard<std::mutex> const lock(mutex);
        auto current = given != nullptr ? *given : FromServer(server, number);
        current.SetServer(WebServices::Server{number});
        return Keep(current);
    }

    /// The one that is equal, or a new one. Under the mutex.
    WebServicesConfiguration const& Keep(WebServicesConfiguration const& configuration)
    {
        for (WebServicesConfiguration const& known : configurations)
            if (AreEqual(known, configuration))
                return known;
        return configurations.emplace_back(configuration);
    }

    std::mutex mutex; ///< Of what follows.
    std::list<WebServicesConfiguration> configurations;
    WebServicesConfiguration const* given = nullptr; ///< The host's last one.
    BegunLogin initiated;
};

} // namespace

std::shared_ptr<ISSOClient> MakeClient(std::shared_ptr<Session> session)
{
    return std::make_shared<OpenIdClient>(std::move(session));
}

} // namespace Halvorix::OpenId
