#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <json/value.h>

#include "openid/platform/Http.h"
#include "openid/platform/System.h"
#include "openid/protocol/Outcome.h"
#include "openid/protocol/Provider.h"
#include "openid/session/Configuration.h"
#include "openid/session/Events.h"
#include "openid/session/Log.h"

namespace Halvorix::OpenId {

/// Which token is meant. The scope in normal form, empty for all that the login was granted.
struct TokenSpec {
    std::int32_t type = 1;
    std::string scope;
};

/// A token as a host sees it.
struct TokenView {
    Secret text;                 ///< Empty: none was got for this spec.
    std::int64_t expiryDate = 0; ///< Seconds since 1970, 0 for none or not told.
    /// There, and good for another 60 s, or for the second half of a life under two minutes.
    bool usable = false;
};

struct PendingLogin;

/// A sign-in that was begun. Its holder finishes and cancels this one, and never another that came
/// after it.
struct BegunLogin {
    Secret url;              ///< The authorization address, or the one to open on another device.
    std::string userCode;    ///< To be entered on the other device; empty for one in a browser.
    std::string urlWithCode; ///< The other device's address with the code in it; may be empty.
    std::weak_ptr<PendingLogin> login;
};

/// What a session asks of the world. Tests put others in their place.
struct Outside {
    Provider::Send send = SendHttp;
    std::function<bool(std::string const& url, std::string& reason)> openBrowser = OpenInBrowser;
    std::function<bool()> canShowBrowser = CanShowBrowser;
    std::function<std::int64_t()> wallClock = WallClock;
    std::function<std::chrono::milliseconds()> sinceBoot = SinceBoot;
    std::function<void(std::chrono::milliseconds)> sleep = [](std::chrono::milliseconds time) {
        std::this_thread::sleep_for(time);
    };
};

/// What the interfaces share: the login at the chosen server, its tokens and the providers. Any
/// thread, several at once; no lock is held while the network is asked, but for that of the store
/// around a refresh. Whatever fails is logged here, with its cause and remedy.
class Session {
public:
    /// @param configuration or why there is none: then nobody can sign in
    Session(Outcome<PluginConfiguration> configuration, std::shared_ptr<LogFile> log,
            Outside outside = {});
    ~Session();

    // Servers. The number is that of the public enumeration, which has no names of its own:
    // "production" is 0 if there is such a one, the others follow in alphabetical order.
    std::int32_t Server() const;                       ///< -1 if there is none.
    bool SelectServer(std::int32_t number);            ///< Ends no login: each server has its own.
    std::string ServerName(std::int32_t number) const; ///< Empty if there is none.
    std::int32_t ServerNumber(std::string const& name) const; ///< -1 if there is none.
    /// A host's consumer key and scopes in place of the configuration's; empty texts leave those.
    void UseClient(std::string const& clientId, std::string const& scopes);
    /// What the chosen server is asked with, UseClient regarded; empty texts if there is none.
    ServerConfiguration ChosenServer() const;
    /// "issuer", "authorization", "token", "userinfo", "jwks", "revocation", "end_session",
    /// "device_authorization", "account"; empty for any other and while the network is away.
    std::string Url(std::string const& name);
    /// What a host wants to hear, and its user's browser to open, in the place of an address of the
    /// provider. Requests of our own go where the provider says.
    std::map<std::string, std::string> UrlOverrides(std::int32_t server) const;
    /// False for a server that there is not, for a name that is not known or is "token", "jwks" or
    /// "issuer", and for an address that is not https.
    bool SetUrlOverrides(std::int32_t server, std::map<std::string, std::string> const& urls);
    bool ClearUrlOverrides(std::int32_t server);

    // Signing in.
    /// Where no browser can be shown, on another device if the configuration permits it.
    bool LoginInBrowser(std::string const& loginHint);
    /// With the listener open for FinishLogin. One login at a time.
    std::optional<BegunLogin> BeginLogin(std::string const& loginHint);
    /// On another device (RFC 8628), with its address and code.
    std::optional<BegunLogin> BeginDeviceLogin();
    /// False for one that was ended, or is being finished already.
    bool FinishLogin(BegunLogin const& begun);
    /// Waits for nothing. Nothing happens if it was ended.
    void CancelLogin(BegunLogin const& begun);
    /// Ends the one that is in progress, whoever began it: for those who sign out.
    void CancelAnyLogin();
    bool IsLoginInProgress() const;
    /// From the store, with a refresh if there is no token that is still good; never a browser.
    bool RestoreLogin();

    // Signing out.
    /// The provider's address for it; empty if nobody is signed in or it has none.
    std::string EndSessionAddress();
    /// Revokes at best effort, wipes the store. False if nobody was signed in.
    bool Logout();

    // The user.
    /// Looks at the store, too, since another process may have signed in or out.
    bool IsLoggedIn();
    Json::Value Claims(); ///< Null if nobody is signed in.
    /// The end of the last token where there is no refresh token; 0 otherwise, since no standard
    /// tells how long a refresh token lives.
    std::int64_t LoginExpiryDate();
    /// For GetSessionState, without a secret: "server", "issuer", "clientId", "loggedIn" and
    /// "loginInProgress"; of a login also "subject", "signedInAt", "scopes", "refreshable"
    /// and "stored": false if this process alone knows it.
    Json::Value State();

    // Tokens.
    bool OAuth2Enabled() const;
    void EnableOAuth2(bool enable);
    TokenSpec DefaultSpec() const;
    void SetDefaultSpec(TokenSpec const& spec);
    /// From memory, else the store, else by a refresh. Empty text: not to be had.
    TokenView AccessToken(TokenSpec const& spec);
    /// By a refresh in any case, but for one that another thread or process makes meanwhile.
    bool RefreshToken(TokenSpec const& spec);
    /// As it lies there: no network.
    TokenView TokenAtHand(TokenSpec const& spec);

    // The store.
    std::filesystem::path StoreFolder() const;
    std::filesystem::path StoreFile(std::int32_t server) const; ///< Empty if there is none.
    void LockStore();
    void UnlockStore();
    /// Forgets when tokens end and what failed a moment ago, as a new process would not know it.
    void ForgetMemory();

    // Proxies.
    void SetProxyCredential(ProxyCredential credential);
    std::optional<ProxyCredential> FindProxyCredential(std::string const& host, int port) const;
    bool HasProxyCredentials() const;
    void ClearProxyCredentials();

    EventQueue& Events();
    LogFile& Log();

private:
    /// With address and code in the log, where the user has to look for them.
    bool LoginOnDevice();

    struct Hidden;
    std::unique_ptr<Hidden> const hidden;
};

} // namespace Halvorix::OpenId
