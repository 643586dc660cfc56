// Who is signed in: what the store says, and what it could not be told.

#include <utility>

#include "openid/platform/Crypto.h"
#include "openid/protocol/Texts.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

/// Tells one login from the next, also of the same user.
std::string IdentityOf(StoredLogin const& login)
{
    return login.subject + '\n' + std::to_string(login.signedInAt);
}

/// Tells whether somebody has written to the store since; the hash of a secret is none itself.
std::string StateOf(std::optional<StoredLogin> const& login)
{
    if (!login)
        return {};
    Secret const text(IdentityOf(*login) + '\n' + *login->refreshToken);
    return Sha2(256, *text);
}

/// About the sign-in and the provider's answer itself.
bool IsOfProtocol(std::string const& claim)
{
    for (char const* const name : {"iss", "sub", "aud", "azp", "exp", "iat", "nbf", "jti",
                                   "auth_time", "nonce", "acr", "amr", "sid"})
        if (claim == name)
            return true;
    return false;
}

bool IsOfOneAnswer(std::string const& claim) { return claim == "at_hash" || claim == "c_hash"; }

} // namespace

void AddClaims(Json::Value& claims, Json::Value const& newer, bool isIdToken)
{
    if (!claims.isObject())
        claims = Json::Value(Json::objectValue);
    for (std::string const& name : newer.getMemberNames())
        if (!IsOfOneAnswer(name) && (isIdToken || !IsOfProtocol(name)))
            claims[name] = newer[name];
}

Account& Session::Hidden::AccountOf(Target const& target)
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto& account = accounts[target.Key()];
    if (!account)
        account = std::make_unique<Account>();
    return *account;
}

Outcome<std::optional<StoredLogin>> Session::Hidden::Look(Target const& target)
{
    auto read = store.Read(target.server.issuer, target.server.clientId);
    if (!read) {
        // A damaged store is set aside by now, and counts as nobody.
        Failure const why = read.Why();
        read = store.Read(target.server.issuer, target.server.clientId);
        if (!read)
            return read.Why();
        if (!*read)
            log->Failed("The stored login cannot be used", why);
    }
    std::optional<StoredLogin> login = std::move(*read);
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    account.told.clear();
    account.stored = StateOf(login);
    if (account.unsaved && account.unsavedOver.value_or(*account.stored) == *account.stored) {
        login = account.unsaved;
        account.unsavedOver = account.stored;
    } else {
        account.unsaved.reset();
    }
    // Another process may have signed in or out.
    std::string const now = login ? IdentityOf(*login) : std::string();
    if (account.seen && *account.seen != now)
        events.Raise(login ? Event::LoggedIn : Event::LoggedOut);
    account.seen = now;
    return login;
}

std::optional<StoredLogin> Session::Hidden::Current(Target const& target)
{
    auto looked = Look(target);
    if (looked)
        return std::move(*looked);
    Account& account = AccountOf(target);
    TellOnce(account, looked.Why());
    std::lock_guard<std::mutex> const guard(mutex);
    return account.unsaved;
}

/// Hosts ask often, and the same cause is worth one line.
void Session::Hidden::TellOnce(Account& account, Failure const& why)
{
    {
        std::lock_guard<std::mutex> const guard(mutex);
        if (account.told == why.reason)
            return;
        account.told = why.reason;
    }
    log->Failed("The stored login cannot be used", why);
}

bool Session::Hidden::IsUnsaved(Target const& target)
{
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    return account.unsaved.has_value();
}

Outcome<bool> Session::Hidden::MakeSureOfStore(Target const& target, StoredLogin const& login)
{
    auto written = store.CheckRoom();
    if (written)
        written = store.Write(login);
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    if (written)
        account.unsaved.reset();
    else if (account.unsaved)
        return true;
    return written;
}

void Session::Hidden::Keep(Target const& target, StoredLogin const& login)
{
    auto const written = store.Write(login);
    std::optional<std::string> there;
    if (!written) {
        auto const read = store.Read(login.issuer, login.clientId);
        there = read ? std::optional<std::string>(StateOf(*read)) : std::nullopt;
    }
    Account& account = AccountOf(target);
    bool isNews = false;
    {
        std::lock_guard<std::mutex> const guard(mutex);
        account.seen = IdentityOf(login);
        isNews = !written && !account.unsaved;
        account.unsaved.reset();
        if (written) {
            account.stored = StateOf(login);
        } else {
            account.unsaved = login;
            account.unsavedOver = there ? there : account.stored;
        }
    }
    if (isNews)
        log->Failed("The login is known to this process alone, until it ends", written.Why());
}

Outcome<bool> Session::Hidden::Forget(Target const& target)
{
    auto removed = store.Remove(target.server.issuer, target.server.clientId);
    if (!removed)
        return removed;
    clock.Forget(target.Key());
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    account.unsaved.reset();
    account.failures.clear();
    account.seen = std::string();
    events.Raise(Event::LoggedOut);
    return removed;
}

Outcome<std::unique_ptr<TokenStore::Lock>> Session::Hidden::Lock(Target const& target)
{
    // Longer than another process may have it, by what the files take.
    return store.Acquire(target.server.issuer, target.server.clientId,
                         LimitUnderLock() + std::chrono::seconds(5));
}

std::chrono::milliseconds Session::Hidden::LimitUnderLock() const { return 2 * NetworkLimit(); }

} // namespace Halvorix::OpenId
