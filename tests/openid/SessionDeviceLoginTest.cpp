// Signing in on another device.

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"

using namespace Halvorix::OpenId;
using Rig::SessionWorld;
using Rig::TestProvider;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

using Behaviour = TestProvider::Behaviour;

/// A world whose provider has the device grant, and in which waiting takes no time.
struct DeviceWorld : SessionWorld {
    DeviceWorld()
    {
        sleepsInNoTime = true;
        provider.Order([](Behaviour& behaviour) { behaviour.hasDevices = true; });
    }

    /// At each poll of `session`, the seconds that have gone by since now.
    std::vector<long> PollsOf(Session& session, std::deque<std::string> answers, bool& isDone)
    {
        auto const login = session.BeginDeviceLogin();
        EXPECT_TRUE(login) << LogText();
        std::vector<long> polls;
        milliseconds const begin = Passed();
        provider.Order([&](Behaviour& behaviour) {
            behaviour.devicePolls = std::move(answers);
            behaviour.onRequest = [&](std::string const& endpoint) {
                if (endpoint == "token")
                    polls.push_back(
                        static_cast<long>(std::chrono::round<seconds>(Passed() - begin).count()));
            };
        });
        isDone = session.FinishLogin(*login);
        provider.Order([](Behaviour& behaviour) { behaviour.onRequest = nullptr; });
        return polls;
    }
};

void ExpectNobodySignedIn(DeviceWorld& world, Session& session, std::string const& line)
{
    EXPECT_FALSE(session.IsLoggedIn());
    EXPECT_FALSE(session.IsLoginInProgress());
    EXPECT_FALSE(session.Events().HasEvent());
    EXPECT_THAT(world.LogText(), HasSubstr(line));
}

} // namespace

TEST(SessionDeviceLogin, SignsInByAnAddressAndACode)
{
    DeviceWorld world;
    auto const session = world.NewSession();
    auto const login = session->BeginDeviceLogin();
    ASSERT_TRUE(login) << world.LogText();
    EXPECT_EQ(*login->url, "https://login.example/verify");
    EXPECT_EQ(login->userCode, "WDJB-MJHT");
    EXPECT_EQ(login->urlWithCode, "https://login.example/verify?user_code=WDJB-MJHT");
    EXPECT_TRUE(session->IsLoginInProgress());
    ASSERT_TRUE(session->FinishLogin(*login)) << world.LogText();

    EXPECT_FALSE(session->IsLoginInProgress());
    EXPECT_EQ(session->Claims()["sub"], "alice-1");
    EXPECT_EQ(session->Claims()["email"], "alice@login.example");
    EXPECT_EQ(*session->AccessToken({1, ""}).text, world.provider.Last("access_token"));
    EXPECT_EQ(session->State()["scopes"], "offline_access openid profile");
    EXPECT_EQ(session->State()["refreshable"], true);
    EXPECT_TRUE(session->Events().Dispatch());
    EXPECT_TRUE(session->Events().Dispatch());
    EXPECT_FALSE(session->Events().Dispatch());
    EXPECT_THAT(world.browser.Opened(), IsEmpty());
    EXPECT_THAT(world.LogText(), HasSubstr("Info Signed in at https://login.example"));
    // The host shows the code; it is nobody else's.
    EXPECT_EQ(world.LinesWith("WDJB"), 0);
    EXPECT_EQ(world.LinesWith(world.provider.Last("device_code")), 0);

    auto const another = world.NewSession();
    EXPECT_TRUE(another->RestoreLogin());
    EXPECT_TRUE(another->RefreshToken({1, ""})) << world.LogText();
    EXPECT_FALSE(session->FinishLogin(*login));
    EXPECT_THAT(world.LogText(),
                HasSubstr("Cannot sign in: no sign-in was begun, or it was ended"));
}

TEST(SessionDeviceLogin, AsksAsSeldomAsTheProviderWants)
{
    DeviceWorld world;
    world.configuration.loginTimeout = seconds(300);
    auto const session = world.NewSession();
    bool isDone = false;
    EXPECT_THAT(world.PollsOf(*session,
                              {"authorization_pending", "slow_down", "authorization_pending",
                               "timeout", "timeout", "authorization_pending"},
                              isDone),
                ElementsAre(5, 10, 20, 30, 50, 90, 100));
    EXPECT_TRUE(isDone) << world.LogText();
    EXPECT_EQ(world.LinesWith("Error "), 0) << world.LogText();
    EXPECT_EQ(world.sharing, 0); // of connections that each poll would leave behind
}

TEST(SessionDeviceLogin, EndsWithItsTime)
{
    DeviceWorld world;
    world.configuration.loginTimeout = seconds(12);
    auto const session = world.NewSession();
    std::deque<std::string> const forever(100, "authorization_pending");
    bool isDone = true;
    EXPECT_THAT(world.PollsOf(*session, forever, isDone), ElementsAre(5, 10));
    EXPECT_FALSE(isDone);
    ExpectNobodySignedIn(world, *session,
                         "Cannot sign in: nobody signed in on the other device in time. Fix: ");
}

TEST(SessionDeviceLogin, EndsWithItsCode)
{
    DeviceWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.deviceLifetime = 7; });
    auto const session = world.NewSession();
    std::deque<std::string> const forever(100, "authorization_pending");
    bool isDone = true;
    EXPECT_THAT(world.PollsOf(*session, forever, isDone), ElementsAre(5));
    EXPECT_FALSE(isDone);
    ExpectNobodySignedIn(world, *session, "Cannot sign in: nobody signed in on the other device");

    world.provider.Order([](Behaviour& behaviour) { behaviour.deviceLifetime = 600; });
    EXPECT_THAT(world.PollsOf(*session, {"expired_token"}, isDone), ElementsAre(5));
    EXPECT_FALSE(isDone);
    ExpectNobodySignedIn(
        world, *session,
        "Cannot sign in: the code ended before anybody signed in with it. Fix: sign in again");
}

TEST(SessionDeviceLogin, AsksOnceMoreAtTheEndOfItsTime)
{
    DeviceWorld world;
    auto const session = world.NewSession();
    bool isDone = false;
    // The network is back, and so is the user.
    EXPECT_THAT(world.PollsOf(*session, {"timeout", "timeout"}, isDone), ElementsAre(5, 15, 20));
    EXPECT_TRUE(isDone) << world.LogText();
    EXPECT_TRUE(session->IsLoggedIn());

    // But not sooner than the provider permits.
    auto const another = world.NewSession();
    ASSERT_TRUE(another->Logout());
    std::deque<std::string> const slow(100, "slow_down");
    EXPECT_THAT(world.PollsOf(*another, slow, isDone), ElementsAre(5, 15));
    EXPECT_FALSE(isDone);
}

TEST(SessionDeviceLogin, TellsWhyTheNetworkLetItDown)
{
    DeviceWorld world;
    auto const session = world.NewSession();
    std::deque<std::string> const forever(100, "timeout");
    bool isDone = true;
    EXPECT_THAT(world.PollsOf(*session, forever, isDone), ElementsAre(5, 15, 20));
    EXPECT_FALSE(isDone);
    ExpectNobodySignedIn(world, *session,
                         "Cannot sign in: the token endpoint https://login.example/token did not "
                         "answer in time");
}

TEST(SessionDeviceLogin, EndsWithTheUsersNo)
{
    DeviceWorld world;
    auto const session = world.NewSession();
    bool isDone = true;
    EXPECT_THAT(world.PollsOf(*session, {"authorization_pending", "access_denied"}, isDone),
                ElementsAre(5, 10));
    EXPECT_FALSE(isDone);
    ExpectNobodySignedIn(world, *session,
                         "answered with status 400, access_denied. Fix: sign in again, and agree");
}

TEST(SessionDeviceLogin, EndsAtOnceWhenTheHostSignsOut)
{
    DeviceWorld world;
    world.sleepsInNoTime = false;
    auto const session = world.NewSession();
    auto const login = session->BeginDeviceLogin();
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
    EXPECT_EQ(world.provider.Count("poll"), 0);
    ExpectNobodySignedIn(world, *session, "Cannot sign in: the host ended it");
}

TEST(SessionDeviceLogin, EndsInTheMiddleOfAPollWhenItsHolderCancels)
{
    DeviceWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.delay = seconds(8); });
    auto const session = world.NewSession();
    auto const login = session->BeginDeviceLogin();
    ASSERT_TRUE(login);
    std::thread host([&] {
        while (world.provider.Count("token") == 0)
            std::this_thread::sleep_for(milliseconds(10));
        session->CancelLogin(*login);
    });
    auto const start = SinceBoot();
    EXPECT_FALSE(session->FinishLogin(*login));
    host.join();
    EXPECT_LT(SinceBoot() - start, milliseconds(5000));
    ExpectNobodySignedIn(world, *session, "Cannot sign in: ");
}

TEST(SessionDeviceLogin, IsOneAtATimeWithThoseInABrowser)
{
    DeviceWorld world;
    auto const session = world.NewSession();
    auto const login = session->BeginDeviceLogin();
    ASSERT_TRUE(login);
    EXPECT_FALSE(session->BeginDeviceLogin());
    EXPECT_FALSE(session->LoginInBrowser(""));
    EXPECT_EQ(world.LinesWith("Cannot sign in: another sign-in is in progress. Fix: "), 2);
    session->CancelLogin(*login);
    EXPECT_FALSE(session->FinishLogin(*login));
    auto const inBrowser = session->BeginLogin("");
    ASSERT_TRUE(inBrowser);
    EXPECT_FALSE(session->BeginDeviceLogin());
    session->CancelLogin(*inBrowser);
    // One that nobody finishes gives way when its code has ended.
    ASSERT_TRUE(session->BeginDeviceLogin());
    world.Pass(seconds(21));
    EXPECT_FALSE(session->IsLoginInProgress());
    EXPECT_TRUE(session->LoginInBrowser("")) << world.LogText();
}

TEST(SessionDeviceLogin, NeedsAProviderThatOffersIt)
{
    DeviceWorld world;
    world.provider.Order([](Behaviour& behaviour) { behaviour.hasDevices = false; });
    auto const session = world.NewSession();
    EXPECT_FALSE(session->BeginDeviceLogin());
    ExpectNobodySignedIn(world, *session,
                         "Cannot sign in: the provider https://login.example offers no sign-in on "
                         "another device (device_authorization_endpoint). Fix: ");
    EXPECT_EQ(world.provider.Count("device"), 0);
}

TEST(SessionDeviceLogin, VerifiesWhoSignedIn)
{
    struct Row {
        std::function<void(Behaviour&)> fault;
        char const* line;
    };
    for (Row const& row :
         {Row{[](Behaviour& behaviour) { behaviour.givesIdToken = false; }, "but no id_token"},
          Row{[](Behaviour& behaviour) { behaviour.clientOfIdToken = "another"; },
              "is not for the client"},
          Row{[](Behaviour& behaviour) { behaviour.subjectOfUserinfo = "mallory"; },
              "answered about another user (sub)"}}) {
        DeviceWorld world;
        world.provider.Order(row.fault);
        auto const session = world.NewSession();
        auto const login = session->BeginDeviceLogin();
        ASSERT_TRUE(login);
        EXPECT_FALSE(session->FinishLogin(*login));
        ExpectNobodySignedIn(world, *session, row.line);
    }
}

TEST(SessionDeviceLogin, TakesThePlaceOfABrowserWhereTheConfigurationPermitsIt)
{
    for (bool const hasScreen : {false, true}) {
        DeviceWorld world;
        world.configuration.servers["production"].deviceLogin = true;
        world.hasScreen = hasScreen;
        world.hasBrowser = false;
        auto const session = world.NewSession();
        ASSERT_TRUE(session->LoginInBrowser("")) << world.LogText();
        EXPECT_EQ(world.LinesWith("Info Sign in on another device: open "
                                  "https://login.example/verify there, and enter WDJB-MJHT"),
                  1)
            << world.LogText();
        EXPECT_EQ(world.LinesWith("Error "), 0) << world.LogText();
        EXPECT_TRUE(session->IsLoggedIn());
        EXPECT_FALSE(session->IsLoginInProgress());
    }
}

TEST(SessionDeviceLogin, DoesNotTakeThePlaceOfABrowserUnasked)
{
    DeviceWorld world;
    world.hasScreen = false;
    auto const session = world.NewSession();
    EXPECT_TRUE(session->LoginInBrowser("")) << world.LogText(); // one that the system found
    EXPECT_TRUE(session->Logout());
    world.hasBrowser = false;
    EXPECT_FALSE(session->LoginInBrowser(""));
    EXPECT_THAT(world.LogText(), HasSubstr("Cannot sign in: no browser was started"));
    EXPECT_EQ(world.provider.Count("device"), 0);

    // Nor where there is a browser.
    world.configuration.servers["production"].deviceLogin = true;
    world.hasScreen = world.hasBrowser = true;
    EXPECT_TRUE(world.NewSession()->LoginInBrowser("")) << world.LogText();
    EXPECT_EQ(world.provider.Count("device"), 0);
    EXPECT_THAT(world.LogText(), Not(HasSubstr("another device")));
}

TEST(SessionDeviceLogin, DoesNotFollowOneInABrowserThatTheHostEnded)
{
    DeviceWorld world;
    world.configuration.servers["production"].deviceLogin = true;
    world.hasBrowser = false;
    auto const session = world.NewSession();
    world.beforeBrowser = [&] { session->Logout(); };
    EXPECT_FALSE(session->LoginInBrowser(""));
    EXPECT_EQ(world.provider.Count("device"), 0);
    EXPECT_FALSE(session->IsLoginInProgress());
}
