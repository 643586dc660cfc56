#include "openid/protocol/Provider.h"

#include <algorithm>

#include "openid/platform/System.h"
#include "openid/protocol/ProviderMetadata.h"
#include "openid/protocol/TokenAnswers.h"

namespace Halvorix::OpenId {

namespace {

/// With room for all, since growth would leave copies of secrets behind.
Parameters NewParameters()
{
    Parameters parameters;
    parameters.reserve(8);
    return parameters;
}

void WipeParameters(Parameters& parameters)
{
    for (auto& [name, value] : parameters)
        SSOServices::Wipe(value);
}

/// What is sent that no log may show.
std::vector<std::string_view> SecretsIn(Parameters const& parameters)
{
    constexpr std::string_view secret[] = {"code", "code_verifier", "refresh_token", "device_code",
                                           "token"};
    std::vector<std::string_view> values;
    for (auto const& [name, value] : parameters)
        if (std::find(std::begin(secret), std::end(secret), name) != std::end(secret))
            values.push_back(value);
    return values;
}

Failure Missing(Client const& client, std::string const& what)
{
    Failure failure;
    failure.kind = Failure::Kind::Provider;
    failure.reason = "the provider " + ForLog(client.issuer) + " offers no " + what;
    failure.remedy = "ask the provider's administrator";
    return failure;
}

/// A sign-in's tokens, or that nobody knows whose they are.
Outcome<TokenAnswer> WithIdToken(Outcome<TokenAnswer> answer, Client const& client)
{
    if (!answer || !answer->idToken->empty())
        return answer;
    Failure failure;
    failure.kind = Failure::Kind::Provider;
    failure.reason = "the provider " + ForLog(client.issuer) + " gave tokens, but no id_token";
    failure.remedy = "ask the provider's administrator to let the client have the scope openid";
    return failure;
}

/// Without keys nobody can say that a token is bad: whatever the key set's address answered, it is
/// to be tried again later.
Failure NotVerified(Failure why)
{
    if (why.kind != Failure::Kind::Cancelled)
        why.kind = Failure::Kind::Network;
    return why;
}

} // namespace

Provider::Provider(Client identity, Send sender, WhyOver const& whyOver)
    : client(std::move(identity)), send(std::move(sender)), metadata(whyOver), keys(whyOver)
{
}

Outcome<Json::Value> Provider::AskJson(HttpRequest& request, Question const& question)
{
    HttpResponse response = AskAnything(request, question);
    Outcome<Json::Value> json = ReadJsonAnswer(response, question);
    SSOServices::Wipe(response.body);
    return json;
}

HttpResponse Provider::AskAnything(HttpRequest& request, Question const& question)
{
    request.url = question.url;
    request.headers.emplace_back("Accept", "application/json");
    request.timeout = client.networkTimeout;
    return send(request);
}

HttpResponse Provider::Post(Parameters const& parameters, Question const& question,
                            std::atomic<bool> const* cancelled)
{
    HttpRequest request;
    request.method = "POST";
    request.headers.emplace_back("Content-Type", "application/x-www-form-urlencoded");
    request.body = EncodeForm(parameters);
    request.cancelled = cancelled;
    HttpResponse response = AskAnything(request, question);
    SSOServices::Wipe(request.body);
    return response;
}

Outcome<Metadata> Provider::Discover()
{
    return metadata.Get(SinceBoot(), [this]() -> Outcome<Metadata> {
        if (!IsSecureUrl(client.issuer) || client.issuer.find('?') != std::string::npos) {
            Failure failure;
            failure.kind = Failure::Kind::Configuration;
            failure.reason = "the issuer \"" + ForLog(client.issuer) +
                             "\" is not an https address without query and fragment";
            failure.remedy = "correct the issuer in the configuration";
            return failure;
        }
        HttpRequest request;
        auto const json = AskJson(request, {"the description", DiscoveryUrl(client.issuer), {}});
        if (!json)
            return json.Why();
        return ReadMetadata(*json, client.issuer);
    });
}

Outcome<std::vector<SigningKey>> Provider::AskKeys()
{
    auto const known = Discover();
    if (!known)
        return known.Why();
    Question const question{"the key set", known->keysUri, {}};
    HttpRequest request;
    auto const json = AskJson(request, question);
    if (!json)
        return json.Why();
    auto found = ReadKeys(*json);
    // Those of before are better than none.
    if (found.empty())
        return FailureOf(question, Failure::Kind::Provider, "has no key that verifies signatures",
                         "ask the provider's administrator");
    return found;
}

Outcome<TokenAnswer> Provider::AskTokens(Parameters parameters, std::string const& scope,
                                         std::atomic<bool> const* cancelled)
{
    auto const known = Discover();
    if (!known) {
        WipeParameters(parameters);
        return known.Why();
    }
    parameters.emplace_back("client_id", client.clientId);
    Question const question{"the token endpoint", known->tokenEndpoint, SecretsIn(parameters)};
    HttpResponse response = Post(parameters, question, cancelled);
    auto json = ReadJsonAnswer(response, question);
    Outcome<TokenAnswer> answer =
        json ? ReadTokenAnswer(*json, question, scope) : Outcome<TokenAnswer>(json.Why());
    if (json)
        WipeJson(*json);
    SSOServices::Wipe(response.body);
    WipeParameters(parameters);
    return answer;
}

Outcome<TokenAnswer> Provider::ExchangeCode(std::string const& code, std::string const& redirectUri,
                                            std::string const& verifier,
                                            std::atomic<bool> const* cancelled)
{
    Parameters parameters = NewParameters();
    parameters.emplace_back("grant_type", "authorization_code");
    parameters.emplace_back("code", code);
    parameters.emplace_back("redirect_uri", redirectUri);
    parameters.emplace_back("code_verifier", verifier);
    return WithIdToken(AskTokens(std::move(parameters), client.scopes, cancelled), client);
}

Outcome<TokenAnswer> Provider::Refresh(std::string const& refreshToken, std::string const& scope)
{
    Parameters parameters = NewParameters();
    parameters.emplace_back("grant_type", "refresh_token");
    parameters.emplace_back("refresh_token", refreshToken);
    if (!scope.empty())
        parameters.emplace_back("scope", scope);
    return AskTokens(std::move(parameters), scope, nullptr);
}

Outcome<TokenAnswer> Provider::PollDevice(std::string const& deviceCode)
{
    Parameters parameters = NewParameters();
    parameters.emplace_back("grant_type", "urn:ietf:params:oauth:grant-type:device_code");
    parameters.emplace_back("device_code", deviceCode);
    return WithIdToken(AskTokens(std::move(parameters), client.scopes, nullptr), client);
}

Outcome<DeviceAuthorization> Provider::AuthorizeDevice(std::string const& scope)
{
    auto const known = Discover();
    if (!known)
        return known.Why();
    if (known->deviceAuthorizationEndpoint.empty())
        return Missing(client, "sign-in on another device (device_authorization_endpoint)");
    Question const question{"the device endpoint", known->deviceAuthorizationEndpoint, {}};
    HttpResponse response =
        Post({{"client_id", client.clientId}, {"scope", scope}}, question, nullptr);
    auto json = ReadJsonAnswer(response, question);
    SSOServices::Wipe(response.body);
    if (!json)
        return json.Why();
    auto answer = ReadDeviceAuthorization(*json, question);
    WipeJson(*json);
    return answer;
}

Outcome<Json::Value> Provider::Verify(std::string const& idToken, std::string const& nonce,
                                      std::string const& subject, std::string const& accessToken)
{
    auto const known = Discover();
    if (!known)
        return known.Why();
    auto const ask = [this] { return AskKeys(); };
    auto const present = keys.Get(SinceBoot(), ask);
    if (!present)
        return NotVerified(present.Why());
    IdTokenExpectation expected;
    expected.issuer = client.issuer;
    expected.clientId = client.clientId;
    expected.nonce = nonce;
    expected.subject = subject;
    expected.accessToken = accessToken;
    expected.algorithms = known->idTokenAlgorithms;
    expected.now = WallClock();
    std::optional<Failure> noKeys;
    auto const renew = [&] {
        auto renewed = keys.Renew(SinceBoot(), ask);
        if (!renewed)
            noKeys = NotVerified(renewed.Why());
        return renewed ? *renewed : *present;
    };
    auto claims = VerifyIdToken(idToken, expected, *present, renew);
    // Without the new keys nobody can say that the token is bad.
    return !claims && noKeys ? *noKeys : claims;
}

Outcome<Json::Value> Provider::UserInfo(std::string const& accessToken, std::string const& subject)
{
    auto const known = Discover();
    if (!known)
        return known.Why();
    if (known->userinfoEndpoint.empty())
        return Json::Value(Json::objectValue);
    Question const question{"the userinfo endpoint", known->userinfoEndpoint, {accessToken}};
    HttpRequest request;
    request.headers.emplace_back("Authorization", "Bearer " + accessToken);
    auto claims = AskJson(request, question);
    SSOServices::Wipe(request.headers.front().second);
    if (claims && TextMember(*claims, "sub") != subject)
        return FailureOf(question, Failure::Kind::OtherUser,
                         "answered about another user (sub) than the one who signed in",
                         "ask the provider's administrator");
    return claims;
}

Outcome<bool> Provider::Revoke(std::string const& token, std::string const& tokenTypeHint)
{
    auto const known = Discover();
    if (!known)
        return known.Why();
    if (known->revocationEndpoint.empty())
        return Missing(client, "revocation of tokens (revocation_endpoint)");
    Parameters parameters = NewParameters();
    parameters.emplace_back("token", token);
    parameters.emplace_back("token_type_hint", tokenTypeHint);
    parameters.emplace_back("client_id", client.clientId);
    Question const question{"the revocation endpoint", known->revocationEndpoint, {token}};
    HttpResponse const response = Post(parameters, question, nullptr);
    WipeParameters(parameters);
    if (auto failure = FindFailure(response, question))
        return *failure;
    return true;
}

} // namespace Halvorix::OpenId
