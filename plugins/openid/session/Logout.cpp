// Signing out.

#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

/// The user waits, and the store forgets the token in any case.
constexpr std::chrono::milliseconds LimitForRevocation{5'000};

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
    std::optional<StoredLogin> login;
    {
        Ending const ending(hidden->AccountOf(target));
        auto const lock = hidden->Lock(target);
        if (!lock) {
            hidden->log->Failed("Cannot sign out", lock.Why());
            return false;
        }
        login = hidden->Current(target);
        if (!login)
            return false;
        auto const removed = hidden->Forget(target);
        if (!removed) {
            hidden->log->Failed("Cannot sign out", removed.Why());
            return false;
        }
    }
    hidden->log->Info("Signed out at " + target.server.issuer);
    if (login->refreshToken->empty())
        return true;
    RequestBounds const bounds(nullptr, LimitForRevocation);
    auto const revoked = target.provider->Revoke(*login->refreshToken, "refresh_token");
    if (!revoked)
        hidden->log->Failed("The refresh token was forgotten, but not revoked", revoked.Why());
    return true;
}

} // namespace Halvorix::OpenId
