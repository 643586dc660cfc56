// One refresh at a time for one login, over all threads and processes.

#include <utility>

#include "openid/protocol/RefreshedIdToken.h"
#include "openid/protocol/Texts.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

constexpr std::chrono::milliseconds PauseAfterFailure{5'000};

/// Others may rotate the token as often as they like while none but this process has the lock:
/// only where locks do not work, on a network's file system.
constexpr int MostTries = 3;

/// A refused token has an error of its own; but a provider may send the status alone.
bool IsRefusalOfToken(Failure const& why)
{
    bool const isBare = why.code.empty() && (why.status == 400 || why.status == 401);
    return why.kind == Failure::Kind::Refused && (why.code == "invalid_grant" || isBare);
}

Failure NoRefreshToken()
{
    Failure failure;
    failure.reason = "the provider gave no refresh token";
    failure.remedy = "sign in again; most providers give one for the scope offline_access, to be "
                     "added to scopes in HxSSOOpenID.json";
    return failure;
}

Failure NotGranted()
{
    Failure failure;
    failure.reason = "the sign-in was not granted the scope that the host asks for";
    failure.remedy = "add it to scopes in HxSSOOpenID.json, permit it at the provider, and sign in "
                     "again";
    return failure;
}

Failure Narrowed()
{
    Failure failure;
    failure.kind = Failure::Kind::Refused;
    failure.reason = "the provider gave a token of a narrower scope than the host asks for";
    failure.remedy = "permit the scope at the provider, and sign in again";
    return failure;
}

Failure RefusedAgain()
{
    Failure failure;
    failure.kind = Failure::Kind::Refused;
    failure.reason = "the refresh token was refused, and changed in the store each time";
    failure.remedy = "keep the store on a disk of this machine: another one signs in and out there";
    return failure;
}

} // namespace

bool Session::Hidden::FailedJustNow(Target const& target, TokenSpec const& asked)
{
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    auto const failure = account.failures.find({asked.type, asked.scope});
    return failure != account.failures.end() &&
           outside.sinceBoot() - failure->second < PauseAfterFailure;
}

/// One line for a failure, and none for the questions of the next seconds: hosts ask again and
/// again, and the provider is to be spared.
void Session::Hidden::Failed(Target const& target, TokenSpec const& asked, Failure const& why)
{
    if (AccountOf(target).isEnding)
        return;
    log->Failed("Cannot get a new token", why);
    Pause(target, asked);
}

void Session::Hidden::Pause(Target const& target, TokenSpec const& asked)
{
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    account.failures[{asked.type, asked.scope}] = outside.sinceBoot();
}

std::optional<StoredToken> Session::Hidden::Refresh(Target const& target, TokenSpec const& asked,
                                                    Secret const& known)
{
    if (FailedJustNow(target, asked))
        return std::nullopt;
    RequestBounds const bounds(&AccountOf(target).isEnding, NetworkLimit());
    // Before the lock, which is to be held for as few requests as possible.
    auto const metadata = target.provider->Discover();
    if (!metadata) {
        Failed(target, asked, metadata.Why());
        return std::nullopt;
    }
    auto const lock = Lock(target);
    if (!lock) {
        Failed(target, asked, lock.Why());
        return std::nullopt;
    }
    // Another thread may have failed while this one waited for its turn.
    return FailedJustNow(target, asked) ? std::nullopt : RefreshUnderLock(target, asked, known);
}

std::optional<StoredToken>
Session::Hidden::RefreshUnderLock(Target const& target, TokenSpec const& asked, Secret const& known)
{
    RequestBounds const bounds(&AccountOf(target).isEnding, NetworkLimit(), LimitUnderLock());
    Secret refused;
    for (int tries = 0; tries < MostTries; ++tries) {
        auto const looked = Look(target);
        if (!looked) {
            Failed(target, asked, looked.Why());
            return std::nullopt;
        }
        if (!*looked)
            return std::nullopt;
        StoredLogin const& login = **looked;
        TokenSpec const spec = NormalSpec(asked, login);
        StoredToken const* const there = FindToken(login, spec);
        if (there != nullptr && clock.IsGood(target.Key(), *there) &&
            !EqualSecrets(*there->text, *known))
            return *there;
        if (!refused->empty() && EqualSecrets(*refused, *login.refreshToken)) {
            SignOutRefused(target, asked);
            return std::nullopt;
        }
        auto const may = MayRefresh(target, spec, login);
        if (!may) {
            Failed(target, asked, may.Why());
            return std::nullopt;
        }
        auto answer = target.provider->Refresh(*login.refreshToken, spec.scope);
        if (answer)
            return Accept(target, asked, login, std::move(*answer));
        if (!IsRefusalOfToken(answer.Why()) || IsScopeAtFault(target, spec, login, answer.Why())) {
            Failed(target, asked, answer.Why());
            return std::nullopt;
        }
        // Another process may have rotated it all the same.
        refused = login.refreshToken;
    }
    Failed(target, asked, RefusedAgain());
    return std::nullopt;
}

Outcome<bool> Session::Hidden::MayRefresh(Target const& target, TokenSpec const& spec,
                                          StoredLogin const& login)
{
    if (login.refreshToken->empty())
        return NoRefreshToken();
    if (!IsGranted(spec, login))
        return NotGranted();
    return MakeSureOfStore(target, login);
}

/// A bare status does not say whether the token is refused or the scope. The same request
/// without the scope does.
bool Session::Hidden::IsScopeAtFault(Target const& target, TokenSpec const& spec,
                                     StoredLogin const& login, Failure const& why)
{
    if (spec.scope.empty() || !why.code.empty())
        return false;
    auto answer = target.provider->Refresh(*login.refreshToken, {});
    if (!answer)
        return !IsRefusalOfToken(answer.Why());
    Accept(target, {spec.type, {}}, login, std::move(*answer));
    return true;
}

/// Keeps what a refresh gave, and answers the token. The login is the one whose refresh token was
/// used up for it: to read it anew could fail, and lose the new one.
std::optional<StoredToken> Session::Hidden::Accept(Target const& target, TokenSpec const& asked,
                                                   StoredLogin login, TokenAnswer answer)
{
    TokenSpec const kept = GrantedSpec(NormalSpec(asked, login), answer.scope, login);
    StoredToken const token = TakeToken(target, kept, answer);
    bool const isRotated = !answer.refreshToken->empty();
    if (isRotated)
        login.refreshToken = answer.refreshToken;
    if (!answer.idToken->empty()) {
        // The refresh token of before is gone, whatever is said of the rest, and however long
        // the provider's keys may take.
        if (isRotated)
            Keep(target, login);
        if (auto const why = TakeIdToken(target, answer, login)) {
            Failed(target, asked, *why);
            return std::nullopt;
        }
    }
    PutToken(login, token);
    Keep(target, login);
    log->Info("Renewed a token of " + target.server.issuer);
    events.Raise(Event::TokenRefreshed);
    if (kept.scope != NormalSpec(asked, login).scope) {
        Failed(target, asked, Narrowed());
        return std::nullopt;
    }
    return token;
}

std::optional<Failure> Session::Hidden::TakeIdToken(Target const& target, TokenAnswer const& answer,
                                                    StoredLogin& login)
{
    auto const claims =
        target.provider->Verify(*answer.idToken, {}, login.subject, *answer.accessToken);
    if (!claims && claims.Why().kind != Failure::Kind::Network)
        return claims.Why(); // of another user, perhaps; or the clock is wrong
    // While the keys cannot be had nobody can say that it is bad, and nothing of it is taken over.
    // But a token of another user is told by what it says itself.
    auto change = FindChange(claims ? *claims : UnverifiedClaims(*answer.idToken), login.claims);
    if (change || !claims)
        return change;
    AddClaims(login.claims, *claims, true);
    return std::nullopt;
}

void Session::Hidden::SignOutRefused(Target const& target, TokenSpec const& asked)
{
    auto const removed = Forget(target);
    if (!removed) {
        log->Failed("The refused login stays in the store", removed.Why());
        Pause(target, asked);
        return;
    }
    Failure why;
    why.kind = Failure::Kind::Refused;
    why.reason = "the provider " + target.server.issuer + " refuses the refresh token";
    why.remedy = "sign in again";
    log->Failed("Signed out", why);
}

} // namespace Halvorix::OpenId
