// Signing in: the authorization code with PKCE in the system's browser, and what every sign-in has.

#include <algorithm>
#include <optional>
#include <utility>

#include "openid/protocol/Texts.h"
#include "openid/session/AtEnd.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

using std::chrono::milliseconds;

constexpr char const* CannotSignIn = "Cannot sign in";

Failure Why(Failure::Kind kind, std::string reason, std::string remedy)
{
    Failure failure;
    failure.kind = kind;
    failure.reason = std::move(reason);
    failure.remedy = std::move(remedy);
    return failure;
}

/// The provider's answer in the browser's address, with the code in it; wiped at its end.
struct Response {
    Parameters parameters;
    ~Response()
    {
        for (auto& parameter : parameters)
            SSOServices::Wipe(parameter.second);
    }
};

} // namespace

Failure WasCancelled()
{
    return Why(Failure::Kind::Cancelled, "the host ended it", "sign in again when it is wanted");
}

PendingLogin::~PendingLogin()
{
    SSOServices::Wipe(secrets.state);
    SSOServices::Wipe(secrets.nonce);
    SSOServices::Wipe(secrets.verifier);
}

/// The place of the one login that may be on its way; empty if it is taken.
std::shared_ptr<PendingLogin> Session::Hidden::Reserve()
{
    auto login = std::make_shared<PendingLogin>();
    login->target = Chosen();
    login->deadline = outside.sinceBoot() + configuration->loginTimeout;
    std::shared_ptr<PendingLogin> abandoned; // which closes its listener after the mutex
    std::lock_guard<std::mutex> const guard(mutex);
    if (pending && (pending->isAwaited || outside.sinceBoot() < pending->deadline))
        return nullptr;
    if (pending)
        pending->cancelled = true;
    abandoned = std::move(pending);
    pending = login;
    return login;
}

Outcome<BegunLogin> Session::Hidden::Prepare(PendingLogin& login, std::string const& loginHint)
{
    RequestBounds const bounds(&login.cancelled, NetworkLimit());
    auto metadata = login.target.provider->Discover();
    if (!metadata)
        return metadata.Why();
    auto listener = Listener::Open(login.target.server.redirectPorts);
    if (!listener)
        return listener.Why();
    std::string overridden = Override(login.target.number, "authorization");
    if (!overridden.empty())
        metadata->authorizationEndpoint = std::move(overridden);
    std::lock_guard<std::mutex> const guard(mutex);
    if (login.cancelled)
        return WasCancelled();
    login.metadata = std::move(*metadata);
    login.secrets = NewAuthorizationSecrets();
    login.listener = std::move(*listener);
    BegunLogin begun;
    begun.url = AuthorizationUrl(login.metadata, login.target.provider->GetClient(),
                                 login.listener->RedirectUri(), login.secrets, loginHint);
    return begun;
}

std::int32_t Session::Hidden::DefaultType()
{
    std::lock_guard<std::mutex> const guard(mutex);
    return defaultSpec.type;
}

/// Whether this caller may finish it: only one may, and only while nobody has ended it.
bool Session::Hidden::Await(std::shared_ptr<PendingLogin> const& login)
{
    std::lock_guard<std::mutex> const guard(mutex);
    if (!login || pending != login || login->isAwaited)
        return false;
    login->isAwaited = true;
    return true;
}

/// Of a connection to the listener that is not known to be this user's.
void Session::Hidden::TellOf(Peer const& peer)
{
    if (peer.user == Peer::User::Untold)
        log->Failed("The sign-in takes connections of any user of this machine",
                    Why(Failure::Kind::Local, peer.reason,
                        "let this process read it, so that those of others are closed"));
    else
        log->Failed("A connection was closed without an answer, and the sign-in goes on",
                    Why(Failure::Kind::Local, peer.reason,
                        "run the browser on this machine and as the host's user; if it does, "
                        "another user tries to take part in the sign-in"));
}

Outcome<TokenAnswer> Session::Hidden::AskForTokens(PendingLogin& login)
{
    RequestBounds const bounds(&login.cancelled, NetworkLimit());
    auto waited = login.listener->Wait(
        login.secrets.state, std::max(login.deadline - outside.sinceBoot(), milliseconds(0)),
        &login.cancelled, [this](Peer const& peer) { TellOf(peer); });
    if (!waited)
        return waited.Why();
    Response const response{std::move(*waited)};
    auto code = ReadAuthorizationResponse(response.parameters, login.secrets, login.metadata,
                                          login.target.server.issuer);
    if (!code)
        return code.Why();
    Secret const authorizationCode(std::move(*code));
    return login.target.provider->ExchangeCode(*authorizationCode, login.listener->RedirectUri(),
                                               login.secrets.verifier, &login.cancelled);
}

Outcome<StoredLogin> Session::Hidden::Identify(PendingLogin& login, TokenAnswer answer)
{
    StoredToken const token = TakeToken(login.target, {DefaultType(), {}}, answer);
    Provider& provider = *login.target.provider;
    RequestBounds const bounds(&login.cancelled, NetworkLimit());
    auto const claims =
        provider.Verify(*answer.idToken, login.secrets.nonce, {}, *answer.accessToken);
    if (!claims)
        return claims.Why();

    StoredLogin result;
    result.issuer = login.target.server.issuer;
    result.clientId = login.target.server.clientId;
    result.subject = TextMember(*claims, "sub");
    AddClaims(result.claims, *claims, true);
    if (!login.metadata.userinfoEndpoint.empty()) {
        auto const userInfo = provider.UserInfo(*answer.accessToken, result.subject);
        if (userInfo)
            AddClaims(result.claims, *userInfo, false);
        else if (userInfo.Why().kind == Failure::Kind::OtherUser)
            return userInfo.Why();
        else
            log->Failed("The sign-in goes on without the claims of userinfo", userInfo.Why());
    }
    result.askedFor = NormalScope(login.target.server.scopes);
    result.scopes = NormalScope(answer.scope);
    result.signedInAt = outside.wallClock();
    result.tokens.push_back(token);
    result.refreshToken = std::move(*answer.refreshToken);
    return result;
}

Outcome<StoredLogin> Session::Hidden::Obtain(PendingLogin& login)
{
    std::optional<SharedConnections> connections;
    if (!login.device) // Polling would leave one behind every few seconds.
        connections.emplace();
    auto answer = login.device ? PollForTokens(login) : AskForTokens(login);
    return answer ? Identify(login, std::move(*answer)) : Outcome<StoredLogin>(answer.Why());
}

Outcome<bool> Session::Hidden::Commit(PendingLogin& login, StoredLogin const& result)
{
    std::optional<StoredLogin> replaced;
    bool isStored = false;
    {
        auto const lock = LockUnless(login.cancelled, login.target);
        if (!lock)
            return lock.Why();
        // A host that signs out raises the flag before it asks for this lock, and removes what
        // was written until then.
        if (login.cancelled)
            return WasCancelled();
        replaced = Current(login.target);
        isStored = Keep(login.target, result);
    }
    // What stays in the store is other processes' login, and this one's after its end.
    if (replaced && isStored)
        RevokeReplaced(login.target, *replaced, result);
    return true;
}

void Session::Hidden::End(std::shared_ptr<PendingLogin> const& login)
{
    std::shared_ptr<PendingLogin> ended; // closes its listener after the mutex
    std::lock_guard<std::mutex> const guard(mutex);
    if (pending == login)
        ended = std::move(pending);
}

bool Session::Hidden::Conclude(PendingLogin& login, Outcome<StoredLogin> const& result)
{
    auto const committed = result ? Commit(login, *result) : Outcome<bool>(result.Why());
    if (!committed) {
        log->Failed(CannotSignIn, committed.Why());
        if (result)
            RevokeGivenUp(login.target, *result);
        return false;
    }
    log->Info("Signed in at " + result->issuer);
    if (result->refreshToken->empty())
        log->Info("The provider gave no refresh token, so that the sign-in ends with its access "
                  "token. Most providers give one for the scope offline_access: add it to scopes "
                  "in HxSSOOpenID.json");
    events.Raise(Event::LoggedIn);
    events.Raise(Event::TokenAcquired);
    return true;
}

std::optional<BegunLogin> Session::Hidden::Begin(Preparation const& prepare)
{
    if (!configuration) {
        log->Failed(CannotSignIn, configuration.Why());
        return std::nullopt;
    }
    auto const login = Reserve();
    if (!login) {
        log->Failed(CannotSignIn, Why(Failure::Kind::Local, "another sign-in is in progress",
                                      "finish it in the browser, or sign out to end it"));
        return std::nullopt;
    }
    bool isReady = false;
    AtEnd const ending([&] {
        if (!isReady)
            End(login);
    });
    std::string reason;
    auto begun =
        PreparePrivateFolder(store.Folder(), reason)
            ? prepare(*login)
            : Why(Failure::Kind::Local,
                  "the store's folder " + PathText(store.Folder()) + " cannot be used: " + reason,
                  "see that this user may write there, or set store in HxSSOOpenID.json");
    if (!begun) {
        log->Failed(CannotSignIn, begun.Why());
        return std::nullopt;
    }
    begun->login = login;
    isReady = true;
    return std::move(*begun);
}

std::optional<BegunLogin> Session::BeginLogin(std::string const& loginHint)
{
    return hidden->Begin([&](PendingLogin& login) { return hidden->Prepare(login, loginHint); });
}

bool Session::FinishLogin(BegunLogin const& begun)
{
    auto const login = begun.login.lock();
    if (!hidden->Await(login)) {
        hidden->log->Failed(CannotSignIn,
                            Why(Failure::Kind::Local, "no sign-in was begun, or it was ended",
                                "begin one, and finish it once"));
        return false;
    }
    AtEnd const ending([&] { hidden->End(login); });
    return hidden->Conclude(*login, hidden->Obtain(*login));
}

bool Session::LoginInBrowser(std::string const& loginHint)
{
    bool const permitsDevice = hidden->Chosen().server.deviceLogin;
    if (permitsDevice && !hidden->outside.canShowBrowser())
        return LoginOnDevice();
    std::string reason;
    bool isEnded = false;
    {
        auto const begun = BeginLogin(loginHint);
        if (!begun)
            return false;
        AtEnd const ending([&] { CancelLogin(*begun); });
        if (hidden->outside.openBrowser(*begun->url, reason))
            return FinishLogin(*begun);
        isEnded = begun->login.expired();
    }
    if (permitsDevice && !isEnded)
        return LoginOnDevice();
    hidden->log->Failed(CannotSignIn, Why(Failure::Kind::Local, "no browser was started: " + reason,
                                          "set a default browser for this user"));
    return false;
}

void Session::CancelLogin(BegunLogin const& begun)
{
    auto const login = begun.login.lock();
    if (!login)
        return;
    login->cancelled = true;
    hidden->End(login);
}

void Session::CancelAnyLogin()
{
    std::shared_ptr<PendingLogin> ended; // closes its listener after the mutex
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    if (!hidden->pending)
        return;
    hidden->pending->cancelled = true;
    ended = std::move(hidden->pending);
}

bool Session::IsLoginInProgress() const
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    return hidden->pending &&
           (hidden->pending->isAwaited || hidden->outside.sinceBoot() < hidden->pending->deadline);
}

} // namespace Halvorix::OpenId
