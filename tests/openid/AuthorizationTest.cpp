// The authorization request, and what comes back in the browser.

#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/protocol/Authorization.h"

namespace {

using namespace Halvorix::OpenId;
using testing::ElementsAre;
using testing::Pair;

constexpr char const* Issuer = "https://idp.example";

Client TheClient()
{
    Client client;
    client.issuer = Issuer;
    client.clientId = "my client";
    client.scopes = "openid email";
    return client;
}

Metadata TheMetadata()
{
    Metadata metadata;
    metadata.authorizationEndpoint = "https://idp.example/authorize?tenant=1";
    metadata.endSessionEndpoint = "https://idp.example/logout";
    return metadata;
}

Parameters QueryOf(std::string const& url)
{
    return DecodeForm(url.substr(url.find('?') + 1)).value();
}

TEST(Authorization, HasTheChallengeOfTheStandardsExample)
{
    // RFC 7636, appendix B.
    EXPECT_EQ(ChallengeOf("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

TEST(Authorization, HasSecretsOf256BitsThatNeverRepeat)
{
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        AuthorizationSecrets const secrets = NewAuthorizationSecrets();
        for (std::string const& secret : {secrets.state, secrets.nonce, secrets.verifier}) {
            EXPECT_EQ(FromBase64Url(secret).value().size(), 32u);
            EXPECT_TRUE(seen.insert(secret).second);
        }
        // RFC 7636, section 4.1.
        EXPECT_EQ(secrets.verifier.size(), 43u);
    }
}

TEST(Authorization, AsksForACodeWithAllThatBindsIt)
{
    AuthorizationSecrets const secrets{"the state", "the nonce",
                                       "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"};
    std::string const url =
        AuthorizationUrl(TheMetadata(), TheClient(), "http://127.0.0.1:1234/callback", secrets, "");
    EXPECT_EQ(url.rfind("https://idp.example/authorize?tenant=1&", 0), 0u);
    EXPECT_EQ(url.find(secrets.verifier), std::string::npos);
    EXPECT_THAT(QueryOf(url),
                ElementsAre(Pair("tenant", "1"), Pair("response_type", "code"),
                            Pair("client_id", "my client"),
                            Pair("redirect_uri", "http://127.0.0.1:1234/callback"),
                            Pair("scope", "openid email"), Pair("state", "the state"),
                            Pair("nonce", "the nonce"),
                            Pair("code_challenge", "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"),
                            Pair("code_challenge_method", "S256")));
}

TEST(Authorization, HandsOnAHintAndAsksForConsentToOfflineAccess)
{
    Client client = TheClient();
    client.scopes = "openid offline_access";
    auto const query =
        QueryOf(AuthorizationUrl(TheMetadata(), client, "http://127.0.0.1:1/callback",
                                 {"s", "n", "v"}, "jane&prompt=none@example.com"));
    EXPECT_THAT(query, testing::Contains(Pair("prompt", "consent")));
    EXPECT_THAT(query, testing::Contains(Pair("login_hint", "jane&prompt=none@example.com")));
    client.scopes = "openid not_offline_access";
    EXPECT_THAT(QueryOf(AuthorizationUrl(TheMetadata(), client, "x", {"s", "n", "v"}, "")),
                testing::Not(testing::Contains(Pair("prompt", testing::_))));
}

TEST(Authorization, GivesTheCodeOfARightResponse)
{
    AuthorizationSecrets const secrets{"state", "nonce", "verifier"};
    Metadata metadata;
    auto code = ReadAuthorizationResponse({{"code", "c o/d+e"}, {"state", "state"}, {"x", "y"}},
                                          secrets, metadata, Issuer);
    EXPECT_EQ(*code, "c o/d+e");
    code = ReadAuthorizationResponse({{"iss", Issuer}, {"code", "c"}, {"state", "state"}}, secrets,
                                     metadata, Issuer);
    EXPECT_EQ(*code, "c");
    metadata.issuerInResponse = true;
    code = ReadAuthorizationResponse({{"iss", Issuer}, {"code", "c"}, {"state", "state"}}, secrets,
                                     metadata, Issuer);
    EXPECT_EQ(*code, "c");
}

TEST(Authorization, RefusesAResponseThatIsNotWhole)
{
    struct Row {
        char const* name;
        Parameters response;
        std::string reason;
        bool promisesIssuer = false;
    };
    for (Row const& row : std::vector<Row>{
             {"nothing", {}, "belongs to another sign-in (state)"},
             {"no state", {{"code", "c"}}, "belongs to another sign-in (state)"},
             {"another state",
              {{"code", "c"}, {"state", "State"}},
              "belongs to another sign-in (state)"},
             {"two states",
              {{"state", "state"}, {"code", "c"}, {"state", "state"}},
              "has a parameter more than once"},
             {"two codes",
              {{"state", "state"}, {"code", "c"}, {"code", "c"}},
              "has a parameter more than once"},
             {"two of any",
              {{"state", "state"}, {"code", "c"}, {"x", "1"}, {"x", "2"}},
              "has a parameter more than once"},
             {"no code", {{"state", "state"}}, "has neither a code nor an error"},
             {"an empty code",
              {{"state", "state"}, {"code", ""}},
              "has neither a code nor an error"},
             {"a code with a line end",
              {{"state", "state"}, {"code", "a\r\nb"}},
              "has neither a code nor an error"},
             {"another issuer",
              {{"state", "state"}, {"code", "c"}, {"iss", "https://evil.example"}},
              "is from the issuer \"https://evil.example\" instead of \"https://idp.example\""},
             {"an issuer with a slash more",
              {{"state", "state"}, {"code", "c"}, {"iss", "https://idp.example/"}},
              "is from the issuer \"https://idp.example/\" instead of \"https://idp.example\""},
             {"an empty issuer",
              {{"state", "state"}, {"code", "c"}, {"iss", ""}},
              "is from the issuer \"\" instead of \"https://idp.example\""},
             {"no issuer where one is promised",
              {{"state", "state"}, {"code", "c"}},
              "does not name its issuer (iss), as the provider announces",
              true},
             {"an error of another issuer",
              {{"state", "state"}, {"error", "access_denied"}, {"iss", "https://evil.example"}},
              "is from the issuer \"https://evil.example\" instead of \"https://idp.example\""},
         }) {
        SCOPED_TRACE(row.name);
        Metadata metadata;
        metadata.issuerInResponse = row.promisesIssuer;
        auto const code =
            ReadAuthorizationResponse(row.response, {"state", "n", "v"}, metadata, Issuer);
        ASSERT_FALSE(code);
        EXPECT_EQ(code.Why().kind, Failure::Kind::Provider);
        EXPECT_EQ(code.Why().reason, "the provider's answer in the browser " + row.reason);
    }
}

TEST(Authorization, AcceptsNoResponseWithoutAStateOfItsOwn)
{
    EXPECT_FALSE(
        ReadAuthorizationResponse({{"state", ""}, {"code", "c"}}, {"", "n", "v"}, {}, Issuer));
}

TEST(Authorization, TellsTheProvidersError)
{
    auto code = ReadAuthorizationResponse({{"error", "access_denied"},
                                           {"error_description", "The user\r\nsaid no"},
                                           {"code", "c"},
                                           {"state", "state"}},
                                          {"state", "n", "v"}, {}, Issuer);
    ASSERT_FALSE(code);
    EXPECT_EQ(code.Why().kind, Failure::Kind::Refused);
    EXPECT_EQ(code.Why().code, "access_denied");
    EXPECT_EQ(code.Why().reason,
              "the provider refused the sign-in: access_denied: The user said no");
    EXPECT_EQ(code.Why().remedy, "sign in again and agree to what the provider asks");
    code = ReadAuthorizationResponse({{"error", "server_error"}, {"state", "state"}},
                                     {"state", "n", "v"}, {}, Issuer);
    EXPECT_EQ(code.Why().reason, "the provider refused the sign-in: server_error");
    code = ReadAuthorizationResponse(
        {{"error", "e"}, {"error_description", std::string(1000, 'x')}, {"state", "state"}},
        {"state", "n", "v"}, {}, Issuer);
    EXPECT_EQ(code.Why().reason,
              "the provider refused the sign-in: e: " + std::string(200, 'x') + "...");
}

TEST(Authorization, EndsTheProvidersSession)
{
    EXPECT_EQ(EndSessionUrl(TheMetadata(), TheClient()),
              "https://idp.example/logout?client_id=my+client");
    EXPECT_EQ(EndSessionUrl({}, TheClient()), "");
}

} // namespace
