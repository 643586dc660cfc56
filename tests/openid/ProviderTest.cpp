// Keys, userinfo, revocation and devices, as a provider answers for them.

#include <future>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/ProviderAsked.h"
#include "openid/platform/System.h"

namespace {

using namespace Halvorix::OpenId;
using Rig::FakeProvider;
using Signer = Rig::SigningKey;
using std::chrono::seconds;
using testing::Contains;
using testing::Pair;
using testing::SizeIs;
using testing::UnorderedElementsAre;

std::string IdToken(std::string const& id = "one")
{
    Json::Value claims;
    claims["iss"] = FakeProvider::Issuer;
    claims["aud"] = "client";
    claims["sub"] = "user";
    claims["nonce"] = "nonce";
    claims["iat"] = Json::Int64(WallClock());
    claims["exp"] = Json::Int64(WallClock() + 300);
    Json::Value header;
    header["kid"] = id;
    return SignToken(Signer::Shared(Signer::Kind::Rsa), "RS256", header, claims);
}

using ProviderAsked = Rig::ProviderAsked;
using KeysAsked = ProviderAsked;
using UserInfoAsked = ProviderAsked;
using RevocationAsked = ProviderAsked;
using DeviceAsked = ProviderAsked;

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
    EXPECT_TRUE(provider.Verify(IdToken("two"), "nonce", "", ""));
    EXPECT_THAT(fake.Requests("/keys"), SizeIs(2));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(provider.Verify(IdToken("three"), "nonce", "", "").Why().reason,
                  "the id_token is signed by a key that the provider does not have for RS256 "
                  "(kid \"three\")");
    EXPECT_THAT(fake.Requests("/keys"), SizeIs(2));
}

TEST_F(KeysAsked, ThatCannotBeGotMakeNoTokenBad)
{
    EXPECT_TRUE(provider.Verify(IdToken(), "nonce", "", ""));
    fake.Set("/keys", FakeProvider::Failed(HttpFailure::Timeout));
    auto const claims = provider.Verify(IdToken("two"), "nonce", "", "");
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
}

TEST_F(DeviceAsked, RefusesWhatAUserCannotBeShown)
{
    std::string const uri = R"("verification_uri":"https://idp.example/d")";
    std::string const rest = R"("device_code":"dc","expires_in":60,)" + uri;
    auto const coded = [&](std::string const& code) {
        return R"({"user_code":")" + code + "\"," + rest + "}";
    };
    fake.Set("/device", Body(coded(std::string(64, 'A'))));
    ASSERT_TRUE(provider.AuthorizeDevice("openid"));
    std::string const codes = R"({"device_code":"dc","user_code":"u","expires_in":60,)";
    std::string const noCodes = "without the codes of a sign-in on another device";
    std::string const noText = "that is not a text";
    std::string const untypable = "with a code (user_code) that nobody can type";
    std::string const noHttps = "with an address to sign in at that is not https";
    for (auto const& [body, reason] : std::vector<std::pair<std::string, std::string>>{
             {"{}", noCodes},
             {R"({"user_code":"u","expires_in":60,)" + uri + "}", noCodes},
             {"{" + rest + "}", noCodes},
             {coded(""), noCodes},
             {coded(std::string(65, 'A')), untypable},
             {coded(" A"), untypable},
             {coded("A "), untypable},
             {coded(R"(A\nhttps://evil.example)"), "with user_code " + noText},
             {coded(R"(\u001b[2J)"), "with user_code " + noText},
             {coded(R"(\u202eA)"), "with user_code " + noText},
             {R"({"user_code":7,)" + rest + "}", "with user_code " + noText},
             {R"({"device_code":"dc","user_code":"u",)" + uri + "}",
              "without the lifetime of its codes (expires_in)"},
             {R"({"device_code":"dc","user_code":"u","expires_in":"soon",)" + uri + "}",
              "without the lifetime of its codes (expires_in)"},
             {codes + R"("interval":"often",)" + uri + "}",
              "with an interval that is not a number"},
             {R"({"device_code":"dc","user_code":"u","expires_in":60})", noHttps},
             {codes + R"("verification_uri":"http://idp.example/d"})", noHttps},
             {codes + R"("verification_uri":"javascript:alert"})", noHttps},
             {codes + R"("verification_uri":"https://idp.example@evil.example/"})", noHttps},
             {codes + R"("verification_uri":"https://idp.example/d d"})", noHttps},
             // Another program at this machine is not this provider.
             {codes + R"("verification_uri":"http://127.0.0.1:1/d"})", noHttps},
             {codes + R"("verification_uri":"https://idp.example/)" + std::string(9000, 'x') +
                  "\"}",
              noHttps},
             {codes + R"("verification_uri_complete":"file:///etc/passwd",)" + uri + "}", noHttps},
             {codes + R"("verification_uri_complete":["x"],)" + uri + "}",
              "with verification_uri_complete " + noText}}) {
        fake.Set("/device", Body(body));
        auto const refused = provider.AuthorizeDevice("openid");
        ASSERT_FALSE(refused) << body;
        EXPECT_EQ(refused.Why().kind, Failure::Kind::Provider) << body;
        EXPECT_EQ(refused.Why().reason,
                  "the device endpoint https://idp.example/tenant/device answered " + reason)
            << body;
        EXPECT_FALSE(refused.Why().remedy.empty()) << body;
    }
}

TEST_F(DeviceAsked, TakesPlainHttpOfAProviderAtThisMachine)
{
    Client client = TheClient();
    client.issuer = "http://127.0.0.1:8080";
    Json::Value json;
    json["issuer"] = client.issuer;
    for (char const* const name :
         {"authorization_endpoint", "token_endpoint", "jwks_uri", "device_authorization_endpoint"})
        json[name] = client.issuer + "/x";
    Provider local(client, [&](HttpRequest const& request) {
        return request.method == "GET"
                   ? FakeProvider::Json(json)
                   : Body(R"({"device_code":"dc","user_code":"u","expires_in":60,)"
                          R"("verification_uri":"http://127.0.0.1:8080/d"})");
    });
    auto const answer = local.AuthorizeDevice("openid");
    ASSERT_TRUE(answer) << answer.Why().reason;
    EXPECT_EQ(answer->verificationUri, "http://127.0.0.1:8080/d");
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
    ASSERT_TRUE(answer) << answer.Why().reason;
    EXPECT_EQ(*answer->accessToken, "at");
    EXPECT_THAT(
        *DecodeForm(fake.Requests("/token")[2].body),
        UnorderedElementsAre(Pair("grant_type", "urn:ietf:params:oauth:grant-type:device_code"),
                             Pair("device_code", "dc"), Pair("client_id", "client")));
    fake.Set("/token", Body(R"({"access_token":"at","token_type":"Bearer"})"));
    EXPECT_EQ(provider.PollDevice("dc").Why().reason,
              "the provider https://idp.example/tenant gave tokens, but no id_token");
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
