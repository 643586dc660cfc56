// Signing out.

#include <filesystem>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"
#include "openid/platform/Files.h"

using namespace Halvorix::OpenId;
using Rig::All;
using Rig::SessionWorld;
using Rig::TestProvider;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using Behaviour = TestProvider::Behaviour;

fs::path SetAside(Session const& session, int number)
{
    return fs::path(session.StoreFile(0)) += ".damaged-" + std::to_string(number);
}

} // namespace

TEST(SessionLogout, ForgetsAndRevokes)
{
    SessionWorld world;
    auto const session = world.NewSession();
    auto const another = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    EXPECT_TRUE(another->IsLoggedIn());
    std::string const address = session->EndSessionAddress();
    EXPECT_EQ(address, "https://login.example/end_session?client_id=client-1");
    session->Events().Clear();
    another->Events().Clear();

    EXPECT_TRUE(session->Logout());
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_TRUE(session->Claims().isNull());
    EXPECT_TRUE(session->AccessToken(All).text->empty());
    EXPECT_TRUE(session->TokenAtHand(All).text->empty());
    EXPECT_FALSE(session->RestoreLogin());
    EXPECT_EQ(session->EndSessionAddress(), "");
    EXPECT_FALSE(std::filesystem::exists(session->StoreFile(0)));
    EXPECT_EQ(world.provider.Count("revocation"), 1);
    EXPECT_TRUE(session->Events().Dispatch());
    EXPECT_FALSE(session->Events().HasEvent());
    EXPECT_THAT(world.LogText(), HasSubstr("Info Signed out at https://login.example"));

    EXPECT_FALSE(another->IsLoggedIn());
    EXPECT_TRUE(another->AccessToken(All).text->empty());
    EXPECT_TRUE(another->Events().Dispatch());
    EXPECT_FALSE(session->Logout());
    EXPECT_EQ(world.provider.Count("refresh"), 0);
}

TEST(SessionLogout, IsDoneWhateverBecomesOfTheRevocation)
{
    for (int const status : {0, 401, 503}) {
        SessionWorld world;
        auto const session = world.NewSession();
        ASSERT_TRUE(session->LoginInBrowser(""));
        world.provider.Order([&](Behaviour& behaviour) {
            behaviour.isAway = status == 0;
            behaviour.revocationStatus = status;
        });
        EXPECT_TRUE(session->Logout());
        EXPECT_FALSE(session->IsLoggedIn());
        EXPECT_EQ(world.LinesWith("The refresh token was forgotten, but not revoked: "), 1);
    }
}

TEST(SessionLogout, DoesNotWaitForARefreshOnItsWay)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.Pass(seconds(3600));
    world.provider.Order([](Behaviour& behaviour) { behaviour.delay = seconds(8); });
    std::thread host([&] { EXPECT_TRUE(session->AccessToken(All).text->empty()); });
    while (world.provider.Count("token") < 2)
        std::this_thread::sleep_for(milliseconds(5));
    auto const start = SinceBoot();
    EXPECT_TRUE(session->Logout());
    EXPECT_LT(SinceBoot() - start, seconds(4));
    host.join();
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_FALSE(std::filesystem::exists(session->StoreFile(0)));
    EXPECT_EQ(world.LinesWith("Error"), 0) << world.LogText();
}

TEST(SessionLogout, LeavesOtherServersSignedIn)
{
    SessionWorld world;
    world.configuration.servers["second"] = world.configuration.servers["production"];
    world.configuration.servers["second"].issuer = "https://login.example/second";
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    ASSERT_TRUE(session->SelectServer(1));
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_FALSE(session->Logout());
    ASSERT_TRUE(session->SelectServer(0));
    EXPECT_TRUE(session->IsLoggedIn());
}

TEST(SessionLogout, AlsoForgetsAndRevokesWhatWasSetAside)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::string const first = world.provider.Last("refresh_token");
    // As one that others could open, and another one that nobody can read.
    fs::rename(session->StoreFile(0), SetAside(*session, 1));
    Rig::WriteTo(SetAside(*session, 2), "damaged");
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::string const second = world.provider.Last("refresh_token");
    ASSERT_TRUE(world.provider.IsGood(first));
    EXPECT_TRUE(session->Logout());
    EXPECT_FALSE(world.provider.IsGood(first));
    EXPECT_FALSE(world.provider.IsGood(second));
    for (int const number : {1, 2})
        EXPECT_FALSE(fs::exists(SetAside(*session, number)));
    EXPECT_EQ(world.LinesWith("Error "), 0) << world.LogText();
}

TEST(SessionLogout, ForgetsWhatWasSetAsideAlsoIfNobodyIsSignedIn)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(session->StoreFile(0), "damaged", reason));
    EXPECT_FALSE(session->Logout());
    EXPECT_EQ(world.LinesWith("Error The stored login cannot be used: "), 1);
    EXPECT_FALSE(fs::exists(SetAside(*session, 1)));
    EXPECT_EQ(world.LinesWith("Cannot sign out"), 0) << world.LogText();
}

TEST(SessionLogout, ForgetsWhatAKilledProcessLeftAlsoIfNobodyIsSignedIn)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    ASSERT_TRUE(session->Logout());
    session->Events().Clear();
    for (char const* const ending : {".new", ".gone"})
        Rig::WriteTo(fs::path(session->StoreFile(0)) += ending, "tokens");
    EXPECT_FALSE(session->Logout());
    for (char const* const ending : {".new", ".gone"})
        EXPECT_FALSE(fs::exists(fs::path(session->StoreFile(0)) += ending)) << ending;
    EXPECT_FALSE(session->Events().HasEvent());
    EXPECT_EQ(world.LinesWith("Error "), 0) << world.LogText();
}

TEST(SessionLogout, RevokesThoughWhatAKilledProcessLeftCannotBeRemoved)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::string const token = world.provider.Last("refresh_token");
    auto const inTheWay = fs::path(session->StoreFile(0)) += ".new";
    fs::create_directories(inTheWay / "something");
    EXPECT_TRUE(session->Logout()) << world.LogText();
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_FALSE(world.provider.IsGood(token));
    EXPECT_EQ(world.LinesWith("Cannot sign out"), 0) << world.LogText();
    EXPECT_EQ(world.LinesWith("Error A part of the login stays in the store: "), 1);
    EXPECT_THAT(world.LogText(), HasSubstr(".gone or .new beside it cannot be removed. Fix: "));
}

TEST(SessionLogout, RevokesTheAccessTokensOfALoginWithoutARefreshToken)
{
    SessionWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.givesRefreshToken = false; });
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    EXPECT_TRUE(session->Logout());
    EXPECT_EQ(world.provider.Count("revocation"), 1);
    // One that has expired is of no use to anybody.
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.Pass(seconds(3600));
    EXPECT_TRUE(session->Logout());
    EXPECT_EQ(world.provider.Count("revocation"), 1);
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.provider.Order([](Behaviour& behaviour) { behaviour.revocationStatus = 503; });
    EXPECT_TRUE(session->Logout());
    EXPECT_EQ(world.LinesWith("Error An access token was forgotten, but not revoked: "), 1);
}

TEST(SessionLogout, TellsWhatWasSetAsideAndCannotBeRemoved)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    Rig::WriteTo(SetAside(*session, 1), "damaged");
    // In the way of its removal.
    fs::create_directories((SetAside(*session, 1) += ".gone") / "something");
    EXPECT_TRUE(session->Logout());
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_EQ(world.LinesWith("Error A login that was set aside stays in the store: "), 1);
    EXPECT_THAT(world.LogText(), HasSubstr(".damaged-1 cannot be removed. Fix: remove it"));
}

TEST(SessionLogout, ThatFailsLeavesTheLogin)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    auto const inTheWay = fs::path(session->StoreFile(0)) += ".gone";
    fs::create_directories(inTheWay / "something");
    EXPECT_FALSE(session->Logout());
    EXPECT_EQ(world.LinesWith("Error Cannot sign out: "), 1);
    EXPECT_TRUE(session->IsLoggedIn());
    EXPECT_FALSE(session->AccessToken(All).text->empty());
    EXPECT_EQ(world.provider.Count("revocation"), 0);
    fs::remove_all(inTheWay);
    EXPECT_TRUE(session->Logout());
}
