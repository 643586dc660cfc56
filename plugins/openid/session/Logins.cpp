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

std::string IdentityIfAny(std::optional<StoredLogin> const& login)
{
    return login ? IdentityOf(*login) : std::string();
}

/// Whether a store that has changed says nothing against a login that it could not be told: others
/// renewed the older login in it, or signed that one out.
/// @param before whose login was in the store
bool IsOlder(std::optional<StoredLogin> const& stored, std::string const& before,
             StoredLogin const& unsaved)
{
    return stored ? stored->signedInAt < unsaved.signedInAt : before != IdentityOf(unsaved);
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
    std::string const before = std::exchange(account.storedIdentity, IdentityIfAny(login));
    if (account.unsaved && (account.unsavedOver.value_or(*account.stored) == *account.stored ||
                            IsOlder(login, before, *account.unsaved))) {
        login = account.unsaved;
        account.unsavedOver = account.stored;
    } else {
        account.unsaved.reset();
    }
    // Another process may have signed in or out.
    std::string const now = IdentityIfAny(login);
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
    if (!written)
        return account.unsaved ? Outcome<bool>(true) : written;
    account.unsaved.reset();
    account.stored = StateOf(login);
    account.storedIdentity = IdentityOf(login);
    return true;
}

bool Session::Hidden::Keep(Target const& target, StoredLogin const& login)
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
            account.storedIdentity = IdentityOf(login);
        } else {
            account.unsaved = login;
            account.unsavedOver = there ? there : account.stored;
        }
    }
    if (isNews)
        log->Failed("The login is known to this process alone, until it ends", written.Why());
    return static_cast<bool>(written);
}

Outcome<bool> Session::Hidden::RemoveStored(Target const& target)
{
    auto removed = store.Remove(target.server.issuer, target.server.clientId);
    if (removed)
        return removed;
    auto const left = store.Read(target.server.issuer, target.server.clientId);
    if (!left || *left)
        return removed;
    // The login is gone, and its tokens are to be revoked all the same.
    Failure why;
    why.reason = PathText(store.FileOf(target.server.issuer, target.server.clientId)) +
                 ".gone or .new beside it cannot be removed";
    why.remedy = "remove it";
    log->Failed("A part of the login stays in the store", why);
    return true;
}

Outcome<bool> Session::Hidden::Forget(Target const& target)
{
    auto removed = RemoveStored(target);
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
    return store.Acquire(target.server.issuer, target.server.clientId, LimitForLock());
}

/// In slices, since what waits for a lock file looks at no flag.
Outcome<std::unique_ptr<TokenStore::Lock>>
Session::Hidden::LockUnless(std::atomic<bool> const& cancelled, Target const& target)
{
    using std::chrono::milliseconds;
    // The first is longer than a lock file may take that cannot be opened, and fails sooner then.
    milliseconds slice{2'500};
    auto const& server = target.server;
    auto const end = SinceBoot() + LimitForLock();
    for (;;) {
        auto const begin = SinceBoot();
        auto lock = store.Acquire(server.issuer, server.clientId, slice);
        if (lock || SinceBoot() - begin < slice - milliseconds(100))
            return lock;
        slice = milliseconds(200);
        if (cancelled)
            return WasCancelled();
        if (SinceBoot() >= end) {
            Failure why = lock.Why();
            why.reason = PathText(store.FileOf(server.issuer, server.clientId)) +
                         ": it is locked, and was not released in time";
            return why;
        }
    }
}

std::chrono::milliseconds Session::Hidden::LimitForLock() const
{
    // Longer than another process may have it, by what the files take.
    return LimitUnderLock() + std::chrono::seconds(5);
}

std::chrono::milliseconds Session::Hidden::LimitUnderLock() const { return 2 * NetworkLimit(); }

} // namespace Halvorix::OpenId
