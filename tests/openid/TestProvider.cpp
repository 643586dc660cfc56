#include "openid/TestProvider.h"

#include <sstream>
#include <thread>
#include <utility>

#include <json/writer.h>

#include "openid/SigningKey.h"
#include "openid/platform/Crypto.h"
#include "openid/platform/System.h"

namespace Rig {

using namespace Halvorix::OpenId;

namespace {

HttpResponse AsResponse(int status, std::string body)
{
    HttpResponse response;
    response.status = status;
    response.headers.emplace_back("content-type", "application/json");
    response.body = std::move(body);
    return response;
}

HttpResponse AsResponse(int status, Json::Value const& json)
{
    return AsResponse(status, Json::writeString(Json::StreamWriterBuilder(), json));
}

HttpResponse Error(char const* code)
{
    Json::Value json;
    json["error"] = code;
    return AsResponse(400, json);
}

std::map<std::string, std::string> AsMap(std::string const& form)
{
    auto const decoded = DecodeForm(form);
    return decoded ? std::map<std::string, std::string>(decoded->begin(), decoded->end())
                   : std::map<std::string, std::string>();
}

std::string QueryOf(std::string const& url)
{
    auto const mark = url.find('?');
    return mark == std::string::npos ? std::string() : url.substr(mark + 1);
}

std::string Find(std::map<std::string, std::string> const& form, std::string const& name)
{
    auto const found = form.find(name);
    return found == form.end() ? std::string() : found->second;
}

bool AreKnown(std::string const& scope, std::set<std::string> const& known)
{
    std::istringstream words(scope);
    for (std::string word; words >> word;)
        if (known.count(word) == 0)
            return false;
    return true;
}

} // namespace

TestProvider::TestProvider(std::string issuer) : issuer(std::move(issuer)) {}

void TestProvider::Order(std::function<void(Behaviour&)> const& change)
{
    std::lock_guard<std::mutex> const guard(mutex);
    change(behaviour);
}

std::string TestProvider::EndpointOf(std::string const& url) const
{
    std::string const path =
        url.substr(0, issuer.size()) == issuer ? url.substr(issuer.size()) : "";
    if (path == "/.well-known/openid-configuration")
        return "discovery";
    return path.empty() ? path : path.substr(1, path.find('?') - 1);
}

HttpResponse TestProvider::Answer(HttpRequest const& request)
{
    std::string const endpoint = EndpointOf(request.url);
    Behaviour now;
    {
        std::lock_guard<std::mutex> const guard(mutex);
        ++counts[endpoint];
        timeouts[endpoint] = request.timeout;
        now = behaviour;
    }
    if (now.onRequest)
        now.onRequest(endpoint);
    HttpResponse failed;
    if (now.isAway) {
        failed.failure = HttpFailure::Connection;
        failed.reason = "connection refused";
        return failed;
    }
    auto const start = SinceBoot();
    while (endpoint == "token" && SinceBoot() - start < now.delay) {
        if (SinceBoot() - start >= request.timeout) {
            failed.failure = HttpFailure::Timeout;
            return failed;
        }
        if (request.cancelled != nullptr && *request.cancelled) {
            failed.failure = HttpFailure::Cancelled;
            return failed;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::lock_guard<std::mutex> const guard(mutex);
    if (endpoint == "discovery")
        return Discovery();
    if (endpoint == "keys")
        return Keys();
    if (endpoint == "token")
        return Token(AsMap(request.body));
    if (endpoint == "userinfo")
        for (auto const& header : request.headers)
            if (header.first == "Authorization")
                return UserInfo(header.second);
    if (endpoint == "revocation")
        return Revoke(AsMap(request.body));
    if (endpoint == "device" && now.hasDevices)
        return Device(AsMap(request.body));
    return AsResponse(404, std::string());
}

HttpResponse TestProvider::Discovery() const
{
    Json::Value json;
    json["issuer"] = issuer;
    json["authorization_endpoint"] = issuer + "/authorization";
    json["token_endpoint"] = issuer + "/token";
    json["userinfo_endpoint"] = issuer + "/userinfo";
    json["jwks_uri"] = issuer + "/keys";
    json["revocation_endpoint"] = issuer + "/revocation";
    json["end_session_endpoint"] = issuer + "/end_session";
    if (behaviour.hasDevices)
        json["device_authorization_endpoint"] = issuer + "/device";
    json["id_token_signing_alg_values_supported"].append("RS256");
    json["code_challenge_methods_supported"].append("S256");
    json["authorization_response_iss_parameter_supported"] = true;
    return AsResponse(200, json);
}

HttpResponse TestProvider::Keys() const
{
    if (behaviour.keysStatus != 0)
        return AsResponse(behaviour.keysStatus, std::string());
    Json::Value json;
    json["keys"].append(SigningKey::Shared(SigningKey::Kind::Rsa).PublicJwk("key-1"));
    return AsResponse(200, json);
}

std::string TestProvider::Redirect(std::string const& authorizationUrl)
{
    auto const query = AsMap(QueryOf(authorizationUrl));
    std::lock_guard<std::mutex> const guard(mutex);
    secrets.insert(Find(query, "state"));
    secrets.insert(Find(query, "nonce"));
    std::string const code = NewSecret("code");
    codes[code] = {Find(query, "code_challenge"), Find(query, "redirect_uri"), Find(query, "nonce"),
                   Find(query, "scope")};
    return WithQuery(Find(query, "redirect_uri"),
                     {{"code", code}, {"state", Find(query, "state")}, {"iss", issuer}});
}

std::string TestProvider::NewSecret(std::string const& kind)
{
    std::string secret = kind + '-' + ToBase64Url(RandomBytes(24));
    secrets.insert(secret);
    last[kind] = secret;
    return secret;
}

std::string TestProvider::IdToken(std::string const& subject, std::string const& nonce)
{
    Json::Value header;
    header["kid"] = "key-1";
    Json::Value claims;
    claims["iss"] = issuer;
    claims["sub"] = subject;
    claims["aud"] = behaviour.clientOfIdToken;
    claims["iat"] = static_cast<Json::Int64>(WallClock());
    claims["exp"] = static_cast<Json::Int64>(WallClock() + 600);
    claims["name"] = "Alice";
    if (!nonce.empty())
        claims["nonce"] = last["nonce"] = nonce;
    for (std::string const& name : behaviour.idTokenClaims.getMemberNames())
        claims[name] = behaviour.idTokenClaims[name];
    std::string token =
        SignToken(SigningKey::Shared(SigningKey::Kind::Rsa), "RS256", header, claims);
    secrets.insert(token);
    last["id_token"] = token;
    return token;
}

Json::Value TestProvider::NewTokens(std::string const& scope, int family)
{
    Json::Value json;
    std::string const accessToken = NewSecret("access_token");
    accessTokens.insert(accessToken);
    json["access_token"] = accessToken;
    json["token_type"] = "Bearer";
    json["scope"] = scope;
    if (behaviour.lifetime > 0)
        json["expires_in"] = behaviour.lifetime;
    if (behaviour.givesRefreshToken) {
        std::string const refreshToken = NewSecret("refresh_token");
        refreshTokens[refreshToken] = {family, false, scope};
        json["refresh_token"] = refreshToken;
    }
    return json;
}

HttpResponse TestProvider::Token(Parameters const& form)
{
    if (Find(form, "client_id") != "client-1")
        return Error("invalid_client");
    if (Find(form, "grant_type") == "authorization_code")
        return Exchange(form);
    if (Find(form, "grant_type") == "urn:ietf:params:oauth:grant-type:device_code")
        return PollDevice(form);
    ++counts["refresh"];
    if (behaviour.refreshStatus != 0)
        return AsResponse(behaviour.refreshStatus, behaviour.refreshBody);
    return Refresh(form);
}

HttpResponse TestProvider::Exchange(Parameters const& form)
{
    auto const code = codes.find(Find(form, "code"));
    std::string const verifier = Find(form, "code_verifier");
    secrets.insert(verifier);
    if (code == codes.end() || code->second.redirectUri != Find(form, "redirect_uri") ||
        code->second.challenge != ToBase64Url(Sha2(256, verifier)))
        return Error("invalid_grant");
    Json::Value json = NewTokens(code->second.scope, ++families);
    if (!behaviour.scopeOfSignIn.empty())
        json["scope"] = behaviour.scopeOfSignIn;
    if (behaviour.givesIdToken)
        json["id_token"] = IdToken(behaviour.subject,
                                   behaviour.nonce.empty() ? code->second.nonce : behaviour.nonce);
    codes.erase(code);
    return AsResponse(200, json);
}

HttpResponse TestProvider::Device(Parameters const& form)
{
    Json::Value json;
    std::string const code = NewSecret("device_code");
    devices[code] = Find(form, "scope");
    json["device_code"] = code;
    json["user_code"] = "WDJB-MJHT";
    json["verification_uri"] = issuer + "/verify";
    json["verification_uri_complete"] = issuer + "/verify?user_code=WDJB-MJHT";
    json["expires_in"] = behaviour.deviceLifetime;
    json["interval"] = behaviour.deviceInterval;
    return AsResponse(200, json);
}

HttpResponse TestProvider::PollDevice(Parameters const& form)
{
    ++counts["poll"];
    if (!behaviour.devicePolls.empty()) {
        std::string const error = behaviour.devicePolls.front();
        behaviour.devicePolls.pop_front();
        HttpResponse failed;
        failed.failure = HttpFailure::Timeout;
        return error == "timeout" ? failed : Error(error.c_str());
    }
    auto const device = devices.find(Find(form, "device_code"));
    if (device == devices.end())
        return Error("invalid_grant");
    Json::Value json = NewTokens(device->second, ++families);
    devices.erase(device);
    if (behaviour.givesIdToken)
        json["id_token"] = IdToken(behaviour.subject, behaviour.nonce);
    return AsResponse(200, json);
}

HttpResponse TestProvider::Refresh(Parameters const& form)
{
    auto const found = refreshTokens.find(Find(form, "refresh_token"));
    if (found == refreshTokens.end() || revokedFamilies.count(found->second.family) != 0)
        return Error("invalid_grant");
    if (found->second.isUsed) {
        ++reuses;
        revokedFamilies.insert(found->second.family);
        return Error("invalid_grant");
    }
    std::string const scope = Find(form, "scope");
    if (!AreKnown(scope, behaviour.scopes))
        return behaviour.refusesScopesByStatusAlone ? AsResponse(400, std::string())
                                                    : Error("invalid_scope");
    RefreshToken const old = found->second;
    found->second.isUsed = behaviour.rotates;
    Json::Value json = NewTokens(scope.empty() ? old.scope : scope, old.family);
    // The scope of the refresh token itself stays what it was.
    if (behaviour.givesRefreshToken)
        refreshTokens[json["refresh_token"].asString()].scope = old.scope;
    if (!behaviour.rotates)
        json.removeMember("refresh_token");
    if (!behaviour.scopeOfRefresh.empty())
        json["scope"] = behaviour.scopeOfRefresh;
    if (!behaviour.subjectOfRefresh.empty())
        json["id_token"] = IdToken(behaviour.subjectOfRefresh, {});
    return AsResponse(200, json);
}

HttpResponse TestProvider::UserInfo(std::string const& authorization) const
{
    if (behaviour.userinfoStatus != 0)
        return AsResponse(behaviour.userinfoStatus, std::string());
    if (authorization.substr(0, 7) != "Bearer " || accessTokens.count(authorization.substr(7)) == 0)
        return AsResponse(401, std::string());
    Json::Value json;
    json["sub"] =
        behaviour.subjectOfUserinfo.empty() ? behaviour.subject : behaviour.subjectOfUserinfo;
    json["email"] = "alice@login.example";
    json["iss"] = "https://elsewhere.example";
    return AsResponse(200, json);
}

HttpResponse TestProvider::Revoke(Parameters const& form)
{
    if (behaviour.revocationStatus != 0)
        return AsResponse(behaviour.revocationStatus, std::string());
    auto const found = refreshTokens.find(Find(form, "token"));
    if (found != refreshTokens.end())
        revokedFamilies.insert(found->second.family);
    return AsResponse(200, std::string());
}

int TestProvider::Count(std::string const& endpoint) const
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto const found = counts.find(endpoint);
    return found == counts.end() ? 0 : found->second;
}

std::chrono::milliseconds TestProvider::TimeoutOf(std::string const& endpoint) const
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto const found = timeouts.find(endpoint);
    return found == timeouts.end() ? std::chrono::milliseconds(0) : found->second;
}

bool TestProvider::IsGood(std::string const& refreshToken) const
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto const found = refreshTokens.find(refreshToken);
    return found != refreshTokens.end() && !found->second.isUsed &&
           revokedFamilies.count(found->second.family) == 0;
}

int TestProvider::Reuses() const
{
    std::lock_guard<std::mutex> const guard(mutex);
    return reuses;
}

std::set<std::string> TestProvider::Secrets() const
{
    std::lock_guard<std::mutex> const guard(mutex);
    return secrets;
}

std::string TestProvider::Last(std::string const& kind) const
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto const found = last.find(kind);
    return found == last.end() ? std::string() : found->second;
}

void TestProvider::RevokeAll()
{
    std::lock_guard<std::mutex> const guard(mutex);
    for (auto const& token : refreshTokens)
        revokedFamilies.insert(token.second.family);
}

} // namespace Rig
