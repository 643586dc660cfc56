// Signing out.

#include "openid/protocol/Texts.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

/// The user waits, and the store forgets the token in any case.
constexpr std::chrono::milliseconds LimitForRevocation{5'000};

constexpr char const* CannotSignOut = "Cannot sign out";

/// Makes refreshes that are on their way give up for as long as it lives: they hold the lock.
class Ending {
public:
    explicit Ending(Account& account) : account(account) { account.isEnding = true; }
    ~Ending() { account.isEnding = false; }
    Ending(Ending const&) = delete;
    Ending& operator=(Ending const&) = delete;

private:
    Account& account;
};

} // namespace

/// Who signs out wants no token of his to be left, not even in a file that nobody could use.
std::vector<Secret> Session::Hidden::ForgetSetAside(Target const& target)
{
    std::vector<std::filesystem::path> left;
    auto tokens = store.RemoveSetAside(target.server.issuer, target.server.clientId, left);
    for (auto const& file : left) {
        Failure why;
        why.reason = PathText(file) + " cannot be removed";
        why.remedy = "remove it";
        log->Failed("A login that was set aside stays in the store", why);
    }
    return tokens;
}

std::vector<Secret> Session::Hidden::AccessTokensToRevoke(Target const& target,
                                                          StoredLogin const& login)
{
    std::vector<Secret> texts;
    if (!login.refreshToken->empty())
        return texts;
    for (StoredToken const& token : login.tokens)
        if (clock.IsGood(target.Key(), token))
            texts.push_back(token.text);
    return texts;
}

void Session::Hidden::Revoke(Target const& target, StoredLogin const& login)
{
    Revoke(target, {login.refreshToken}, AccessTokensToRevoke(target, login));
}

void Session::Hidden::Revoke(Target const& target, std::vector<Secret> const& refreshTokens,
                             std::vector<Secret> const& accessTokens)
{
    RequestBounds const bounds(nullptr, LimitForRevocation, LimitForRevocation);
    for (Secret const& token : refreshTokens) {
        if (token->empty())
            continue;
        auto const revoked = target.provider->Revoke(*token, "refresh_token");
        if (!revoked)
            log->Failed("The refresh token was forgotten, but not revoked", revoked.Why());
    }
    for (Secret const& token : accessTokens) {
        auto const revoked = target.provider->Revoke(*token, "access_token");
        if (!revoked)
            log->Failed("An access token was forgotten, but not revoked", revoked.Why());
    }
}

/// Tokens of one session at the provider may be one grant there, and the end of an old one would
/// be the end of the new one: then it is left to expire.
void Session::Hidden::RevokeReplaced(Target const& target, StoredLogin const& replaced,
                                     StoredLogin const& login)
{
    std::string const session = TextMember(replaced.claims, "sid");
    std::string const newSession = TextMember(login.claims, "sid");
    bool const areApart = replaced.subject != login.subject ||
                          (!session.empty() && !newSession.empty() && session != newSession);
    if (areApart)
        Revoke(target, replaced);
}

/// Nobody else knows its tokens, and so nobody would ever end them.
void Session::Hidden::RevokeGivenUp(Target const& target, StoredLogin const& login)
{
    auto const stored = Current(target);
    if (stored && !AccountOf(target).isEnding)
        RevokeReplaced(target, login, *stored);
    else
        Revoke(target, login);
}

std::string Session::EndSessionAddress()
{
    Target const target = hidden->Chosen();
    auto const login = target ? hidden->Current(target) : std::nullopt;
    if (!login)
        return {};
    auto metadata = target.provider->Discover();
    if (!metadata) {
        hidden->log->Failed("Cannot learn the provider's address for signing out", metadata.Why());
        return {};
    }
    std::string const overridden = hidden->Override(target.number, "end_session");
    if (!overridden.empty())
        metadata->endSessionEndpoint = overridden;
    return EndSessionUrl(*metadata, target.provider->GetClient());
}

bool Session::Logout()
{
    CancelAnyLogin();
    Target const target = hidden->Chosen();
    if (!target)
        return false;
    bool isSignedOut = false;
    std::vector<Secret> tokens, accessTokens;
    {
        Ending const ending(hidden->AccountOf(target));
        auto const lock = hidden->Lock(target);
        if (!lock) {
            hidden->log->Failed(CannotSignOut, lock.Why());
            return false;
        }
        auto const login = hidden->Look(target);
        if (login && *login)
            accessTokens = hidden->AccessTokensToRevoke(target, **login);
        // Without a login, too: a killed process may have left its tokens beside it.
        auto const removed = !login   ? Outcome<bool>(login.Why())
                             : *login ? hidden->Forget(target)
                                      : hidden->RemoveStored(target);
        if (!removed) {
            hidden->log->Failed(CannotSignOut, removed.Why());
            return false;
        }
        isSignedOut = login->has_value();
        tokens = hidden->ForgetSetAside(target);
        if (isSignedOut)
            tokens.push_back((*login)->refreshToken);
    }
    if (isSignedOut)
        hidden->log->Info("Signed out at " + target.server.issuer);
    hidden->Revoke(target, tokens, accessTokens);
    return isSignedOut;
}

} // namespace Halvorix::OpenId
