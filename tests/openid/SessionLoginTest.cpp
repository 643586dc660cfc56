// Signing in with the browser.

#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;
using Rig::SessionWorld;
using Rig::TestProvider;
using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::Not;

namespace {

using Behaviour = TestProvider::Behaviour;

void ExpectNobodySignedIn(SessionWorld& world, Session& session, std::string const& line)
{
    EXPECT_FALSE(session.IsLoggedIn());
    EXPECT_FALSE(session.IsLoginInProgress());
    EXPECT_FALSE(session.Events().HasEvent());
    EXPECT_THAT(world.LogText(), HasSubstr(line));
}

} // namespace

TEST(SessionLogin, SignsInWithTheBrowser)
{
    SessionWorld world;
    auto const session = world.NewSession();
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_TRUE(session->Claims().isNull());
    ASSERT_TRUE(session->LoginInBrowser("alice@login.example")) << world.LogText();

    EXPECT_TRUE(session->IsLoggedIn());
    EXPECT_FALSE(session->IsLoginInProgress());
    TokenView const token = session->AccessToken({1, ""});
    EXPECT_EQ(*token.text, world.provider.Last("access_token"));
    EXPECT_TRUE(token.usable);
    EXPECT_NEAR(static_cast<double>(token.expiryDate), static_cast<double>(WallClock() + 3600), 5);
    EXPECT_EQ(world.provider.Count("refresh"), 0);
    EXPECT_THAT(world.browser.Opened().at(0), HasSubstr("login_hint=alice%40login.example"));
    EXPECT_THAT(world.LogText(), HasSubstr("Info Signed in at https://login.example"));

    EXPECT_TRUE(session->Events().Dispatch());
    EXPECT_TRUE(session->Events().Dispatch());
    EXPECT_FALSE(session->Events().Dispatch());
}

TEST(SessionLogin, KnowsTheUserByIdTokenAndUserinfo)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    Json::Value const claims = session->Claims();
    EXPECT_EQ(claims["sub"], "alice-1");
    EXPECT_EQ(claims["name"], "Alice");
    EXPECT_EQ(claims["email"], "alice@login.example");
    EXPECT_EQ(claims["iss"], "https://login.example"); // which userinfo does not change
    EXPECT_FALSE(claims.isMember("nonce"));
    EXPECT_EQ(session->LoginExpiryDate(), 0);

    Json::Value const state = session->State();
    EXPECT_EQ(state["server"], "production");
    EXPECT_EQ(state["issuer"], "https://login.example");
    EXPECT_EQ(state["clientId"], "client-1");
    EXPECT_EQ(state["subject"], "alice-1");
    EXPECT_EQ(state["loggedIn"], true);
    EXPECT_EQ(state["loginInProgress"], false);
    EXPECT_EQ(state["refreshable"], true);
    EXPECT_EQ(state["scopes"], "offline_access openid profile");
}

TEST(SessionLogin, SharesConnectionsFromItsCallbackOnAndNoLonger)
{
    SessionWorld world;
    auto const session = world.NewSession();
    auto const login = session->BeginLogin("");
    ASSERT_TRUE(login);
    EXPECT_EQ(world.sharing, 0);
    world.browser.Open(*login->url);
    ASSERT_TRUE(session->FinishLogin(*login)) << world.LogText();
    EXPECT_EQ(world.sharing, 3); // token, keys, userinfo
    EXPECT_TRUE(session->RefreshToken({1, ""})) << world.LogText();
    EXPECT_EQ(world.sharing, 3);
}

TEST(SessionLogin, LetsAHostOpenTheBrowserItself)
{
    SessionWorld world;
    auto const session = world.NewSession();
    auto const login = session->BeginLogin("");
    ASSERT_TRUE(login);
    EXPECT_TRUE(session->IsLoginInProgress());
    EXPECT_EQ(login->url->find("https://login.example/authorization?"), 0u);
    world.browser.Open(*login->url);
    ASSERT_TRUE(session->FinishLogin(*login)) << world.LogText();
    EXPECT_TRUE(session->IsLoggedIn());
    EXPECT_FALSE(session->FinishLogin(*login));
    EXPECT_THAT(world.LogText(),
                HasSubstr("Cannot sign in: no sign-in was begun, or it was ended"));
}

TEST(SessionLogin, IsSharedWithOtherProcesses)
{
    SessionWorld world;
    auto const session = world.NewSession();
    auto const another = world.NewSession();
    EXPECT_FALSE(another->IsLoggedIn());
    ASSERT_TRUE(session->LoginInBrowser(""));
    EXPECT_TRUE(another->IsLoggedIn());
    EXPECT_TRUE(another->Events().Dispatch()); // it is told, too
    EXPECT_FALSE(another->Events().HasEvent());
    EXPECT_TRUE(another->RestoreLogin());
    EXPECT_EQ(*another->AccessToken({1, ""}).text, world.provider.Last("access_token"));
    EXPECT_EQ(world.provider.Count("token"), 1);
}

TEST(SessionLogin, IsOneAtATime)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->BeginLogin(""));
    EXPECT_FALSE(session->BeginLogin(""));
    EXPECT_FALSE(session->LoginInBrowser(""));
    EXPECT_EQ(world.LinesWith("Cannot sign in: another sign-in is in progress. Fix: "), 2);
    session->CancelAnyLogin();
    EXPECT_FALSE(session->IsLoginInProgress());
    EXPECT_TRUE(session->LoginInBrowser("")) << world.LogText();
}

TEST(SessionLogin, IsFinishedAndCancelledByWhoBeganIt)
{
    SessionWorld world;
    auto const session = world.NewSession();
    auto const first = session->BeginLogin("");
    ASSERT_TRUE(first);
    session->Logout();
    auto const second = session->BeginLogin("");
    ASSERT_TRUE(second);
    session->CancelLogin(*first);
    EXPECT_TRUE(session->IsLoginInProgress());
    EXPECT_FALSE(session->FinishLogin(*first));
    EXPECT_EQ(world.LinesWith("Cannot sign in: no sign-in was begun, or it was ended"), 1);
    world.browser.Open(*second->url);
    EXPECT_TRUE(session->FinishLogin(*second)) << world.LogText();
}

TEST(SessionLogin, ThatAnExceptionEndsIsInNobodysWay)
{
    SessionWorld world;
    auto const session = world.NewSession();
    world.beforeBrowser = [] { throw std::runtime_error("no browser"); };
    EXPECT_THROW(session->LoginInBrowser(""), std::runtime_error);
    EXPECT_FALSE(session->IsLoginInProgress());
    world.beforeBrowser = nullptr;
    for (std::string const broken : {"discovery", "token", "keys", "userinfo"}) {
        // One of its own, which has not learnt anything yet.
        auto const another = world.NewSession();
        world.provider.Order([&](Behaviour& behaviour) {
            behaviour.onRequest = [&](std::string const& endpoint) {
                if (endpoint == broken)
                    throw std::runtime_error(broken);
            };
        });
        EXPECT_THROW(another->LoginInBrowser(""), std::runtime_error) << broken;
        EXPECT_FALSE(another->IsLoginInProgress()) << broken;
        world.provider.Order([](Behaviour& behaviour) { behaviour.onRequest = nullptr; });
        EXPECT_TRUE(another->LoginInBrowser("")) << broken << '\n' << world.LogText();
    }
}

TEST(SessionLogin, ThatNobodyFinishesGivesWayAfterItsTime)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->BeginLogin(""));
    world.Pass(world.configuration.loginTimeout + std::chrono::seconds(1));
    EXPECT_FALSE(session->IsLoginInProgress());
    EXPECT_TRUE(session->LoginInBrowser("")) << world.LogText();
}

TEST(SessionLogin, GivesUpAfterItsTime)
{
    SessionWorld world;
    world.configuration.loginTimeout = std::chrono::seconds(1);
    auto const session = world.NewSession();
    auto const login = session->BeginLogin("");
    ASSERT_TRUE(login);
    auto const start = SinceBoot();
    EXPECT_FALSE(session->FinishLogin(*login));
    EXPECT_LT(SinceBoot() - start, milliseconds(5000));
    ExpectNobodySignedIn(world, *session, "Cannot sign in: the browser did not come back in time");
}

TEST(SessionLogin, EndsAtOnceWhenTheHostSignsOut)
{
    SessionWorld world;
    auto const session = world.NewSession();
    auto const login = session->BeginLogin("");
    ASSERT_TRUE(login);
    milliseconds ended{0};
    std::thread host([&] {
        std::this_thread::sleep_for(milliseconds(200));
        EXPECT_FALSE(session->Logout()); // nobody was signed in
        ended = SinceBoot();
    });
    EXPECT_FALSE(session->FinishLogin(*login));
    auto const given = SinceBoot();
    host.join();
    EXPECT_LT(given - ended, milliseconds(1000));
    ExpectNobodySignedIn(world, *session, "Cannot sign in: the host ended the sign-in");
}

TEST(SessionLogin, EndsInTheMiddleOfASlowRequestWhenTheHostSignsOut)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.delay = std::chrono::seconds(8); });
    auto const session = world.NewSession();
    std::thread host([&] {
        while (world.provider.Count("token") == 0)
            std::this_thread::sleep_for(milliseconds(10));
        session->Logout();
    });
    auto const start = SinceBoot();
    EXPECT_FALSE(session->LoginInBrowser(""));
    host.join();
    EXPECT_LT(SinceBoot() - start, milliseconds(5000));
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_FALSE(session->IsLoginInProgress());
}

TEST(SessionLogin, EndsWhileItWaitsForTheStoreWhenItsHolderCancels)
{
    for (char const* const before : {"", "bob-2", "alice-1"}) {
        SCOPED_TRACE(before);
        SessionWorld world;
        TokenStore another(world.configuration.store); // as another process
        auto const session = world.NewSession();
        if (*before != '\0') {
            world.provider.Order([&](Behaviour& behaviour) { behaviour.subject = before; });
            ASSERT_TRUE(session->LoginInBrowser("")) << world.LogText();
            world.provider.Order([](Behaviour& behaviour) { behaviour.subject = "alice-1"; });
        }
        std::string const old = world.provider.Last("refresh_token");
        int const asked = world.provider.Count("userinfo");
        auto const login = session->BeginLogin("");
        ASSERT_TRUE(login);
        auto lock = another.Acquire(world.provider.Issuer(), "client-1", milliseconds(0));
        ASSERT_TRUE(lock);
        world.browser.Open(*login->url);
        std::thread host([&] {
            while (world.provider.Count("userinfo") == asked)
                std::this_thread::sleep_for(milliseconds(10));
            std::this_thread::sleep_for(milliseconds(500));
            EXPECT_TRUE(session->IsLoginInProgress()) << "it did not wait";
            session->CancelLogin(*login);
        });
        auto const start = SinceBoot();
        EXPECT_FALSE(session->FinishLogin(*login));
        EXPECT_LT(SinceBoot() - start, milliseconds(8000));
        host.join();
        EXPECT_THAT(world.LogText(), HasSubstr("Cannot sign in: the host ended it"));
        EXPECT_EQ(session->Claims()["sub"], *before == '\0' ? Json::Value() : before);
        // What nobody knows is not to stay good, unless the stored one could end with it.
        EXPECT_EQ(world.provider.IsGood(world.provider.Last("refresh_token")),
                  std::string(before) == "alice-1");
        EXPECT_EQ(world.provider.IsGood(old), *before != '\0');
    }
}

TEST(SessionLogin, WaitsForTheStoreAsLongAsOneThatIsNotCancelled)
{
    SessionWorld world;
    TokenStore another(world.configuration.store);
    auto const session = world.NewSession();
    auto const login = session->BeginLogin("");
    ASSERT_TRUE(login);
    std::thread other([&] {
        auto const lock = another.Acquire(world.provider.Issuer(), "client-1", milliseconds(0));
        EXPECT_TRUE(lock);
        world.browser.Open(*login->url);
        while (world.provider.Count("userinfo") == 0)
            std::this_thread::sleep_for(milliseconds(10));
        std::this_thread::sleep_for(milliseconds(700));
    });
    EXPECT_TRUE(session->FinishLogin(*login)) << world.LogText();
    other.join();
    EXPECT_TRUE(session->IsLoggedIn());
}

TEST(SessionLogin, NeedsABrowser)
{
    SessionWorld world;
    world.hasBrowser = false;
    auto const session = world.NewSession();
    EXPECT_FALSE(session->LoginInBrowser(""));
    ExpectNobodySignedIn(
        world, *session,
        "Cannot sign in: no browser was started: there is none. Fix: set a default "
        "browser for this user");
}

TEST(SessionLogin, NeedsTheProvider)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.isAway = true; });
    auto const session = world.NewSession();
    EXPECT_FALSE(session->LoginInBrowser(""));
    ExpectNobodySignedIn(world, *session, "Cannot sign in: the description ");
    EXPECT_TRUE(world.browser.Opened().empty());
}

TEST(SessionLogin, NeedsAnIdToken)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.givesIdToken = false; });
    auto const session = world.NewSession();
    EXPECT_FALSE(session->LoginInBrowser(""));
    ExpectNobodySignedIn(world, *session, "but no id_token");
}

TEST(SessionLogin, RefusesAnotherNonce)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.nonce = "of-another-sign-in"; });
    auto const session = world.NewSession();
    EXPECT_FALSE(session->LoginInBrowser(""));
    ExpectNobodySignedIn(world, *session, "nonce");
}

TEST(SessionLogin, RefusesUserinfoAboutAnotherUser)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.subjectOfUserinfo = "mallory"; });
    auto const session = world.NewSession();
    EXPECT_FALSE(session->LoginInBrowser(""));
    ExpectNobodySignedIn(world, *session, "answered about another user (sub)");
}

TEST(SessionLogin, CountsTheEndOfATokenFromItsReceipt)
{
    SessionWorld world;
    world.provider.Order([&](Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const& endpoint) {
            if (endpoint == "userinfo")
                world.Pass(std::chrono::seconds(100));
        };
    });
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    EXPECT_NEAR(static_cast<double>(session->TokenAtHand({1, ""}).expiryDate),
                static_cast<double>(WallClock() + 3600), 5);
    world.Pass(std::chrono::seconds(3600 - 100 - 65));
    EXPECT_TRUE(session->TokenAtHand({1, ""}).usable);
    world.Pass(std::chrono::seconds(6));
    EXPECT_FALSE(session->TokenAtHand({1, ""}).usable);
}

TEST(SessionLogin, RevokesTheOneThatItTakesThePlaceOf)
{
    struct Sample {
        char const *subject, *session;
        bool isRevoked;
    };
    // Tokens of one session at the provider may be one grant: they end together.
    for (Sample const& sample :
         {Sample{"bob-2", "", true}, Sample{"bob-2", "first", true}, Sample{"alice-1", "", false},
          Sample{"alice-1", "first", false}, Sample{"alice-1", "second", true}}) {
        SCOPED_TRACE(std::string(sample.subject) + ' ' + sample.session);
        SessionWorld world;
        auto const session = world.NewSession();
        auto const signIn = [&](std::string const& subject, std::string const& sid) {
            world.provider.Order([&](Behaviour& behaviour) {
                behaviour.subject = subject;
                if (!sid.empty())
                    behaviour.idTokenClaims["sid"] = sid;
            });
            EXPECT_TRUE(session->LoginInBrowser("")) << world.LogText();
            return world.provider.Last("refresh_token");
        };
        std::string const old = signIn("alice-1", "first");
        world.provider.Order([](Behaviour& behaviour) { behaviour.idTokenClaims.clear(); });
        std::string const present = signIn(sample.subject, sample.session);
        EXPECT_EQ(world.provider.IsGood(old), !sample.isRevoked);
        EXPECT_TRUE(world.provider.IsGood(present));
        EXPECT_EQ(session->Claims()["sub"], sample.subject);
    }
}

TEST(SessionLogin, IsDoneWhateverBecomesOfTheRevocationOfTheOneBefore)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.provider.Order([](Behaviour& behaviour) {
        behaviour.subject = "bob-2";
        behaviour.revocationStatus = 503;
    });
    EXPECT_TRUE(session->LoginInBrowser(""));
    EXPECT_EQ(session->Claims()["sub"], "bob-2");
    EXPECT_EQ(world.LinesWith("The refresh token was forgotten, but not revoked: "), 1);
}

TEST(SessionLogin, GoesOnWithoutUserinfo)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.userinfoStatus = 500; });
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser("")) << world.LogText();
    EXPECT_EQ(session->Claims()["name"], "Alice");
    EXPECT_FALSE(session->Claims().isMember("email"));
    EXPECT_EQ(world.LinesWith("The sign-in goes on without the claims of userinfo: "), 1);
}

TEST(SessionLogin, RemarksThatThereIsNoRefreshToken)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.givesRefreshToken = false; });
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    EXPECT_EQ(world.LinesWith("offline_access"), 1);
    EXPECT_NEAR(static_cast<double>(session->LoginExpiryDate()),
                static_cast<double>(WallClock() + 3600), 5);
    world.Pass(std::chrono::seconds(3600));
    EXPECT_TRUE(session->AccessToken({1, ""}).text->empty());
    EXPECT_FALSE(session->RestoreLogin());
    EXPECT_EQ(world.LinesWith("Cannot get a new token: the provider gave no refresh token"), 1);
}

TEST(SessionLogin, WithoutAConfigurationSaysWhy)
{
    Rig::TestFolder const folder;
    auto const log = std::make_shared<LogFile>();
    log->Open(folder.Path());
    Failure missing;
    missing.reason = "HxSSOOpenID.json is missing";
    Session session(missing, log);
    EXPECT_FALSE(session.LoginInBrowser(""));
    EXPECT_THAT(Rig::ContentOf(folder / "HxSSOOpenID.log"),
                HasSubstr("Error Cannot sign in: HxSSOOpenID.json is missing"));

    EXPECT_FALSE(session.FinishLogin({}));
    session.CancelLogin({});
    EXPECT_FALSE(session.RestoreLogin());
    EXPECT_FALSE(session.Logout());
    EXPECT_FALSE(session.IsLoggedIn());
    EXPECT_FALSE(session.RefreshToken({1, ""}));
    EXPECT_TRUE(session.AccessToken({1, ""}).text->empty());
    EXPECT_TRUE(session.TokenAtHand({1, ""}).text->empty());
    EXPECT_EQ(session.EndSessionAddress(), "");
    EXPECT_EQ(session.Url("issuer"), "");
    EXPECT_EQ(session.Server(), -1);
    EXPECT_FALSE(session.SelectServer(0));
    EXPECT_EQ(session.ServerName(0), "");
    EXPECT_TRUE(session.StoreFile(0).empty());
    EXPECT_EQ(session.LoginExpiryDate(), 0);
    EXPECT_EQ(session.State()["loggedIn"], false);
    session.LockStore();
    session.UnlockStore();
}
