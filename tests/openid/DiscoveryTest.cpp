// What a provider says of itself: right, wrong and nothing at all.

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/ProviderAsked.h"

namespace {

using namespace Halvorix::OpenId;
using Rig::FakeProvider;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::Pair;
using testing::SizeIs;

constexpr char const* Description =
    "the description https://idp.example/tenant/.well-known/openid-configuration ";

using Discovery = Rig::ProviderAsked;

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
    Json::Value plain;
    plain.append("plain");
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
             {"code_challenge_methods_supported", plain,
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

} // namespace
