// What hosts ask of tokens.

#include <algorithm>
#include <utility>

#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

TokenView View(StoredToken const& token, bool usable)
{
    return {token.text, token.lifetime == 0 ? 0 : token.receivedAt + token.lifetime, usable};
}

} // namespace

bool Session::RestoreLogin()
{
    Target const target = hidden->Chosen();
    auto const login = target ? hidden->Current(target) : std::nullopt;
    if (!login)
        return false;
    bool const hasGoodToken =
        std::any_of(login->tokens.begin(), login->tokens.end(), [&](StoredToken const& token) {
            return hidden->clock.IsGood(target.Key(), token);
        });
    return hasGoodToken || hidden->Refresh(target, DefaultSpec(), Secret());
}

TokenView Session::AccessToken(TokenSpec const& asked)
{
    TokenView stored = TokenAtHand(asked);
    if (stored.usable)
        return stored;
    Target const target = hidden->Chosen();
    if (!target || !hidden->Current(target))
        return {};
    auto const token = hidden->Refresh(target, asked, Secret());
    return token ? View(*token, true) : TokenView();
}

bool Session::RefreshToken(TokenSpec const& asked)
{
    Target const target = hidden->Chosen();
    auto const login = target ? hidden->Current(target) : std::nullopt;
    if (!login)
        return false;
    auto const* const known = FindToken(*login, NormalSpec(asked, *login));
    return hidden->Refresh(target, asked, known != nullptr ? known->text : Secret()).has_value();
}

TokenView Session::TokenAtHand(TokenSpec const& asked)
{
    Target const target = hidden->Chosen();
    auto const login = target ? hidden->Current(target) : std::nullopt;
    if (!login)
        return {};
    auto const* const token = FindToken(*login, NormalSpec(asked, *login));
    return token == nullptr ? TokenView()
                            : View(*token, hidden->clock.IsGood(target.Key(), *token));
}

} // namespace Halvorix::OpenId
