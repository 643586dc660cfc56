// The answers of a token endpoint: right, wrong and none at all.

#include <atomic>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/ProviderAsked.h"

namespace {

using namespace Halvorix::OpenId;
using Rig::FakeProvider;
using std::chrono::seconds;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

constexpr char const* Endpoint = "the token endpoint https://idp.example/tenant/token ";

struct TokenEndpoint : Rig::ProviderAsked {
    Failure RefreshFailure(FakeProvider::Response const& response)
    {
        fake.Set("/token", response);
        auto const answer = provider.Refresh("the-refresh-token", "");
        EXPECT_FALSE(answer);
        return answer.Why();
    }
};

TEST_F(TokenEndpoint, ExchangesACodeAsAPublicClient)
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

TEST_F(TokenEndpoint, WantsAnIdTokenForACode)
{
    fake.Set("/token", Body(R"({"access_token":"at","token_type":"Bearer"})"));
    auto const answer = provider.ExchangeCode("c", "r", "v", nullptr);
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.Why().kind, Failure::Kind::Provider);
    EXPECT_EQ(answer.Why().reason,
              "the provider https://idp.example/tenant gave tokens, but no id_token");
}

TEST_F(TokenEndpoint, Refreshes)
{
    fake.Set("/token", Body(R"({"access_token":"at","token_type":"Bearer"})"));
    auto answer = provider.Refresh("rt", "");
    ASSERT_TRUE(answer) << answer.Why().reason;
    EXPECT_EQ(*answer->refreshToken, "");
    EXPECT_EQ(answer->scope, ""); // nothing was asked for by name, and nothing told
    EXPECT_EQ(answer->lifetime, seconds(0));
    EXPECT_THAT(*DecodeForm(fake.Requests("/token")[0].body),
                UnorderedElementsAre(Pair("grant_type", "refresh_token"),
                                     Pair("refresh_token", "rt"), Pair("client_id", "client")));
    answer = provider.Refresh("rt", "b a");
    EXPECT_EQ(answer->scope, "a b");
    EXPECT_THAT(*DecodeForm(fake.Requests("/token")[1].body), Contains(Pair("scope", "b a")));
}

TEST_F(TokenEndpoint, BoundsTheSizeOfATokenThatIsToBeKept)
{
    std::string const most(65'536, 'x');
    for (char const* const member : {"access_token", "refresh_token", "id_token", "scope"}) {
        Json::Value json;
        json["access_token"] = "at";
        json["token_type"] = "Bearer";
        json[member] = most;
        fake.Set("/token", FakeProvider::Json(json));
        EXPECT_TRUE(provider.Refresh("rt", "")) << member;
        json[member] = most + 'x';
        EXPECT_EQ(RefreshFailure(FakeProvider::Json(json)).reason,
                  std::string(Endpoint) + "answered with " + member +
                      " that is longer than 64 KiB");
    }
}

TEST_F(TokenEndpoint, BoundsALifetime)
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

TEST_F(TokenEndpoint, RefusesAnAnswerThatBreaksTheStandard)
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
             {R"({"access_token":"at","expires_in":true,)" + bearer + "}",
              "answered with a lifetime (expires_in) that is not a number"},
             {R"({"access_token":"at","expires_in":"+60",)" + bearer + "}",
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
        EXPECT_EQ(why.reason, Endpoint + reason) << body;
        EXPECT_EQ(why.code, "");
    }
}

TEST_F(TokenEndpoint, TellsStatusesApart)
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
             {error(401, "\r\n"), refused, "", "answered with status 401"},
             {error(401, "<html>No</html>"), provider, "", "answered with status 401"},
             {error(400, "Bad Request"), provider, "", "answered with status 400"},
             {error(400, R"({"message":"no"})"), provider, "", "answered with status 400"},
             {error(400, R"({"error":["invalid_grant"]})"), provider, "",
              "answered with status 400"},
             {error(400, R"({"error":"in\nvalid"})"), provider, "", "answered with status 400"},
             {error(400, R"({"error":"x","error":"y"})"), provider, "", "answered with status 400"},
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
        EXPECT_EQ(why.reason, Endpoint + row.reason);
        EXPECT_FALSE(why.remedy.empty());
    }
    for (HttpRequest const& request : fake.Requests())
        EXPECT_THAT(request.url, StartsWith(FakeProvider::Issuer));
}

TEST_F(TokenEndpoint, ShowsNoSecretThatAnAnswerRepeats)
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

TEST_F(TokenEndpoint, IsNotAskedWithoutADescription)
{
    fake.Set("/.well-known/openid-configuration", FakeProvider::Failed(HttpFailure::Name));
    auto const answer = provider.Refresh("rt", "");
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.Why().kind, Failure::Kind::Network);
    EXPECT_THAT(fake.Requests("/token"), SizeIs(0));
}

} // namespace
