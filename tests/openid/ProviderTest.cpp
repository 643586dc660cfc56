// A provider's answers, right, wrong and none at all.

#include <atomic>
#include <future>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/FakeProvider.h"
#include "openid/platform/System.h"

namespace {

using namespace Halvorix::OpenId;
using Rig::FakeProvider;
using Signer = Rig::SigningKey;
using std::chrono::seconds;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

constexpr char const* TokenEndpoint = "the token endpoint https://idp.example/tenant/token ";
constexpr char const* Description =
    "the description https://idp.example/tenant/.well-known/openid-configuration ";

Client TheClient()
{
    Client client;
    client.issuer = FakeProvider::Issuer;
    client.clientId = "client";
    client.scopes = "openid email";
    client.networkTimeout = seconds(11);
    return client;
}

Json::Value Parsed(std::string const& text)
{
    std::string reason;
    Json::Value json = ParseJsonObject(text, reason);
    EXPECT_EQ(reason, "");
    return json;
}

FakeProvider::Response Body(std::string const& body) { return FakeProvider::Status(200, body); }

std::string IdToken(Json::Value const& changes = Json::objectValue, std::string const& id = "one")
{
    Json::Value claims;
    claims["iss"] = FakeProvider::Issuer;
    claims["aud"] = "client";
    claims["sub"] = "user";
    claims["nonce"] = "nonce";
    claims["iat"] = Json::Int64(WallClock());
    claims["exp"] = Json::Int64(WallClock() + 300);
    for (std::string const& name : changes.getMemberNames())
        claims[name] = changes[name];
    Json::Value header;
    header["kid"] = id;
    return SignToken(Signer::Shared(Signer::Kind::Rsa), "RS256", header, claims);
}

struct ProviderAsked : testing::Test {
    FakeProvider fake;
    Provider provider{TheClient(), fake.Sender()};

    Failure RefreshFailure(FakeProvider::Response const& response)
    {
        fake.Set("/token", response);
        auto const answer = provider.Refresh("the-refresh-token", "");
        EXPECT_FALSE(answer);
        return answer.Why();
    }
};

using Discovery = ProviderAsked;
using TokenEndpointAsked = ProviderAsked;
using KeysAsked = ProviderAsked;
using UserInfoAsked = ProviderAsked;
using RevocationAsked = ProviderAsked;
using DeviceAsked = ProviderAsked;

TEST_F(Discovery, GivesTheAddressesAndWhatTheProviderCan)
{
    Json::Value json = FakeProvider::Description();
    json["id_token_signing_alg_values_supported"].append("ES256");
    json["id_token_signing_alg_values_supported"].append(7);
    json["scopes_supported"].append("openid");
    json["code_challenge_methods_supported"].append("S256");
    json["authorization_response_iss_parameter_supported"] = true;
    fake.Set("/.well-known/openid-configuration", FakeProvider::Json(json));
    auto const metadata = provider.Discover();
    ASSERT_TRUE(metadata) << metadata.Why().reason;
    EXPECT_EQ(metadata->authorizationEndpoint, "https://idp.example/tenant/authorize");
    EXPECT_EQ(metadata->tokenEndpoint, "https://idp.example/tenant/token");
    EXPECT_EQ(metadata->userinfoEndpoint, "https://idp.example/tenant/userinfo");
    EXPECT_EQ(metadata->keysUri, "https://idp.example/tenant/keys");
    EXPECT_EQ(metadata->revocationEndpoint, "https://idp.example/tenant/revoke");
    EXPECT_EQ(metadata->endSessionEndpoint, "https://idp.example/tenant/logout");
    EXPECT_EQ(metadata->deviceAuthorizationEndpoint, "https://idp.example/tenant/device");
    EXPECT_THAT(metadata->idTokenAlgorithms, ElementsAre("ES256"));
    EXPECT_THAT(metadata->scopes, ElementsAre("openid"));
    EXPECT_TRUE(metadata->issuerInResponse);
    ASSERT_THAT(fake.Requests(), SizeIs(1));
    EXPECT_EQ(fake.Requests()[0].method, "GET");
    EXPECT_EQ(fake.Requests()[0].timeout, seconds(11));
    EXPECT_THAT(fake.Requests()[0].headers, ElementsAre(Pair("Accept", "application/json")));
}

TEST_F(Discovery, IsAskedOnce)
{
    EXPECT_TRUE(provider.Discover());
    EXPECT_TRUE(provider.Discover());
    EXPECT_THAT(fake.Requests(), SizeIs(1));
}

TEST_F(Discovery, IsAskedAgainAfterAFailure)
{
    fake.Set("/.well-known/openid-configuration", FakeProvider::Failed(HttpFailure::Connection));
    EXPECT_FALSE(provider.Discover());
    fake.Set("/.well-known/openid-configuration", FakeProvider::Json(FakeProvider::Description()));
    EXPECT_TRUE(provider.Discover());
}

TEST_F(Discovery, LeavesOutOneSlashOfTheIssuer)
{
    Client client = TheClient();
    client.issuer += '/';
    Json::Value json = FakeProvider::Description();
    json["issuer"] = client.issuer;
    fake.Set("/.well-known/openid-configuration", FakeProvider::Json(json));
    Provider other(client, fake.Sender());
    EXPECT_TRUE(other.Discover());
}

TEST_F(Discovery, RefusesADescriptionThatIsNotItsOwnOrNotWhole)
{
    struct Row {
        std::string member;
        Json::Value value;
        std::string reason;
    };
    auto const bad = [](std::string const& name, std::string const& address) {
        return "has a " + name + " that is not a proper https address: \"" + address + '"';
    };
    for (Row const& row : std::vector<Row>{
             {"issuer", "https://evil.example",
              "is of the issuer \"https://evil.example\" instead of "
              "\"https://idp.example/tenant\""},
             {"issuer", "https://idp.example/tenant/",
              "is of the issuer \"https://idp.example/tenant/\" instead of "
              "\"https://idp.example/tenant\""},
             {"issuer", Json::nullValue,
              "is of the issuer \"\" instead of \"https://idp.example/tenant\""},
             {"token_endpoint", Json::nullValue, "has no token_endpoint"},
             {"jwks_uri", Json::nullValue, "has no jwks_uri"},
             {"authorization_endpoint", Json::nullValue, "has no authorization_endpoint"},
             {"token_endpoint", 7, "has a token_endpoint that is not a text"},
             {"userinfo_endpoint", Json::arrayValue, "has a userinfo_endpoint that is not a text"},
             {"token_endpoint", "http://idp.example/token?secret",
              bad("token_endpoint", "http://idp.example/token")},
             {"token_endpoint", "http://127.0.0.1/token",
              bad("token_endpoint", "http://127.0.0.1/token")},
             {"authorization_endpoint", "javascript:alert(1)",
              bad("authorization_endpoint", "javascript:alert(1)")},
             {"end_session_endpoint", "https://user@idp.example/",
              bad("end_session_endpoint", "https://idp.example/")},
             {"revocation_endpoint", "", bad("revocation_endpoint", "")},
             {"jwks_uri", "/keys", bad("jwks_uri", "/keys")},
             {"code_challenge_methods_supported", Parsed(R"({"a":["plain"]})")["a"],
              "announces no proof of the code's owner by S256 (PKCE)"}}) {
        SCOPED_TRACE(row.member + ' ' + row.reason);
        Json::Value json = FakeProvider::Description();
        json[row.member] = row.value;
        fake.Set("/.well-known/openid-configuration", FakeProvider::Json(json));
        auto const metadata = provider.Discover();
        ASSERT_FALSE(metadata);
        EXPECT_EQ(metadata.Why().kind, Failure::Kind::Provider);
        EXPECT_EQ(metadata.Why().reason, Description + row.reason);
    }
}

TEST_F(Discovery, AllowsPlainHttpWhereTheIssuerIsThisMachine)
{
    Client client = TheClient();
    client.issuer = "http://127.0.0.1:8080";
    Json::Value json = FakeProvider::Description();
    json["issuer"] = client.issuer;
    json["token_endpoint"] = "http://127.0.0.1:8080/token";
    Provider other(client, [&](HttpRequest const& request) {
        EXPECT_EQ(request.url, "http://127.0.0.1:8080/.well-known/openid-configuration");
        return FakeProvider::Json(json);
    });
    auto const metadata = other.Discover();
    EXPECT_TRUE(metadata) << metadata.Why().reason;
}

TEST_F(Discovery, AsksNothingOfAnIssuerThatIsNotSecure)
{
    for (char const* const issuer :
         {"http://idp.example", "https://idp.example?x=y", "https://idp.example#x", "", "idp"}) {
        Client client = TheClient();
        client.issuer = issuer;
        Provider other(client, fake.Sender());
        auto const metadata = other.Discover();
        ASSERT_FALSE(metadata) << issuer;
        EXPECT_EQ(metadata.Why().kind, Failure::Kind::Configuration);
    }
    EXPECT_THAT(fake.Requests(), SizeIs(0));
}

TEST_F(Discovery, TellsWhatIsNoDescription)
{
    struct Row {
        FakeProvider::Response response;
        Failure::Kind kind;
        std::string reason;
    };
    std::string deep;
    for (int i = 0; i < 5000; ++i)
        deep += "{\"a\":";
    auto const provider = Failure::Kind::Provider;
    std::string const but = "answered with status 200, but the answer ";
    for (Row const& row : std::vector<Row>{
             {Body(""), provider, but + "is empty instead of JSON"},
             {Body("<!DOCTYPE html><p>Welcome"), provider,
              but + "is a page (HTML) instead of JSON"},
             {FakeProvider::Status(200, "Welcome", {{"content-type", "text/html; charset=x"}}),
              provider, but + "is a page (HTML) instead of JSON"},
             {FakeProvider::Status(200, "a.b.c", {{"content-type", "application/JWT"}}), provider,
              but + "is a signed token (JWT), which is not supported, instead of JSON"},
             {Body("[]"), provider, but + "is not a JSON object"},
             {Body("\xFF\xFE"), provider, but + "is not UTF-8"},
             {Body(deep), provider, but + "is not valid JSON: Exceeded stackLimit in readValue()."},
             {Body("{\"a\":1}{"), provider,
              but + "is not valid JSON: Line 1, Column 8: Extra non-whitespace after JSON value."},
             {FakeProvider::Status(302, "", {{"location", "https://idp.example/elsewhere?c=d"}}),
              provider, "answered with status 302, a redirect, which is never followed"},
             {FakeProvider::Status(404, "<html>"), provider, "answered with status 404"},
             {FakeProvider::Status(500), provider, "answered with status 500"},
             {FakeProvider::Status(100), provider,
              "answered with status 100, which has no meaning here"},
             {FakeProvider::Status(0), provider,
              "answered with status 0, which has no meaning here"},
             {FakeProvider::Failed(HttpFailure::Name, "unknown host"), Failure::Kind::Network,
              "has a host name that could not be looked up (unknown host)"},
             {FakeProvider::Failed(HttpFailure::Connection), Failure::Kind::Network,
              "could not be reached"},
             {FakeProvider::Failed(HttpFailure::Certificate, "self\nsigned"),
              Failure::Kind::Network, "has no TLS certificate that is trusted (self signed)"},
             {FakeProvider::Failed(HttpFailure::Proxy), Failure::Kind::Network,
              "is behind a proxy that refused the credentials"},
             {FakeProvider::Failed(HttpFailure::Timeout), Failure::Kind::Network,
              "did not answer in time"},
             {FakeProvider::Failed(HttpFailure::TooLarge), provider, "answered with too much"},
             {FakeProvider::Failed(HttpFailure::Cancelled), Failure::Kind::Cancelled,
              "was not waited for: the host cancelled"},
             {FakeProvider::Failed(HttpFailure::Other), Failure::Kind::Network,
              "could not be asked"}}) {
        SCOPED_TRACE(row.reason);
        fake.Set("/.well-known/openid-configuration", row.response);
        auto const metadata = this->provider.Discover();
        ASSERT_FALSE(metadata);
        EXPECT_EQ(metadata.Why().kind, row.kind);
        EXPECT_EQ(metadata.Why().reason, Description + row.reason);
        EXPECT_FALSE(metadata.Why().remedy.empty());
    }
}

TEST_F(TokenEndpointAsked, ExchangesACodeAsAPublicClient)
{
    fake.Set("/token", Body(R"({"access_token":"at","token_type":"bEARER","expires_in":3600,)"
                            R"("refresh_token":"rt","id_token":"it","scope":"b a","x":{}})"));
    std::atomic<bool> cancelled{false};
    auto const answer =
        provider.ExchangeCode("the code", "http://127.0.0.1:1/callback", "verifier", &cancelled);
    ASSERT_TRUE(answer) << answer.Why().reason;
    EXPECT_EQ(*answer->accessToken, "at");
    EXPECT_EQ(*answer->refreshToken, "rt");
    EXPECT_EQ(*answer->idToken, "it");
    EXPECT_EQ(answer->tokenType, "Bearer");
    EXPECT_EQ(answer->scope, "a b");
    EXPECT_EQ(answer->lifetime, seconds(3600));
    EXPECT_GT(answer->receivedAt.count(), 0);
    ASSERT_THAT(fake.Requests("/token"), SizeIs(1));
    HttpRequest const request = fake.Requests("/token")[0];
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.cancelled, &cancelled);
    EXPECT_EQ(request.timeout, seconds(11));
    EXPECT_THAT(request.headers,
                UnorderedElementsAre(Pair("Content-Type", "application/x-www-form-urlencoded"),
                                     Pair("Accept", "application/json")));
    EXPECT_THAT(
        *DecodeForm(request.body),
        UnorderedElementsAre(Pair("grant_type", "authorization_code"), Pair("code", "the code"),
                             Pair("redirect_uri", "http://127.0.0.1:1/callback"),
                             Pair("code_verifier", "verifier"), Pair("client_id", "client")));
}

TEST_F(TokenEndpointAsked, WantsAnIdTokenForACode)
{
    fake.Set("/token", Body(R"({"access_token":"at","token_type":"Bearer"})"));
    auto const answer = provider.ExchangeCode("c", "r", "v", nullptr);
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.Why().kind, Failure::Kind::Provider);
    EXPECT_EQ(answer.Why().reason,
              "the provider https://idp.example/tenant gave tokens, but no id_token");
}

TEST_F(TokenEndpointAsked, Refreshes)
{
    fake.Set("/token", Body(R"({"access_token":"at","token_type":"Bearer"})"));
    auto answer = provider.Refresh("rt", "");
    ASSERT_TRUE(answer) << answer.Why().reason;
    EXPECT_EQ(*answer->refreshToken, "");
    EXPECT_EQ(answer->scope, "email openid");
    EXPECT_EQ(answer->lifetime, seconds(0));
    EXPECT_THAT(*DecodeForm(fake.Requests("/token")[0].body),
                UnorderedElementsAre(Pair("grant_type", "refresh_token"),
                                     Pair("refresh_token", "rt"), Pair("client_id", "client")));
    answer = provider.Refresh("rt", "b a");
    EXPECT_EQ(answer->scope, "a b");
    EXPECT_THAT(*DecodeForm(fake.Requests("/token")[1].body), Contains(Pair("scope", "b a")));
}

TEST_F(TokenEndpointAsked, BoundsALifetime)
{
    for (auto const& [told, expected] : std::vector<std::pair<std::string, int>>{
             {"60", 60},
             {"60.9", 60},
             {"\"60\"", 60},
             {"null", 0},
             {"0", 1},
             {"-5", 1},
             {"\"-5\"", 1},
             {"1e300", 366 * 24 * 3600},
             {"18446744073709551615", 366 * 24 * 3600},
             {"\"99999999999999999999999999999999\"", 366 * 24 * 3600}}) {
        fake.Set("/token",
                 Body(R"({"access_token":"at","token_type":"Bearer","expires_in":)" + told + "}"));
        auto const answer = provider.Refresh("rt", "");
        ASSERT_TRUE(answer) << told << answer.Why().reason;
        EXPECT_EQ(answer->lifetime, seconds(expected)) << told;
    }
}

TEST_F(TokenEndpointAsked, RefusesAnAnswerThatBreaksTheStandard)
{
    std::string const bearer = R"("token_type":"Bearer")";
    for (auto const& [body, reason] : std::vector<std::pair<std::string, std::string>>{
             {"{}", "answered without an access token"},
             {"{" + bearer + "}", "answered without an access token"},
             {R"({"access_token":"",)" + bearer + "}", "answered without an access token"},
             {R"({"access_token":7,)" + bearer + "}",
              "answered with access_token that is not a text"},
             {R"({"access_token":"a\r\nX-Header: b",)" + bearer + "}",
              "answered with access_token that is not a text"},
             {R"({"access_token":"\u00e4",)" + bearer + "}",
              "answered with access_token that is not a text"},
             {R"({"access_token":"at"})",
              "answered with a token of the type \"\" instead of Bearer"},
             {R"({"access_token":"at","token_type":"DPoP"})",
              "answered with a token of the type \"DPoP\" instead of Bearer"},
             {R"({"access_token":"at","token_type":["Bearer"]})",
              "answered with token_type that is not a text"},
             {R"({"access_token":"at","refresh_token":{},)" + bearer + "}",
              "answered with refresh_token that is not a text"},
             {R"({"access_token":"at","id_token":1,)" + bearer + "}",
              "answered with id_token that is not a text"},
             {R"({"access_token":"at","scope":["a"],)" + bearer + "}",
              "answered with scope that is not a text"},
             {R"({"access_token":"at","expires_in":"soon",)" + bearer + "}",
              "answered with a lifetime (expires_in) that is not a number"},
             {R"({"access_token":"at","expires_in":"",)" + bearer + "}",
              "answered with a lifetime (expires_in) that is not a number"},
             {R"({"access_token":"at","expires_in":{},)" + bearer + "}",
              "answered with a lifetime (expires_in) that is not a number"},
             {R"({"access_token":"at","access_token":"b",)" + bearer + "}",
              "answered with status 200, but the answer is not valid JSON: Line 1, Column 22: "
              "Duplicate key: '...'"},
             {"access_token=at&token_type=Bearer",
              "answered with status 200, but the answer is not valid JSON: Line 1, Column 1: "
              "Syntax error: value, object or array expected."}}) {
        Failure const why = RefreshFailure(Body(body));
        EXPECT_EQ(why.kind, Failure::Kind::Provider) << body;
        EXPECT_EQ(why.reason, TokenEndpoint + reason) << body;
        EXPECT_EQ(why.code, "");
    }
}

TEST_F(TokenEndpointAsked, TellsStatusesApart)
{
    struct Row {
        FakeProvider::Response response;
        Failure::Kind kind;
        std::string code, reason;
    };
    using FakeProviderResponse = FakeProvider::Response;
    auto const error = [](int status, std::string const& body) -> FakeProviderResponse {
        return FakeProvider::Status(status, body);
    };
    auto const refused = Failure::Kind::Refused;
    auto const provider = Failure::Kind::Provider;
    auto const network = Failure::Kind::Network;
    for (Row const& row : std::vector<Row>{
             {error(400, R"({"error":"invalid_grant"})"), refused, "invalid_grant",
              "answered with status 400, invalid_grant"},
             {error(400, R"({"error":"invalid_scope","error_description":"no\nsuch scope"})"),
              refused, "invalid_scope", "answered with status 400, invalid_scope: no such scope"},
             {error(401, R"({"error":"invalid_client"})"), refused, "invalid_client",
              "answered with status 401, invalid_client"},
             {error(403, R"({"error":"access_denied"})"), refused, "access_denied",
              "answered with status 403, access_denied"},
             {error(400, ""), refused, "", "answered with status 400"},
             {error(401, "<html>No</html>"), refused, "", "answered with status 401"},
             {error(400, R"({"error":["invalid_grant"]})"), refused, "",
              "answered with status 400"},
             {error(400, R"({"error":"in\nvalid"})"), refused, "", "answered with status 400"},
             {error(400, R"({"error":"x","error":"y"})"), refused, "", "answered with status 400"},
             {error(403, "<html>Forbidden"), provider, "", "answered with status 403"},
             {error(404, ""), provider, "", "answered with status 404"},
             {error(407, ""), provider, "", "answered with status 407"},
             {error(408, ""), network, "", "answered with status 408"},
             {FakeProvider::Status(429, "", {{"retry-after", "30"}}), network, "",
              "answered with status 429, to be asked again after 30 s"},
             {FakeProvider::Status(503, "<html>",
                                   {{"retry-after", "Wed, 21 Oct 2026 07:28:00 GMT"}}),
              network, "",
              "answered with status 503, to be asked again after Wed, 21 Oct 2026 07:28:00 GMT"},
             {error(429, ""), network, "", "answered with status 429"},
             {error(503, ""), network, "", "answered with status 503"},
             {error(500, R"({"error":"server_error","error_description":"oops"})"), provider,
              "server_error", "answered with status 500, server_error: oops"},
             {error(502, "<html>Bad gateway"), provider, "", "answered with status 502"},
             {FakeProvider::Status(307, "", {{"location", "https://evil.example"}}), provider, "",
              "answered with status 307, a redirect, which is never followed"},
             {error(304, ""), provider, "",
              "answered with status 304, a redirect, which is never followed"},
             {error(204, ""), provider, "",
              "answered with status 204, but the answer is empty instead of JSON"},
             {error(700, ""), provider, "", "answered with status 700, which has no meaning here"},
             {FakeProvider::Failed(HttpFailure::Timeout, "30 s"), network, "",
              "did not answer in time (30 s)"},
             {FakeProvider::Failed(HttpFailure::Cancelled), Failure::Kind::Cancelled, "",
              "was not waited for: the host cancelled"}}) {
        SCOPED_TRACE(row.reason);
        Failure const why = RefreshFailure(row.response);
        EXPECT_EQ(why.kind, row.kind);
        EXPECT_EQ(why.code, row.code);
        EXPECT_EQ(why.status, row.response.status);
        EXPECT_EQ(why.reason, TokenEndpoint + row.reason);
        EXPECT_FALSE(why.remedy.empty());
    }
    for (HttpRequest const& request : fake.Requests())
        EXPECT_THAT(request.url, StartsWith(FakeProvider::Issuer));
}

TEST_F(TokenEndpointAsked, ShowsNoSecretThatAnAnswerRepeats)
{
    std::string const code = "SplxlOBeZQQYbYS6WxSbIA", verifier = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r";
    for (int padding : {0, 150, 190, 199})
        for (std::string const& secret : {code, verifier}) {
            std::string const words = std::string(padding, 'x') + ' ' + secret + ' ' + secret;
            fake.Set("/token", FakeProvider::Status(400, R"({"error":"invalid_grant",)"
                                                         R"("error_description":")" +
                                                             words + "\"}"));
            auto const answer = provider.ExchangeCode(code, "r", verifier, nullptr);
            EXPECT_THAT(answer.Why().reason, HasSubstr("invalid_grant"));
            EXPECT_THAT(answer.Why().reason, Not(HasSubstr(secret.substr(0, 6))));
        }
    fake.Set("/token", FakeProvider::Status(400, "{\"error\":\"" + code + "\"}"));
    EXPECT_EQ(provider.ExchangeCode(code, "r", verifier, nullptr).Why().code, "(hidden)");
    fake.Set("/token", FakeProvider::Failed(HttpFailure::Other, "sent " + verifier));
    EXPECT_THAT(provider.ExchangeCode(code, "r", verifier, nullptr).Why().reason,
                Not(HasSubstr(verifier)));
}

TEST_F(TokenEndpointAsked, IsNotAskedWithoutADescription)
{
    fake.Set("/.well-known/openid-configuration", FakeProvider::Failed(HttpFailure::Name));
    auto const answer = provider.Refresh("rt", "");
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.Why().kind, Failure::Kind::Network);
    EXPECT_THAT(fake.Requests("/token"), SizeIs(0));
}

TEST_F(KeysAsked, VerifyAnIdToken)
{
    auto const claims = provider.Verify(IdToken(), "nonce", "user", "");
    ASSERT_TRUE(claims) << claims.Why().reason;
    EXPECT_EQ(TextMember(*claims, "sub"), "user");
    EXPECT_TRUE(provider.Verify(IdToken(), "nonce", "", ""));
    EXPECT_THAT(fake.Requests("/keys"), SizeIs(1));
    EXPECT_EQ(provider.Verify(IdToken(), "other", "", "").Why().reason,
              "the id_token belongs to another sign-in (nonce)");
    EXPECT_THAT(fake.Requests("/keys"), SizeIs(1));
}

TEST_F(KeysAsked, AreAskedAnewForARotatedOneAndOnceAMinute)
{
    EXPECT_TRUE(provider.Verify(IdToken(), "nonce", "", ""));
    Json::Value set;
    set["keys"].append(Signer::Shared(Signer::Kind::Rsa).PublicJwk("two"));
    fake.Set("/keys", FakeProvider::Json(set));
    EXPECT_TRUE(provider.Verify(IdToken({}, "two"), "nonce", "", ""));
    EXPECT_THAT(fake.Requests("/keys"), SizeIs(2));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(provider.Verify(IdToken({}, "three"), "nonce", "", "").Why().reason,
                  "the id_token is signed by a key that the provider does not have for RS256 "
                  "(kid \"three\")");
    EXPECT_THAT(fake.Requests("/keys"), SizeIs(2));
}

TEST_F(KeysAsked, ThatCannotBeGotMakeNoTokenBad)
{
    EXPECT_TRUE(provider.Verify(IdToken(), "nonce", "", ""));
    fake.Set("/keys", FakeProvider::Failed(HttpFailure::Timeout));
    auto const claims = provider.Verify(IdToken({}, "two"), "nonce", "", "");
    ASSERT_FALSE(claims);
    EXPECT_EQ(claims.Why().kind, Failure::Kind::Network);
    EXPECT_EQ(claims.Why().reason,
              "the key set https://idp.example/tenant/keys did not answer in time");
    EXPECT_TRUE(provider.Verify(IdToken(), "nonce", "", ""));
}

TEST_F(KeysAsked, AreToldWhereThereAreNone)
{
    for (char const* const body : {"{}", R"({"keys":[]})", R"({"keys":[{"kty":"oct"}]})"}) {
        fake.Set("/keys", Body(body));
        EXPECT_EQ(provider.Verify(IdToken(), "nonce", "", "").Why().reason,
                  "the key set https://idp.example/tenant/keys has no key that verifies "
                  "signatures");
    }
}

TEST_F(UserInfoAsked, GivesTheClaimsOfTheSameUser)
{
    fake.Set("/userinfo", Body(R"({"sub":"user","email":"a@b"})"));
    auto claims = provider.UserInfo("the-access-token", "user");
    ASSERT_TRUE(claims) << claims.Why().reason;
    EXPECT_EQ(TextMember(*claims, "email"), "a@b");
    EXPECT_THAT(fake.Requests("/userinfo")[0].headers,
                Contains(Pair("Authorization", "Bearer the-access-token")));
    EXPECT_EQ(fake.Requests("/userinfo")[0].url, FakeProvider::Url("/userinfo"));
    for (char const* const body :
         {R"({"sub":"other"})", R"({"email":"a@b"})", R"({"sub":7})", R"({"sub":"User"})"}) {
        fake.Set("/userinfo", Body(body));
        claims = provider.UserInfo("the-access-token", "user");
        ASSERT_FALSE(claims) << body;
        EXPECT_EQ(claims.Why().kind, Failure::Kind::OtherUser);
        EXPECT_EQ(claims.Why().reason,
                  "the userinfo endpoint https://idp.example/tenant/userinfo answered about "
                  "another user (sub) than the one who signed in");
    }
}

TEST_F(UserInfoAsked, TellsARefusedToken)
{
    fake.Set("/userinfo",
             FakeProvider::Status(
                 401, "",
                 {{"www-authenticate", "Bearer realm=\"x\", error=\"invalid_token\", "
                                       "error_description=\"expired the-access-token\""}}));
    auto const claims = provider.UserInfo("the-access-token", "user");
    ASSERT_FALSE(claims);
    EXPECT_EQ(claims.Why().kind, Failure::Kind::Refused);
    EXPECT_EQ(claims.Why().code, "invalid_token");
    EXPECT_EQ(claims.Why().reason,
              "the userinfo endpoint https://idp.example/tenant/userinfo answered with status "
              "401, invalid_token: expired (hidden)");
}

TEST_F(UserInfoAsked, IsEmptyWhereTheProviderHasNone)
{
    Json::Value json = FakeProvider::Description();
    json.removeMember("userinfo_endpoint");
    json.removeMember("revocation_endpoint");
    json.removeMember("device_authorization_endpoint");
    fake.Set("/.well-known/openid-configuration", FakeProvider::Json(json));
    auto const claims = provider.UserInfo("at", "user");
    ASSERT_TRUE(claims);
    EXPECT_TRUE(claims->isObject());
    EXPECT_TRUE(claims->empty());
    EXPECT_EQ(provider.Revoke("rt", "refresh_token").Why().reason,
              "the provider https://idp.example/tenant offers no revocation of tokens "
              "(revocation_endpoint)");
    EXPECT_EQ(provider.AuthorizeDevice("openid").Why().kind, Failure::Kind::Provider);
}

TEST_F(RevocationAsked, IsDoneWhateverTheBody)
{
    fake.Set("/revoke", FakeProvider::Status(200, "<html>"));
    EXPECT_TRUE(*provider.Revoke("rt", "refresh_token"));
    EXPECT_THAT(*DecodeForm(fake.Requests("/revoke")[0].body),
                UnorderedElementsAre(Pair("token", "rt"), Pair("token_type_hint", "refresh_token"),
                                     Pair("client_id", "client")));
    fake.Set("/revoke", FakeProvider::Status(401));
    EXPECT_EQ(provider.Revoke("rt", "refresh_token").Why().kind, Failure::Kind::Refused);
    fake.Set("/revoke", FakeProvider::Status(503));
    EXPECT_EQ(provider.Revoke("rt", "refresh_token").Why().kind, Failure::Kind::Network);
}

TEST_F(DeviceAsked, GivesCodesAndAddresses)
{
    fake.Set("/device", Body(R"({"device_code":"dc","user_code":"WDJB-MJHT","expires_in":1800,)"
                             R"("verification_uri":"https://idp.example/device","interval":7,)"
                             R"("verification_uri_complete":"https://idp.example/device?u=W"})"));
    auto answer = provider.AuthorizeDevice("openid");
    ASSERT_TRUE(answer) << answer.Why().reason;
    EXPECT_EQ(*answer->deviceCode, "dc");
    EXPECT_EQ(answer->userCode, "WDJB-MJHT");
    EXPECT_EQ(answer->verificationUri, "https://idp.example/device");
    EXPECT_EQ(answer->verificationUriComplete, "https://idp.example/device?u=W");
    EXPECT_EQ(answer->lifetime, seconds(1800));
    EXPECT_EQ(answer->interval, seconds(7));
    EXPECT_THAT(*DecodeForm(fake.Requests("/device")[0].body),
                UnorderedElementsAre(Pair("client_id", "client"), Pair("scope", "openid")));
    std::string const codes = R"({"device_code":"dc","user_code":"u",)";
    std::string const uri = R"("verification_uri":"https://idp.example/d")";
    fake.Set("/device", Body(codes + uri + R"(,"expires_in":"60"})"));
    EXPECT_EQ(provider.AuthorizeDevice("openid")->interval, seconds(5));
    for (std::string const& body :
         {std::string("{}"), R"({"user_code":"u","expires_in":60,)" + uri + "}",
          R"({"device_code":"dc","expires_in":60,)" + uri + "}", codes + uri + "}",
          codes + R"("expires_in":60})",
          codes + R"("expires_in":60,"verification_uri":"http://idp.example/d"})",
          codes + R"("expires_in":60,"interval":"often",)" + uri + "}",
          codes + R"("expires_in":60,"verification_uri_complete":"file:///etc/passwd",)" + uri +
              "}"}) {
        fake.Set("/device", Body(body));
        auto const refused = provider.AuthorizeDevice("openid");
        ASSERT_FALSE(refused) << body;
        EXPECT_EQ(refused.Why().kind, Failure::Kind::Provider) << body;
    }
}

TEST_F(DeviceAsked, IsPolledUntilItIsDone)
{
    fake.Set("/token", FakeProvider::Status(400, R"({"error":"authorization_pending"})"));
    auto answer = provider.PollDevice("dc");
    EXPECT_EQ(answer.Why().kind, Failure::Kind::Refused);
    EXPECT_EQ(answer.Why().code, "authorization_pending");
    fake.Set("/token", FakeProvider::Status(400, R"({"error":"slow_down"})"));
    EXPECT_EQ(provider.PollDevice("dc").Why().code, "slow_down");
    fake.Set("/token", Body(R"({"access_token":"at","token_type":"Bearer","id_token":"it"})"));
    answer = provider.PollDevice("dc");
    EXPECT_EQ(*answer->accessToken, "at");
    EXPECT_THAT(
        *DecodeForm(fake.Requests("/token")[2].body),
        UnorderedElementsAre(Pair("grant_type", "urn:ietf:params:oauth:grant-type:device_code"),
                             Pair("device_code", "dc"), Pair("client_id", "client")));
}

TEST_F(ProviderAsked, ByManyThreadsAtOnceLearnsOnce)
{
    std::vector<std::future<bool>> answers;
    std::string const token = IdToken();
    for (int i = 0; i < 8; ++i)
        answers.push_back(std::async(std::launch::async, [&] {
            return static_cast<bool>(provider.Verify(token, "nonce", "", ""));
        }));
    for (auto& answer : answers)
        EXPECT_TRUE(answer.get());
    EXPECT_THAT(fake.Requests("/.well-known/openid-configuration"), SizeIs(1));
    EXPECT_THAT(fake.Requests("/keys"), SizeIs(1));
}

} // namespace
