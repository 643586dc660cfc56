#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "openid/protocol/Authorization.h"
#include "openid/protocol/DeviceGrant.h"
#include "openid/protocol/Listener.h"
#include "openid/session/ProxyCredentials.h"
#include "openid/session/Requests.h"
#include "openid/session/Session.h"
#include "openid/session/TokenClock.h"
#include "openid/session/TokenStore.h"

// Inside of a session. Each of the files beside this one holds the part of it that it is named
// after.

namespace Halvorix::OpenId {

/// A server as it was chosen when an operation began; empty if there is none.
struct Target {
    std::int32_t number = -1;
    std::string name;
    ServerConfiguration server; ///< With the host's client in the place of the configuration's.
    std::shared_ptr<Provider> provider;

    explicit operator bool() const { return provider != nullptr; }
    /// Names the login that belongs to it.
    std::string Key() const { return server.issuer + '\n' + server.clientId; }
};

/// A sign-in on another device.
struct PendingDevice {
    Secret code;
    DevicePolling polling;
};

/// A login that is on its way.
struct PendingLogin {
    Target target;
    Metadata metadata;
    AuthorizationSecrets secrets; ///< Empty on another device, whose grant has neither of them.
    std::unique_ptr<Listener> listener;  ///< In a browser.
    std::optional<PendingDevice> device; ///< On another device.
    std::chrono::milliseconds deadline{0};
    std::atomic<bool> cancelled{false};
    bool isAwaited = false; ///< Under the session's mutex.

    ~PendingLogin();
};

/// What this process knows of a login beside what the store says. Never destroyed before the
/// session, so that requests may look at its flag.
struct Account {
    /// Raised while it signs out: refreshes give up.
    std::atomic<bool> isEnding{false};

    // Under the session's mutex.
    /// The state of the store when it was last read or written; no value before.
    std::optional<std::string> stored;
    /// Whose login that was; empty for nobody.
    std::string storedIdentity;
    /// What could not be written, and the state of the store that it stands for. Without a value
    /// that is the state in which the store is found next.
    std::optional<StoredLogin> unsaved;
    std::optional<std::string> unsavedOver;
    /// Who was signed in when it was last looked at; empty for nobody, no value before.
    std::optional<std::string> seen;
    /// What was logged of the store last.
    std::string told;
    /// When a refresh for a spec failed last.
    std::map<std::pair<std::int32_t, std::string>, std::chrono::milliseconds> failures;
};

struct Session::Hidden {
    Hidden(Outcome<PluginConfiguration> configuration, std::shared_ptr<LogFile> log,
           Outside outside);

    Outcome<PluginConfiguration> const configuration;
    std::shared_ptr<LogFile> const log;
    Outside const outside;
    std::vector<std::string> const serverNames; ///< Their places are the servers' numbers.
    EventQueue events;
    TokenStore store;
    TokenClock clock;
    ProxyCredentials proxies;

    std::mutex mutex; ///< Of what follows. Neither file nor network is asked under it.
    std::int32_t server;
    std::string clientId, scopes; ///< The host's own.
    std::map<std::int32_t, std::map<std::string, std::string>> urlOverrides;
    std::map<std::string, std::shared_ptr<Provider>> providers;
    std::map<std::string, std::unique_ptr<Account>> accounts;
    std::shared_ptr<PendingLogin> pending;
    TokenSpec defaultSpec;
    bool isOAuth2Enabled = true;
    std::vector<std::pair<std::string, std::string>> heldForHost;

    // Servers.cpp
    Target Chosen();
    /// Of a number that there is.
    ServerConfiguration const& Configured(std::int32_t number) const;
    ServerConfiguration WithHostsClient(std::int32_t number) const; ///< Under the mutex.
    std::string Override(std::int32_t number, std::string const& url);
    std::chrono::milliseconds NetworkLimit() const;

    // Login.cpp
    std::int32_t DefaultType();
    std::shared_ptr<PendingLogin> Reserve();
    using Preparation = std::function<Outcome<BegunLogin>(PendingLogin&)>;
    std::optional<BegunLogin> Begin(Preparation const& prepare);
    Outcome<BegunLogin> Prepare(PendingLogin& login, std::string const& loginHint);
    bool Await(std::shared_ptr<PendingLogin> const& login);
    void TellOf(Peer const& peer);
    Outcome<TokenAnswer> AskForTokens(PendingLogin& login);
    /// Who signed in, by what the token endpoint gave.
    Outcome<StoredLogin> Identify(PendingLogin& login, TokenAnswer answer);
    /// Tokens, and whose they are.
    Outcome<StoredLogin> Obtain(PendingLogin& login);
    Outcome<bool> Commit(PendingLogin& login, StoredLogin const& result);
    /// Keeps what a sign-in came to, and tells the log and the host.
    bool Conclude(PendingLogin& login, Outcome<StoredLogin> const& result);
    /// Makes room for the next one, if it is not there already.
    void End(std::shared_ptr<PendingLogin> const& login);

    // DeviceLogin.cpp
    Outcome<BegunLogin> PrepareDevice(PendingLogin& login);
    Outcome<TokenAnswer> PollForTokens(PendingLogin& login);

    // Logins.cpp
    Account& AccountOf(Target const& target);
    /// Who is signed in, by the store, or by memory where the store could not be written. Fails
    /// while the store cannot be read: then nobody knows.
    Outcome<std::optional<StoredLogin>> Look(Target const& target);
    /// The same for what is asked without the store's lock: a failure is told, and memory counts.
    std::optional<StoredLogin> Current(Target const& target);
    void TellOnce(Account& account, Failure const& why);
    /// Whether this process alone knows the login.
    bool IsUnsaved(Target const& target);
    /// Before a refresh token is used up, under the store's lock: writes the login as it is. A
    /// login that is known to this process alone may go on without.
    Outcome<bool> MakeSureOfStore(Target const& target, StoredLogin const& login);
    /// Writes, under the store's lock; what cannot be written stays in memory, and is told.
    /// @return whether it was written
    bool Keep(Target const& target, StoredLogin const& login);
    /// Removes, under the store's lock, and tells the host. What cannot be removed stays known.
    Outcome<bool> Forget(Target const& target);
    /// Removes the login's file, if there is one, with what killed processes left beside it; under
    /// the store's lock. What is left then is told.
    Outcome<bool> RemoveStored(Target const& target);
    Outcome<std::unique_ptr<TokenStore::Lock>> Lock(Target const& target);
    Outcome<std::unique_ptr<TokenStore::Lock>> LockUnless(std::atomic<bool> const& cancelled,
                                                          Target const& target);
    std::chrono::milliseconds LimitForLock() const;
    /// For all requests of one who has the store's lock.
    std::chrono::milliseconds LimitUnderLock() const;

    // LoginTokens.cpp
    /// The token of an answer that came just now: its end counts from here.
    StoredToken TakeToken(Target const& target, TokenSpec const& spec, TokenAnswer const& answer);

    // Refresh.cpp
    /// A new token, or the one that somebody else got meanwhile.
    /// @param known the token that will not do, if it is more than its end that is wrong with it
    std::optional<StoredToken> Refresh(Target const& target, TokenSpec const& asked,
                                       Secret const& known);
    std::optional<StoredToken> RefreshUnderLock(Target const& target, TokenSpec const& asked,
                                                Secret const& known);
    /// Whether the refresh token may be used up for it.
    Outcome<bool> MayRefresh(Target const& target, TokenSpec const& spec, StoredLogin const& login);
    std::optional<StoredToken> Accept(Target const& target, TokenSpec const& asked,
                                      StoredLogin login, TokenAnswer answer);
    /// Takes over what a refresh's id_token says, or tells why the answer is not to be used.
    std::optional<Failure> TakeIdToken(Target const& target, TokenAnswer const& answer,
                                       StoredLogin& login);
    bool IsScopeAtFault(Target const& target, TokenSpec const& spec, StoredLogin const& login,
                        Failure const& why);
    void SignOutRefused(Target const& target, TokenSpec const& asked);
    bool FailedJustNow(Target const& target, TokenSpec const& asked);
    void Failed(Target const& target, TokenSpec const& asked, Failure const& why);
    /// None of the questions of the next seconds is passed on.
    void Pause(Target const& target, TokenSpec const& asked);

    // Logout.cpp
    /// Under the store's lock. Answers the refresh tokens that could be read.
    std::vector<Secret> ForgetSetAside(Target const& target);
    /// At best effort; what fails is told.
    void Revoke(Target const& target, std::vector<Secret> const& refreshTokens,
                std::vector<Secret> const& accessTokens = {});
    /// The same of a login: of its access tokens only those that have no refresh token.
    void Revoke(Target const& target, StoredLogin const& login);
    /// Of a sign-in that was ended after its tokens had come.
    void RevokeGivenUp(Target const& target, StoredLogin const& login);
    /// Those that are still good; none where there is a refresh token, with which they end.
    std::vector<Secret> AccessTokensToRevoke(Target const& target, StoredLogin const& login);
    void RevokeReplaced(Target const& target, StoredLogin const& replaced,
                        StoredLogin const& login);
};

/// That a sign-in was ended by the host.
Failure WasCancelled();
/// Puts a token into the place of the one for the same spec.
void PutToken(StoredLogin& login, StoredToken token);
/// Null if there is none.
StoredToken const* FindToken(StoredLogin const& login, TokenSpec const& spec);
/// The spec in normal form, with an empty scope where it is all that the login asked for or was
/// granted: that needs no token of its own.
TokenSpec NormalSpec(TokenSpec const& spec, StoredLogin const& login);
/// Whether a refresh may ask for it: for nothing that the login neither asked for nor was granted.
bool IsGranted(TokenSpec const& spec, StoredLogin const& login);
/// Under which spec a new token is kept, by the scope that the provider says it has (empty if it
/// is not told). A narrower one for all of the login narrows the login.
TokenSpec GrantedSpec(TokenSpec const& spec, std::string const& granted, StoredLogin& login);
/// Claims of a user with newer ones in their place: those of an id_token about the protocol stay
/// out of what userinfo may say, and what serves a single answer alone is dropped.
void AddClaims(Json::Value& claims, Json::Value const& newer, bool isIdToken);

} // namespace Halvorix::OpenId
