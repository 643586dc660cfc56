// Who is signed in: what the store says, and what it could not be told.

#include <algorithm>
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

/// About the provider's answer itself, or of use only once.
bool IsOfProtocol(std::string const& claim)
{
    for (char const* const name :
         {"iss", "sub", "aud", "azp", "exp", "iat", "nbf", "jti", "auth_time", "acr", "amr", "sid"})
        if (claim == name)
            return true;
    return false;
}

bool IsOfOneAnswer(std::string const& claim)
{
    return claim == "nonce" || claim == "at_hash" || claim == "c_hash";
}

} // namespace

StoredToken KeptToken(TokenAnswer const& answer, TokenSpec const& spec, std::int64_t now)
{
    StoredToken token;
    token.type = std::to_string(spec.type);
    token.scope = spec.scope;
    token.text = answer.accessToken;
    token.receivedAt = now;
    // A provider's number may be anything; ten years are as good as for ever.
    token.lifetime = std::clamp<std::int64_t>(answer.lifetime.count(), 0, 10 * 365 * 86'400LL);
    return token;
}

void PutToken(StoredLogin& login, StoredToken token)
{
    // Hosts may ask for any number of scopes, and the file has to stay small: the oldest goes.
    constexpr std::size_t most = 32;
    auto& tokens = login.tokens;
    tokens.erase(std::remove_if(tokens.begin(), tokens.end(),
                                [&](StoredToken const& other) {
                                    return other.type == token.type && other.scope == token.scope;
                                }),
                 tokens.end());
    if (tokens.size() == most)
        tokens.erase(std::min_element(tokens.begin(), tokens.end(),
                                      [](StoredToken const& left, StoredToken const& right) {
                                          return left.receivedAt < right.receivedAt;
                                      }));
    tokens.push_back(std::move(token));
}

StoredToken const* FindToken(StoredLogin const& login, TokenSpec const& spec)
{
    std::string const type = std::to_string(spec.type);
    for (StoredToken const& token : login.tokens)
        if (token.type == type && token.scope == spec.scope)
            return &token;
    return nullptr;
}

TokenSpec NormalSpec(TokenSpec const& spec, StoredLogin const& login)
{
    TokenSpec normal{spec.type, NormalScope(spec.scope)};
    if (normal.scope == login.askedFor || normal.scope == login.scopes)
        normal.scope.clear();
    return normal;
}

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

std::optional<StoredLogin> Session::Hidden::Current(Target const& target)
{
    auto read = store.Read(target.server.issuer, target.server.clientId);
    Account& account = AccountOf(target);
    if (!read) {
        TellOnce(account, read.Why());
        return std::nullopt;
    }
    std::optional<StoredLogin> login = std::move(*read);
    std::lock_guard<std::mutex> const guard(mutex);
    account.told.clear();
    if (account.unsaved && account.unsavedOver == StateOf(login))
        login = account.unsaved;
    else
        account.unsaved.reset();
    // Another process may have signed in or out.
    std::string const now = login ? IdentityOf(*login) : std::string();
    if (account.seen && *account.seen != now)
        events.Raise(login ? Event::LoggedIn : Event::LoggedOut);
    account.seen = now;
    return login;
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

void Session::Hidden::Keep(Target const& target, StoredLogin const& login)
{
    auto const before = store.Read(login.issuer, login.clientId);
    auto const written = store.Write(login);
    if (!written)
        log->Failed("The login is known to this process alone, until it ends", written.Why());
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    account.seen = IdentityOf(login);
    account.unsaved.reset();
    if (!written) {
        account.unsaved = login;
        account.unsavedOver = StateOf(before ? *before : std::nullopt);
    }
}

Outcome<bool> Session::Hidden::Forget(Target const& target)
{
    auto removed = store.Remove(target.server.issuer, target.server.clientId);
    clock.Forget(target.Key());
    Account& account = AccountOf(target);
    std::lock_guard<std::mutex> const guard(mutex);
    account.unsaved.reset();
    account.failures.clear();
    if (removed) {
        account.seen = std::string();
        events.Raise(Event::LoggedOut);
    }
    return removed;
}

Outcome<std::unique_ptr<TokenStore::Lock>> Session::Hidden::Lock(Target const& target)
{
    // As long as another process may take for the requests of a refresh, and a little.
    return store.Acquire(target.server.issuer, target.server.clientId,
                         2 * NetworkLimit() + std::chrono::seconds(5));
}

} // namespace Halvorix::OpenId
