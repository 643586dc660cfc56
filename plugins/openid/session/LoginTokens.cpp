// The tokens of a login, and which of them a spec means.

#include <algorithm>
#include <sstream>
#include <utility>

#include "openid/protocol/Texts.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

/// The words of a scope that another one does not have.
std::string Without(std::string const& scope, std::string const& other)
{
    std::istringstream words(scope);
    std::string const padded = ' ' + other + ' ';
    std::string left;
    for (std::string word; words >> word;)
        if (padded.find(' ' + word + ' ') == std::string::npos)
            left += (left.empty() ? "" : " ") + word;
    return left;
}

/// What was asked for and not granted. Two words ask for what comes beside the token; a provider
/// may leave them out of what it tells of the token.
std::string Withheld(std::string const& asked, std::string const& granted)
{
    return Without(Without(asked, granted), "offline_access openid");
}

} // namespace

StoredToken Session::Hidden::TakeToken(Target const& target, TokenSpec const& spec,
                                       TokenAnswer const& answer)
{
    StoredToken token;
    token.type = std::to_string(spec.type);
    token.scope = spec.scope;
    token.text = answer.accessToken;
    token.receivedAt = outside.wallClock();
    // A provider's number may be anything; ten years are as good as for ever.
    token.lifetime = std::clamp<std::int64_t>(answer.lifetime.count(), 0, 10LL * 365 * 86'400);
    clock.Received(target.Key(), token);
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

bool IsGranted(TokenSpec const& spec, StoredLogin const& login)
{
    // What a provider tells of the first token may be less than it granted: some give one token
    // for themselves and others for each service.
    return Without(Without(spec.scope, login.askedFor), login.scopes).empty();
}

TokenSpec GrantedSpec(TokenSpec const& spec, std::string const& granted, StoredLogin& login)
{
    if (granted.empty())
        return spec;
    if (!spec.scope.empty())
        return Withheld(spec.scope, granted).empty() ? spec : TokenSpec{spec.type, granted};
    // What the provider took back is part of the login no longer, whoever asks for it by name.
    login.askedFor = Without(login.askedFor, Withheld(login.scopes, granted));
    login.scopes = granted;
    return spec;
}

} // namespace Halvorix::OpenId
