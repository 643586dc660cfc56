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
