// What becomes of a session whose store is damaged, in use, or not to be written.

#include <filesystem>
#include <memory>
#include <string>
#include <thread>

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

namespace fs = std::filesystem;

namespace {

using Behaviour = TestProvider::Behaviour;

/// Makes the store's file one that cannot be replaced: a folder lies where the new one is written.
class InTheWay {
public:
    explicit InTheWay(fs::path const& file) : folder(fs::path(file) += ".new")
    {
        fs::create_directories(folder / "something");
    }
    ~InTheWay() { Remove(); }
    void Remove() { fs::remove_all(folder); }

private:
    fs::path const folder;
};

} // namespace

TEST(SessionStore, CountsAsSignedOutWhenItIsDamagedAndIsKept)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    auto const file = session->StoreFile(0);
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(file, "damaged", reason));
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_EQ(world.LinesWith("Error The stored login cannot be used: "), 1) << world.LogText();
    EXPECT_THAT(world.LogText(),
                HasSubstr("set aside as " + PathText(file.filename()) + ".damaged-1: "));
    EXPECT_EQ(Rig::ContentOf(fs::path(file) += ".damaged-1"), "damaged");
    EXPECT_TRUE(session->LoginInBrowser("")) << world.LogText();
    EXPECT_TRUE(world.NewSession()->IsLoggedIn());
}

TEST(SessionStore, ThatCannotBeWrittenLeavesTheLoginToThisProcess)
{
    SessionWorld world;
    auto const session = world.NewSession();
    InTheWay way(session->StoreFile(0));
    ASSERT_TRUE(session->LoginInBrowser("")) << world.LogText();
    EXPECT_EQ(world.LinesWith("Error The login is known to this process alone, until it ends: "),
              1);
    EXPECT_TRUE(session->IsLoggedIn());
    EXPECT_FALSE(session->AccessToken(All).text->empty());
    EXPECT_FALSE(world.NewSession()->IsLoggedIn());
    // The rotated refresh token is not lost either, and is written as soon as that is possible.
    world.Pass(seconds(3600));
    EXPECT_FALSE(session->AccessToken(All).text->empty());
    way.Remove();
    world.Pass(seconds(3600));
    EXPECT_FALSE(session->AccessToken(All).text->empty());
    EXPECT_EQ(world.provider.Reuses(), 0);
    auto const another = world.NewSession();
    EXPECT_TRUE(another->IsLoggedIn());
    EXPECT_EQ(*another->AccessToken(All).text, world.provider.Last("access_token"));
}

TEST(SessionStore, ThatCannotBeWrittenKeepsALoginThatGoesOn)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::string const old = world.provider.Last("refresh_token");
    InTheWay const way(session->StoreFile(0));
    world.provider.Order([](Behaviour& behaviour) { behaviour.subject = "bob-2"; });
    ASSERT_TRUE(session->LoginInBrowser("")) << world.LogText();
    EXPECT_TRUE(world.provider.IsGood(old));
    EXPECT_EQ(world.provider.Count("revocation"), 0);
    EXPECT_EQ(world.NewSession()->Claims()["sub"], "alice-1");
    EXPECT_EQ(session->Claims()["sub"], "bob-2");
}

TEST(SessionStore, ThatOthersWriteDoesNotBringBackAnOlderUser)
{
    enum class Change { Renewed, SignedOut, SignedIn };
    for (Change const change : {Change::Renewed, Change::SignedOut, Change::SignedIn}) {
        SCOPED_TRACE(static_cast<int>(change));
        SessionWorld world;
        auto const session = world.NewSession();
        auto const another = world.NewSession();
        ASSERT_TRUE(session->LoginInBrowser(""));
        world.Pass(seconds(10));
        {
            InTheWay const way(session->StoreFile(0));
            world.provider.Order([](Behaviour& behaviour) { behaviour.subject = "bob-2"; });
            ASSERT_TRUE(session->LoginInBrowser("")) << world.LogText();
        }
        std::string const token = *session->AccessToken(All).text;
        world.provider.Order([](Behaviour& behaviour) { behaviour.subject = "carol-3"; });
        world.Pass(seconds(10));
        ASSERT_EQ(another->Claims()["sub"], "alice-1");
        switch (change) {
        case Change::Renewed:
            world.provider.Order([](Behaviour& behaviour) { behaviour.subject = "alice-1"; });
            ASSERT_TRUE(another->RefreshToken(All)) << world.LogText();
            break;
        case Change::SignedOut:
            ASSERT_TRUE(another->Logout());
            break;
        case Change::SignedIn:
            ASSERT_TRUE(another->LoginInBrowser(""));
            break;
        }
        if (change == Change::SignedIn) {
            EXPECT_EQ(session->Claims()["sub"], "carol-3");
            continue;
        }
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(session->Claims()["sub"], "bob-2");
            EXPECT_EQ(*session->AccessToken(All).text, token);
        }
    }
}

TEST(SessionStore, ThatCannotBeWrittenIsFoundOutBeforeTheRefreshTokenIsUsed)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::string const first = world.provider.Last("access_token");
    InTheWay way(session->StoreFile(0));
    EXPECT_FALSE(session->RefreshToken(All));
    EXPECT_EQ(*session->AccessToken(All).text, first); // which is still good
    EXPECT_EQ(world.LinesWith("Error Cannot get a new token: "), 1);
    EXPECT_THAT(world.LogText(), HasSubstr(" cannot be written: "));
    EXPECT_THAT(world.LogText(),
                HasSubstr("Fix: make room on the disk, and let this user write there"));
    world.Pass(seconds(3600));
    EXPECT_EQ(*session->AccessToken(All).text, "");
    EXPECT_TRUE(session->IsLoggedIn());
    EXPECT_EQ(world.provider.Count("refresh"), 0);
    way.Remove();
    world.Pass(seconds(6));
    std::string const token = *session->AccessToken(All).text;
    EXPECT_EQ(token, world.provider.Last("access_token"));
    EXPECT_EQ(world.provider.Count("refresh"), 1);
    EXPECT_EQ(world.provider.Reuses(), 0);
}

TEST(SessionStore, ThatCannotBeWrittenDoesNotLoseARotatedToken)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::unique_ptr<InTheWay> way;
    // It turns out while the provider answers.
    world.provider.Order([&](TestProvider::Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const& endpoint) {
            if (endpoint == "token" && !way)
                way = std::make_unique<InTheWay>(session->StoreFile(0));
        };
    });
    for (int i = 0; i < 3; ++i) {
        world.Pass(seconds(3600));
        std::string const token = *session->AccessToken(All).text;
        EXPECT_EQ(token, world.provider.Last("access_token"));
    }
    EXPECT_EQ(world.provider.Reuses(), 0);
    EXPECT_EQ(world.LinesWith("Error The login is known to this process alone, until it ends: "),
              1);
    way->Remove();
    EXPECT_TRUE(session->Logout());
    EXPECT_FALSE(session->IsLoggedIn());
}

TEST(SessionStore, FromWhichARefusedLoginCannotBeRemovedSparesTheProvider)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    auto const inTheWay = fs::path(session->StoreFile(0)) += ".gone";
    fs::create_directories(inTheWay / "something");
    world.provider.RevokeAll();
    for (int times = 1; times <= 2; ++times) {
        world.Pass(seconds(3600));
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(*session->AccessToken(All).text, "");
        EXPECT_EQ(world.provider.Count("refresh"), times);
        EXPECT_EQ(world.LinesWith("Error The refused login stays in the store: "), times);
    }
    EXPECT_EQ(world.LinesWith("Error Signed out: "), 0);
    fs::remove_all(inTheWay);
    world.Pass(seconds(6));
    EXPECT_EQ(*session->AccessToken(All).text, "");
    EXPECT_EQ(world.LinesWith("Error Signed out: "), 1);
    EXPECT_FALSE(session->IsLoggedIn());
}

TEST(SessionStore, OfAFolderThatCannotBeMadeLetsNobodySignIn)
{
    SessionWorld world;
    Rig::WriteTo(world.folder / "file", "in the way");
    world.configuration.store = world.folder / "file" / "store";
    auto const session = world.NewSession();
    EXPECT_FALSE(session->LoginInBrowser(""));
    EXPECT_THAT(world.LogText(), HasSubstr("Error Cannot sign in: the store's folder "));
    EXPECT_TRUE(world.browser.Opened().empty());
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_FALSE(session->RestoreLogin());
}

TEST(SessionStore, HeldByThisHostDoesNotStopIt)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    session->LockStore();
    session->LockStore();
    EXPECT_TRUE(session->RefreshToken(All));
    EXPECT_TRUE(session->IsLoggedIn());
    TokenStore another(session->StoreFolder());
    EXPECT_FALSE(another.Acquire(world.provider.Issuer(), "client-1", milliseconds(0)));
    session->UnlockStore();
    EXPECT_FALSE(another.Acquire(world.provider.Issuer(), "client-1", milliseconds(0)));
    session->UnlockStore();
    EXPECT_TRUE(another.Acquire(world.provider.Issuer(), "client-1", milliseconds(0)));
    session->UnlockStore();
}

TEST(SessionStore, IsUnlockedAlsoAfterAnotherServerWasChosen)
{
    SessionWorld world;
    world.configuration.servers["second"] = world.configuration.servers["production"];
    world.configuration.servers["second"].clientId = "client-2";
    auto const session = world.NewSession();
    session->LockStore();
    session->SelectServer(1);
    session->UnlockStore();
    TokenStore another(session->StoreFolder());
    EXPECT_TRUE(another.Acquire(world.provider.Issuer(), "client-1", milliseconds(0)));
}

TEST(SessionStore, HeldByAnotherProcessDelaysARefreshAndNothingElse)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.Pass(seconds(3600));
    TokenStore another(session->StoreFolder());
    auto lock = another.Acquire(world.provider.Issuer(), "client-1", milliseconds(0));
    ASSERT_TRUE(lock);
    std::string token;
    std::thread host([&] { token = *session->AccessToken(All).text; });
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_EQ(world.provider.Count("refresh"), 0);
    EXPECT_TRUE(session->IsLoggedIn());
    lock = Failure();
    host.join();
    EXPECT_EQ(token, world.provider.Last("access_token"));
    EXPECT_EQ(world.provider.Count("refresh"), 1);
}
