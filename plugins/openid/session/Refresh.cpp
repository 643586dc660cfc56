// One refresh at a time for one login, over all threads and processes.

#include <utility>

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

Failure RefusedAgain()
{
    Failure failure;
    failure.kind = Failure::Kind::Refused;
    failure.reason = "the refresh token was refused, and changed in the store each time";
    failure.remedy = "keep the store on a disk of this machine: another one signs in and out there";
    return failure;
}

} // namespace

bool Session::Hidden::FailedJustNow(Target const& target, TokenSpec const& spec)
{
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    auto const failure = account.failures.find({spec.type, spec.scope});
    return failure != account.failures.end() &&
           outside.sinceBoot() - failure->second < PauseAfterFailure;
}

/// One line for a failure, and none for the questions of the next seconds, which are not passed
/// on: hosts ask again and again, and the provider is to be spared.
void Session::Hidden::Failed(Target const& target, TokenSpec const& spec, Failure const& why)
{
    Account& account = AccountOf(target);
    if (account.isEnding)
        return;
    log->Failed("Cannot get a new token", why);
    std::lock_guard<std::mutex> const guard(mutex);
    account.failures[{spec.type, spec.scope}] = outside.sinceBoot();
}

std::optional<StoredToken> Session::Hidden::Refresh(Target const& target, TokenSpec const& spec,
                                                    Secret const& known)
{
    if (FailedJustNow(target, spec))
        return std::nullopt;
    RequestBounds const bounds(&AccountOf(target).isEnding, NetworkLimit());
    // Before the lock, which is to be held for as few requests as possible.
    auto const metadata = target.provider->Discover();
    if (!metadata) {
        Failed(target, spec, metadata.Why());
        return std::nullopt;
    }
    auto const lock = Lock(target);
    if (!lock) {
        Failed(target, spec, lock.Why());
        return std::nullopt;
    }
    // Another thread may have failed while this one waited for its turn.
    return FailedJustNow(target, spec) ? std::nullopt : RefreshUnderLock(target, spec, known);
}

std::optional<StoredToken>
Session::Hidden::RefreshUnderLock(Target const& target, TokenSpec const& spec, Secret const& known)
{
    Secret refused;
    for (int tries = 0; tries < MostTries; ++tries) {
        auto login = Current(target);
        if (!login)
            return std::nullopt;
        StoredToken const* const there = FindToken(*login, spec);
        if (there != nullptr && clock.IsGood(target.Key(), *there) &&
            !EqualSecrets(*there->text, *known))
            return *there;
        if (login->refreshToken->empty()) {
            Failed(target, spec, NoRefreshToken());
            return std::nullopt;
        }
        if (EqualSecrets(*refused, *login->refreshToken)) {
            SignOutRefused(target);
            return std::nullopt;
        }
        // Else the token would be used up for all, and its successor known to nobody else.
        auto const room = IsUnsaved(target) ? Outcome<bool>(true) : store.CheckRoom();
        if (!room) {
            Failed(target, spec, room.Why());
            return std::nullopt;
        }
        auto answer = target.provider->Refresh(*login->refreshToken, spec.scope);
        if (answer)
            return Accept(target, spec, std::move(*login), std::move(*answer));
        if (!IsRefusalOfToken(answer.Why()) || IsScopeAtFault(target, spec, *login, answer.Why())) {
            Failed(target, spec, answer.Why());
            return std::nullopt;
        }
        // Another process may have rotated it all the same.
        refused = login->refreshToken;
    }
    Failed(target, spec, RefusedAgain());
    return std::nullopt;
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
std::optional<StoredToken> Session::Hidden::Accept(Target const& target, TokenSpec const& spec,
                                                   StoredLogin login, TokenAnswer answer)
{
    // The refresh token of before is gone, whatever is said of the rest.
    if (!answer.refreshToken->empty())
        login.refreshToken = std::move(answer.refreshToken);
    if (!answer.idToken->empty()) {
        auto const claims =
            target.provider->Verify(*answer.idToken, {}, login.subject, *answer.accessToken);
        if (claims) {
            AddClaims(login.claims, *claims, true);
            login.idToken = std::move(answer.idToken);
        } else if (claims.Why().kind != Failure::Kind::Network) {
            // Of another user, perhaps; or the clock is wrong, which must sign nobody out.
            Keep(target, login);
            Failed(target, spec, claims.Why());
            return std::nullopt;
        }
    }
    StoredToken const token = KeptToken(answer, spec, outside.wallClock());
    clock.Received(target.Key(), token);
    PutToken(login, token);
    Keep(target, login);
    log->Info("Renewed a token of " + target.server.issuer);
    events.Raise(Event::TokenRefreshed);
    return token;
}

void Session::Hidden::SignOutRefused(Target const& target)
{
    Failure why;
    why.kind = Failure::Kind::Refused;
    why.reason = "the provider " + target.server.issuer + " refuses the refresh token";
    why.remedy = "sign in again";
    log->Failed("Signed out", why);
    auto const removed = Forget(target);
    if (!removed)
        log->Failed("The refused login stays in the store", removed.Why());
}

} // namespace Halvorix::OpenId
