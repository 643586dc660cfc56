// What a refresh asks for, and what becomes of its answer.

#include <string>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;
using Rig::All;
using Rig::SessionWorld;
using Rig::TestProvider;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;

namespace {

using Behaviour = TestProvider::Behaviour;

std::string const AllScopes = "data:read offline_access openid profile";

/// A world where somebody is signed in, and a process that knows nothing of it but the store.
struct SignedInBefore : SessionWorld {
    explicit SignedInBefore(Json::Value const& idTokenClaims = {})
    {
        configuration.servers["production"].scopes = AllScopes;
        configuration.networkTimeout = seconds(3);
        Order([&](Behaviour& behaviour) { behaviour.idTokenClaims = idTokenClaims; });
        EXPECT_TRUE(NewSession()->LoginInBrowser("")) << LogText();
        // A refresh brings an id_token, too.
        Order([](Behaviour& behaviour) { behaviour.subjectOfRefresh = "alice-1"; });
        session = NewSession();
    }

    void Order(std::function<void(Behaviour&)> const& change) { provider.Order(change); }
    int Refreshes() const { return provider.Count("refresh"); }
    std::string Token(TokenSpec const& spec = All) { return *session->AccessToken(spec).text; }
    /// What the store has by now.
    StoredLogin Stored()
    {
        auto const read = TokenStore(session->StoreFolder()).Read(provider.Issuer(), "client-1");
        return read && *read ? **read : StoredLogin();
    }
    void ExpectTheRotatedTokenIsKept()
    {
        EXPECT_EQ(*Stored().refreshToken, provider.Last("refresh_token"));
        EXPECT_EQ(provider.Reuses(), 0);
    }

    std::shared_ptr<Session> session;
};

} // namespace

TEST(SessionRefresh, KeepsTheRotatedTokenBeforeItAsksTheNetworkAgain)
{
    SignedInBefore world;
    world.Pass(seconds(3600));
    int asked = 0;
    world.Order([&](Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const& endpoint) {
            if (endpoint != "keys")
                return;
            ++asked;
            world.ExpectTheRotatedTokenIsKept();
        };
    });
    std::string const token = world.Token();
    EXPECT_EQ(token, world.provider.Last("access_token"));
    EXPECT_EQ(asked, 1);
}

TEST(SessionRefresh, CountsTheEndOfATokenFromItsReceipt)
{
    SignedInBefore world;
    world.Pass(seconds(3600));
    world.Order([&](Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const& endpoint) {
            if (endpoint == "keys")
                world.Pass(seconds(100));
        };
    });
    std::string const token = world.Token();
    ASSERT_FALSE(token.empty());
    world.Pass(seconds(3600 - 100 - 65));
    EXPECT_EQ(world.Token(), token);
    world.Pass(seconds(6));
    EXPECT_FALSE(world.session->TokenAtHand(All).usable);
}

TEST(SessionRefresh, HasOneTimeLimitForAllItsRequests)
{
    SignedInBefore world;
    world.Order([](Behaviour& behaviour) {
        behaviour.scopes.erase("profile");
        behaviour.refusesScopesByStatusAlone = true;
        behaviour.delay = milliseconds(1600);
    });
    // Asks with the scope, then without, then for the keys: in 6 s, as others wait for 11.
    EXPECT_EQ(world.Token({1, "profile"}), "");
    EXPECT_EQ(world.Refreshes(), 2);
    EXPECT_LE(world.provider.TimeoutOf("keys"), milliseconds(6000 - 2 * 1600));
    world.ExpectTheRotatedTokenIsKept();
}

TEST(SessionRefresh, TakesNoIdTokenOfAnotherSignIn)
{
    struct Sample {
        char const* claim;
        Json::Value value;
        char const* reason;
    };
    Json::Value claims;
    claims["auth_time"] = 1'700'000'000;
    for (Sample const& sample :
         {Sample{"nonce", "another", "the id_token belongs to another sign-in (nonce)"},
          Sample{"auth_time", 1'700'000'001,
                 "the id_token tells another time of the sign-in (auth_time)"}}) {
        SignedInBefore world(claims);
        std::string const first = world.Token();
        world.Order(
            [&](Behaviour& behaviour) { behaviour.idTokenClaims[sample.claim] = sample.value; });
        EXPECT_FALSE(world.session->RefreshToken(All));
        EXPECT_EQ(world.Token(), first);
        EXPECT_EQ(world.LinesWith(std::string("Error Cannot get a new token: ") + sample.reason), 1)
            << world.LogText();
        world.ExpectTheRotatedTokenIsKept();
        world.Order([&](Behaviour& behaviour) { behaviour.idTokenClaims = claims; });
        world.Pass(seconds(6));
        EXPECT_TRUE(world.session->RefreshToken(All)) << world.LogText();
    }
}

TEST(SessionRefresh, TakesAnIdTokenThatRepeatsWhatTheSignInSaid)
{
    Json::Value claims;
    claims["auth_time"] = 1'700'000'000;
    SignedInBefore world(claims);
    std::string const nonce = world.provider.Last("nonce");
    world.Order([&](Behaviour& behaviour) {
        behaviour.idTokenClaims["nonce"] = nonce;
        behaviour.idTokenClaims["auth_time"] = 1'700'000'000.0;
        behaviour.idTokenClaims["name"] = "Alice Agren";
    });
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(world.session->RefreshToken(All)) << world.LogText();
    EXPECT_EQ(world.session->Claims()["name"], "Alice Agren");
    EXPECT_FALSE(world.session->Claims().isMember("nonce"));
}

TEST(SessionRefresh, TakesNoTokenOfAnotherUserWhileTheKeysCannotBeHad)
{
    for (int const status : {404, 500, 503}) {
        SignedInBefore world;
        std::string const first = world.Token();
        world.Order([&](Behaviour& behaviour) {
            behaviour.keysStatus = status;
            behaviour.subjectOfRefresh = "mallory";
        });
        EXPECT_FALSE(world.session->RefreshToken(All));
        EXPECT_EQ(world.Token(), first);
        EXPECT_THAT(world.LogText(), HasSubstr("is about another user (sub)"));
        world.ExpectTheRotatedTokenIsKept();
        // The user's own is taken, but nothing of an id_token that nobody has verified.
        world.Order([](Behaviour& behaviour) {
            behaviour.subjectOfRefresh = "alice-1";
            behaviour.idTokenClaims["name"] = "Alice Agren";
        });
        world.Pass(seconds(6));
        EXPECT_TRUE(world.session->RefreshToken(All)) << world.LogText();
        EXPECT_EQ(world.Token(), world.provider.Last("access_token"));
        EXPECT_EQ(world.session->Claims()["name"], "Alice");
    }
}

TEST(SessionRefresh, AsksForNoScopeThatTheSignInWasNotGranted)
{
    SignedInBefore world;
    for (char const* const scope : {"Data:Read", "data:read Data:Read"}) {
        EXPECT_EQ(world.Token({1, scope}), "");
        EXPECT_FALSE(world.session->RefreshToken({1, scope}));
    }
    EXPECT_EQ(world.Refreshes(), 0);
    EXPECT_EQ(world.LinesWith("Error Cannot get a new token: the sign-in was not granted the scope "
                              "that the host asks for. Fix: add it to scopes"),
              2)
        << world.LogText();
    EXPECT_FALSE(world.Token({1, "data:read"}).empty());
}

TEST(SessionRefresh, AsksForAScopeThatIsNotInTheFirstToken)
{
    SessionWorld world;
    world.configuration.servers["production"].scopes = AllScopes;
    world.provider.Order(
        [](Behaviour& behaviour) { behaviour.scopeOfSignIn = "offline_access openid"; });
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser("")) << world.LogText();
    EXPECT_EQ(session->State()["scopes"], "offline_access openid");
    EXPECT_FALSE(session->AccessToken({1, "data:read"}).text->empty()) << world.LogText();
    EXPECT_EQ(world.provider.Count("refresh"), 1);
}

TEST(SessionRefresh, GivesNoTokenOfANarrowerScopeForWhatWasAsked)
{
    SignedInBefore world;
    world.Order([](Behaviour& behaviour) { behaviour.scopeOfRefresh = "profile"; });
    TokenSpec const both{1, "data:read profile"};
    EXPECT_EQ(world.Token(both), "");
    EXPECT_EQ(*world.session->TokenAtHand(both).text, "");
    EXPECT_EQ(world.LinesWith("Error Cannot get a new token: the provider gave a token of a "
                              "narrower scope than the host asks for. Fix: "),
              1);
    // It is what was asked by a host that asks for less.
    EXPECT_EQ(world.Token({1, "profile"}), world.provider.Last("access_token"));
    EXPECT_EQ(world.Refreshes(), 1);
    EXPECT_TRUE(world.session->TokenAtHand({1, "profile"}).usable);
}

TEST(SessionRefresh, TakesAwayWhatTheProviderTookBack)
{
    SignedInBefore world;
    EXPECT_EQ(world.session->State()["scopes"], AllScopes);
    world.Order([](Behaviour& behaviour) { behaviour.scopeOfRefresh = "openid profile"; });
    EXPECT_TRUE(world.session->RefreshToken(All));
    EXPECT_EQ(world.Token(), world.provider.Last("access_token"));
    EXPECT_EQ(world.session->State()["scopes"], "openid profile");
    EXPECT_EQ(world.Token({1, "data:read"}), "");
    EXPECT_EQ(world.Token({1, AllScopes}), "");
    EXPECT_EQ(world.Refreshes(), 1);
    EXPECT_EQ(world.LinesWith("the sign-in was not granted the scope"), 2);
}

TEST(SessionRefresh, IsOfAllScopesAlsoWhereTheProviderNamesFewer)
{
    SignedInBefore world;
    world.Order([](Behaviour& behaviour) { behaviour.scopeOfRefresh = "data:read profile"; });
    EXPECT_TRUE(world.session->RefreshToken(All));
    EXPECT_EQ(world.Token({1, AllScopes}), world.provider.Last("access_token"));
    EXPECT_EQ(world.Refreshes(), 1);
}
