#include "openid/protocol/Authorization.h"

#include <algorithm>
#include <cstddef>
#include <set>

#include "openid/platform/Crypto.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

constexpr std::size_t SecretBytes = 32;

std::string Find(Parameters const& parameters, std::string_view name)
{
    for (auto const& [key, value] : parameters)
        if (key == name)
            return value;
    return {};
}

bool HasRepetition(Parameters const& parameters)
{
    std::set<std::string_view> names;
    return std::any_of(parameters.begin(), parameters.end(),
                       [&](auto const& one) { return !names.insert(one.first).second; });
}

bool HasScope(std::string const& scopes, std::string const& scope)
{
    return (' ' + scopes + ' ').find(' ' + scope + ' ') != std::string::npos;
}

Failure BadResponse(std::string const& what)
{
    Failure failure;
    failure.kind = Failure::Kind::Provider;
    failure.reason = "the provider's answer in the browser " + what;
    failure.remedy = "sign in again";
    return failure;
}

Failure RefusedBy(Parameters const& response, std::string const& error)
{
    Failure failure;
    failure.kind = Failure::Kind::Refused;
    failure.code = OneLine(error);
    failure.reason = "the provider refused the sign-in: " + failure.code;
    std::string const description = OneLine(Find(response, "error_description"));
    if (!description.empty())
        failure.reason += ": " + description;
    failure.remedy = error == "access_denied"
                         ? "sign in again and agree to what the provider asks"
                         : "sign in again, or ask the provider's administrator";
    return failure;
}

/// 1*VSCHAR (RFC 6749, appendix A.11).
bool IsCode(std::string const& code)
{
    return !code.empty() && std::all_of(code.begin(), code.end(), [](char character) {
        return character >= 0x20 && character < 0x7F;
    });
}

} // namespace

AuthorizationSecrets NewAuthorizationSecrets()
{
    return {ToBase64Url(RandomBytes(SecretBytes)), ToBase64Url(RandomBytes(SecretBytes)),
            ToBase64Url(RandomBytes(SecretBytes))};
}

std::string ChallengeOf(std::string const& verifier) { return ToBase64Url(Sha2(256, verifier)); }

std::string AuthorizationUrl(Metadata const& metadata, Client const& client,
                             std::string const& redirectUri, AuthorizationSecrets const& secrets,
                             std::string const& loginHint)
{
    Parameters parameters;
    parameters.reserve(10); // a list, or growth, would leave copies of secrets behind
    parameters.emplace_back("response_type", "code");
    parameters.emplace_back("client_id", client.clientId);
    parameters.emplace_back("redirect_uri", redirectUri);
    parameters.emplace_back("scope", client.scopes);
    parameters.emplace_back("state", secrets.state);
    parameters.emplace_back("nonce", secrets.nonce);
    parameters.emplace_back("code_challenge", ChallengeOf(secrets.verifier));
    parameters.emplace_back("code_challenge_method", "S256");
    // Without it a provider passes over the scope (OpenID Connect Core, section 11).
    if (HasScope(client.scopes, "offline_access"))
        parameters.emplace_back("prompt", "consent");
    if (!loginHint.empty())
        parameters.emplace_back("login_hint", loginHint);
    std::string url = WithQuery(metadata.authorizationEndpoint, parameters);
    for (auto& parameter : parameters)
        SSOServices::Wipe(parameter.second);
    return url;
}

Outcome<std::string> ReadAuthorizationResponse(Parameters const& response,
                                               AuthorizationSecrets const& secrets,
                                               Metadata const& metadata, std::string const& issuer)
{
    if (HasRepetition(response))
        return BadResponse("has a parameter more than once");
    if (secrets.state.empty() || !EqualSecrets(*Secret(Find(response, "state")), secrets.state))
        return BadResponse("belongs to another sign-in (state)");
    bool const namesIssuer = std::any_of(response.begin(), response.end(),
                                         [](auto const& one) { return one.first == "iss"; });
    if (metadata.issuerInResponse && !namesIssuer)
        return BadResponse("does not name its issuer (iss), as the provider announces");
    if (namesIssuer && Find(response, "iss") != issuer)
        return BadResponse("is from the issuer \"" + ForLog(Find(response, "iss")) +
                           "\" instead of \"" + ForLog(issuer) + '"');
    std::string const error = Find(response, "error");
    if (!error.empty())
        return RefusedBy(response, error);
    std::string code = Find(response, "code");
    if (!IsCode(code))
        return BadResponse("has neither a code nor an error");
    return code;
}

std::string EndSessionUrl(Metadata const& metadata, Client const& client)
{
    if (metadata.endSessionEndpoint.empty())
        return {};
    return WithQuery(metadata.endSessionEndpoint, {{"client_id", client.clientId}});
}

} // namespace Halvorix::OpenId
