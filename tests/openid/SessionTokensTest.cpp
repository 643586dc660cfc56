// Access tokens: from the store, by a refresh, and until when.

#include <string>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;
using Rig::All;
using Rig::SessionWorld;
using Rig::TestProvider;
using std::chrono::hours;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;

namespace {

using Behaviour = TestProvider::Behaviour;

/// A world where somebody is signed in.
struct SignedIn : SessionWorld {
    std::shared_ptr<Session> session = NewSession();
    SignedIn() { EXPECT_TRUE(session->LoginInBrowser("")) << LogText(); }
    explicit SignedIn(std::string const& scopes)
    {
        configuration.servers["production"].scopes = scopes;
        session = NewSession();
        EXPECT_TRUE(session->LoginInBrowser("")) << LogText();
    }
    explicit SignedIn(int lifetime)
    {
        provider.Order([&](Behaviour& behaviour) { behaviour.lifetime = lifetime; });
        EXPECT_TRUE(session->LoginInBrowser("")) << LogText();
    }

    int Refreshes() const { return provider.Count("refresh"); }
    std::string Token(TokenSpec const& spec = All) { return *session->AccessToken(spec).text; }
    void Refuse(int status, std::string const& body = {})
    {
        provider.Order([&](Behaviour& behaviour) {
            behaviour.refreshStatus = status;
            behaviour.refreshBody = body;
        });
    }
    void ExpectStillSignedIn()
    {
        EXPECT_TRUE(session->IsLoggedIn());
        Refuse(0);
        provider.Order([](Behaviour& behaviour) { behaviour.isAway = false; });
        Pass(seconds(6));
        EXPECT_FALSE(Token().empty()) << LogText();
    }
};

} // namespace

TEST(SessionTokens, AreUsedUntilOneMinuteBeforeTheirEnd)
{
    SignedIn world;
    std::string const first = world.Token();
    world.Pass(seconds(3600 - 65));
    EXPECT_EQ(world.Token(), first);
    EXPECT_TRUE(world.session->TokenAtHand(All).usable);
    EXPECT_EQ(world.Refreshes(), 0);
    world.Pass(seconds(6));
    EXPECT_FALSE(world.session->TokenAtHand(All).usable);
    EXPECT_EQ(*world.session->TokenAtHand(All).text, first);
    std::string const second = world.Token();
    EXPECT_NE(second, first);
    EXPECT_EQ(second, world.provider.Last("access_token"));
    EXPECT_EQ(world.Refreshes(), 1);
    EXPECT_EQ(world.Token(), second);
    EXPECT_EQ(world.Refreshes(), 1);
}

TEST(SessionTokens, OfAShortLifeAreUsedForHalfOfIt)
{
    SignedIn world(30);
    std::string const first = world.Token();
    world.Pass(seconds(13));
    EXPECT_EQ(world.Token(), first);
    world.Pass(seconds(3));
    EXPECT_NE(world.Token(), first);
    EXPECT_EQ(world.Refreshes(), 1);
}

TEST(SessionTokens, ThatTellNoLifetimeAreUsedForFiveMinutes)
{
    SignedIn world(0);
    TokenView const first = world.session->AccessToken(All);
    EXPECT_EQ(first.expiryDate, 0);
    EXPECT_TRUE(first.usable);
    world.Pass(seconds(235));
    EXPECT_EQ(world.Token(), *first.text);
    world.Pass(seconds(6));
    EXPECT_NE(world.Token(), *first.text);
}

TEST(SessionTokens, OutliveAClockThatIsSet)
{
    for (hours const jump : {hours(1), hours(-1), hours(24 * 365), hours(-24 * 365)}) {
        SignedIn world;
        std::string const first = world.Token();
        world.Jump(jump);
        EXPECT_EQ(world.Token(), first);
        EXPECT_TRUE(world.session->IsLoggedIn());
        EXPECT_EQ(world.Refreshes(), 0);
        // And they are not handed out for longer than they live, either.
        world.Pass(seconds(3600 - 59));
        EXPECT_NE(world.Token(), first) << jump.count();
        EXPECT_EQ(world.Refreshes(), 1);
        EXPECT_TRUE(world.session->IsLoggedIn());
    }
}

TEST(SessionTokens, OfAnotherProcessLiveNoLongerThanTheirLifetimeFromTheFirstSight)
{
    SignedIn world;
    std::string const first = world.Token();
    world.Jump(hours(-24));
    auto const late = world.NewSession();
    EXPECT_EQ(*late->AccessToken(All).text, first);
    world.Pass(seconds(3600 - 59));
    EXPECT_NE(*late->AccessToken(All).text, first);
    EXPECT_EQ(world.Refreshes(), 1);
    world.Jump(hours(24));
    // To a new process it looks expired: that is one refresh more, and nobody is signed out.
    EXPECT_TRUE(world.NewSession()->RestoreLogin());
    EXPECT_EQ(world.Refreshes(), 2);
    EXPECT_TRUE(late->IsLoggedIn());
}

TEST(SessionTokens, RotateWithTheRefreshToken)
{
    SignedIn world;
    for (int i = 1; i <= 5; ++i) {
        world.Pass(seconds(3600));
        std::string const token = world.Token();
        EXPECT_EQ(token, world.provider.Last("access_token"));
        EXPECT_EQ(world.Refreshes(), i);
    }
    EXPECT_EQ(world.provider.Reuses(), 0);
}

TEST(SessionTokens, KeepTheRefreshTokenWhereNoNewOneComes)
{
    SignedIn world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.rotates = false; });
    for (int i = 0; i < 3; ++i) {
        world.Pass(seconds(3600));
        EXPECT_FALSE(world.Token().empty());
    }
    EXPECT_EQ(world.Refreshes(), 3);
}

TEST(SessionTokens, AreKeptByTypeAndScopeWhoseCaseCounts)
{
    SignedIn world("Data:Read data:read offline_access openid");
    std::string const all = world.Token();
    std::string const data = world.Token({1, "data:read"});
    std::string const otherCase = world.Token({1, "Data:Read"});
    std::string const otherType = world.Token({2, "data:read"});
    EXPECT_EQ(world.Refreshes(), 3);
    std::set<std::string> const different{all, data, otherCase, otherType};
    EXPECT_EQ(different.size(), 4u);
    EXPECT_EQ(different.count(""), 0u);
    EXPECT_EQ(world.Token(), all);
    EXPECT_EQ(world.Token({1, "data:read"}), data);
    EXPECT_EQ(world.Token({2, "data:read"}), otherType);
    EXPECT_EQ(*world.NewSession()->AccessToken({1, "Data:Read"}).text, otherCase);
    EXPECT_EQ(world.Refreshes(), 3);
}

TEST(SessionTokens, OfAllScopesNeedNoTokenOfTheirOwn)
{
    SignedIn world;
    std::string const all = world.Token();
    EXPECT_EQ(world.Token({1, "openid profile offline_access"}), all);
    EXPECT_EQ(world.Token({1, "profile  offline_access openid openid"}), all);
    EXPECT_EQ(world.Refreshes(), 0);
}

TEST(SessionTokens, OfAScopeThatTheProviderRefusesAreNotToBeHad)
{
    for (bool const byStatusAlone : {false, true}) {
        SignedIn world;
        world.provider.Order([&](Behaviour& behaviour) {
            behaviour.scopes.erase("profile");
            behaviour.refusesScopesByStatusAlone = byStatusAlone;
        });
        TokenView const view = world.session->AccessToken({1, "profile"});
        EXPECT_TRUE(view.text->empty());
        EXPECT_FALSE(view.usable);
        EXPECT_EQ(world.LinesWith("Error Cannot get a new token: "), 1) << world.LogText();
        world.ExpectStillSignedIn();
        EXPECT_EQ(world.provider.Reuses(), 0);
    }
}

TEST(SessionTokens, AreRefreshedWhenTheHostWantsIt)
{
    SignedIn world;
    std::string const first = world.Token();
    EXPECT_TRUE(world.session->RefreshToken(All));
    EXPECT_NE(world.Token(), first);
    EXPECT_EQ(world.Refreshes(), 1);
    EXPECT_THAT(world.LogText(), HasSubstr("Info Renewed a token of https://login.example"));
}

TEST(SessionTokens, StayAsTheyAreWhileTheNetworkIsAway)
{
    SignedIn world;
    world.Pass(seconds(3600));
    world.provider.Order([](Behaviour& behaviour) { behaviour.isAway = true; });
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(world.Token(), "");
        EXPECT_FALSE(world.session->RestoreLogin());
    }
    // One request and one line for all that come within a few seconds.
    EXPECT_EQ(world.provider.Count("token") - 1, 1);
    EXPECT_EQ(world.LinesWith("Error Cannot get a new token: "), 1);
    world.Pass(seconds(6));
    EXPECT_EQ(world.Token(), "");
    EXPECT_EQ(world.provider.Count("token") - 1, 2);
    world.ExpectStillSignedIn();
}

TEST(SessionTokens, StayAsTheyAreOnAnErrorOfTheServer)
{
    for (int const status : {400, 401, 403, 404, 429, 500, 502, 503})
        for (char const* const body : {"<html>", "no", R"({"message": "invalid_grant"})"}) {
            SignedIn world;
            world.Pass(seconds(3600));
            world.Refuse(status, body);
            EXPECT_EQ(world.Token(), "") << status;
            EXPECT_EQ(world.LinesWith("Error Cannot get a new token: "), 1) << status;
            world.ExpectStillSignedIn();
        }
}

TEST(SessionTokens, StayAsTheyAreOnErrorsThatAreNotTheTokens)
{
    for (char const* const code : {"invalid_client", "unauthorized_client", "invalid_request",
                                   "temporarily_unavailable", "unsupported_grant_type"}) {
        SignedIn world;
        world.Pass(seconds(3600));
        world.Refuse(400, R"({"error": ")" + std::string(code) + "\"}");
        EXPECT_EQ(world.Token(), "");
        EXPECT_THAT(world.LogText(), HasSubstr(code));
        world.ExpectStillSignedIn();
    }
}

TEST(SessionTokens, SignOutWhenTheirRefreshTokenIsRefused)
{
    struct Sample {
        int status;
        char const* body;
    };
    for (Sample const& sample :
         {Sample{400, R"({"error": "invalid_grant"})"}, Sample{400, ""}, Sample{401, ""}}) {
        SCOPED_TRACE(sample.body);
        SignedIn world;
        auto const another = world.NewSession();
        EXPECT_TRUE(another->IsLoggedIn());
        world.session->Events().Clear();
        world.Pass(seconds(3600));
        world.Refuse(sample.status, sample.body);
        EXPECT_EQ(world.Token(), "");
        EXPECT_FALSE(world.session->IsLoggedIn());
        EXPECT_TRUE(world.session->Events().Dispatch());
        EXPECT_FALSE(world.session->Events().Dispatch());
        EXPECT_FALSE(std::filesystem::exists(world.session->StoreFile(0)));
        EXPECT_EQ(
            world.LinesWith("Error Signed out: the provider https://login.example refuses the "
                            "refresh token. Fix: sign in again"),
            1);
        EXPECT_FALSE(another->IsLoggedIn());
        EXPECT_TRUE(another->Events().Dispatch());
        world.Refuse(0);
        EXPECT_TRUE(world.session->LoginInBrowser(""));
        EXPECT_FALSE(world.Token().empty());
    }
}

TEST(SessionTokens, GoOnWithWhatAnotherProcessRotated)
{
    SignedIn world;
    auto const another = world.NewSession();
    EXPECT_TRUE(another->IsLoggedIn());
    world.Pass(seconds(3600));
    std::string const fresh = world.Token();
    EXPECT_EQ(*another->AccessToken(All).text, fresh);
    EXPECT_EQ(world.Refreshes(), 1);
    EXPECT_EQ(world.provider.Reuses(), 0);
}

/// A process of another version, or of a machine whose locks are none, that rotates in the very
/// moment in which this one asks.
TEST(SessionTokens, GoOnWithTheStoreWhenTheRefusedTokenIsNotTheOneThere)
{
    SignedIn world;
    world.Pass(seconds(3600));
    std::string const refused = world.provider.Last("refresh_token");
    auto const other = std::make_shared<TokenStore>(world.session->StoreFolder());
    bool isFirst = true;
    world.provider.Order([&](Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const& endpoint) {
            if (endpoint != "token" || !isFirst)
                return;
            isFirst = false;
            HttpRequest rotation;
            rotation.url = world.provider.Issuer() + "/token";
            rotation.body = EncodeForm({{"grant_type", "refresh_token"},
                                        {"refresh_token", refused},
                                        {"client_id", "client-1"}});
            world.provider.Answer(rotation);
            auto login = **other->Read(world.provider.Issuer(), "client-1");
            login.refreshToken = world.provider.Last("refresh_token");
            EXPECT_TRUE(other->Write(login));
        };
    });
    // Reuse is detected here, as by a strict provider; one that forgives a moment is asked again.
    world.Token();
    EXPECT_EQ(world.provider.Reuses(), 1);
    EXPECT_EQ(world.Refreshes(), 3);
}

TEST(SessionTokens, OfAnotherUserAreRefused)
{
    SignedIn world;
    std::string const first = world.Token();
    world.provider.Order([](Behaviour& behaviour) { behaviour.subjectOfRefresh = "mallory"; });
    EXPECT_FALSE(world.session->RefreshToken(All));
    EXPECT_EQ(*world.session->TokenAtHand(All).text, first);
    EXPECT_EQ(world.session->Claims()["sub"], "alice-1");
    EXPECT_THAT(world.LogText(), HasSubstr("is about another user (sub)"));
    // The refresh token was rotated all the same.
    world.provider.Order([](Behaviour& behaviour) { behaviour.subjectOfRefresh.clear(); });
    world.Pass(seconds(6));
    EXPECT_TRUE(world.session->RefreshToken(All));
    EXPECT_EQ(world.provider.Reuses(), 0);
}

TEST(SessionTokens, MayBringANewIdTokenThatIsNotKept)
{
    SignedIn world;
    std::string const first = world.provider.Last("id_token");
    world.provider.Order([](Behaviour& behaviour) { behaviour.subjectOfRefresh = "alice-1"; });
    EXPECT_TRUE(world.session->RefreshToken(All)) << world.LogText();
    std::string const second = world.provider.Last("id_token");
    EXPECT_NE(first, second);
    // It has been verified, and is of no use to anybody but a thief.
    std::string const file = Unprotect(Rig::ContentOf(world.session->StoreFile(0))).bytes;
    EXPECT_THAT(file, HasSubstr(world.provider.Last("access_token")));
    EXPECT_THAT(file, Not(HasSubstr(second)));
    EXPECT_EQ(world.session->Claims()["email"], "alice@login.example");
}

TEST(SessionTokens, AreLearntAnewOnceMemoryIsForgotten)
{
    SignedIn world;
    std::string const first = world.Token();
    world.Jump(hours(2));
    EXPECT_EQ(world.Token(), first);
    world.session->ForgetMemory();
    EXPECT_NE(world.Token(), first);
    EXPECT_EQ(world.Refreshes(), 1);
}
