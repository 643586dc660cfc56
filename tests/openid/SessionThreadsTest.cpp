// Several threads, and requests that take their time.

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"

using namespace Halvorix::OpenId;
using Rig::All;
using Rig::SessionWorld;
using Rig::TestProvider;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

using Behaviour = TestProvider::Behaviour;

void Together(int count, std::function<void()> const& action)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&] {
            ++ready;
            while (ready < count)
                std::this_thread::yield();
            action();
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST(SessionThreads, ThatWantTheSameTokenMakeOneRefresh)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    for (int round = 1; round <= 20; ++round) {
        world.Pass(seconds(3600));
        std::mutex mutex;
        std::set<std::string> tokens;
        Together(8, [&] {
            std::string const token = *session->AccessToken(All).text;
            std::lock_guard<std::mutex> const guard(mutex);
            tokens.insert(token);
        });
        EXPECT_EQ(tokens, std::set<std::string>{world.provider.Last("access_token")});
        EXPECT_EQ(world.provider.Count("refresh"), round);
    }
    EXPECT_EQ(world.provider.Reuses(), 0);
}

TEST(SessionThreads, ThatWantANewTokenAtOnceMakeOneRefresh)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    // All have asked before the first is answered.
    std::atomic<int> asking{0};
    world.provider.Order([&](Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const&) {
            while (asking < 8)
                std::this_thread::sleep_for(milliseconds(1));
            std::this_thread::sleep_for(milliseconds(200));
        };
    });
    Together(8, [&] {
        ++asking;
        EXPECT_TRUE(session->RefreshToken(All));
    });
    EXPECT_EQ(world.provider.Count("refresh"), 1);
}

TEST(SessionThreads, ThatFailTogetherAskOnce)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.Pass(seconds(3600));
    world.provider.Order([](Behaviour& behaviour) { behaviour.isAway = true; });
    Together(8, [&] { EXPECT_TRUE(session->AccessToken(All).text->empty()); });
    EXPECT_EQ(world.provider.Count("token"), 2);
    EXPECT_EQ(world.LinesWith("Error Cannot get a new token: "), 1) << world.LogText();
}

TEST(SessionThreads, AskWhileOneSignsOut)
{
    for (int round = 0; round < 10; ++round) {
        SessionWorld world;
        auto const session = world.NewSession();
        ASSERT_TRUE(session->LoginInBrowser(""));
        std::atomic<int> turn{0};
        std::atomic<bool> isOut{false};
        Together(9, [&] {
            int const mine = turn++;
            if (mine == 0) {
                std::this_thread::sleep_for(milliseconds(round * 5));
                EXPECT_TRUE(session->Logout());
                isOut = true;
                EXPECT_FALSE(session->IsLoggedIn());
                return;
            }
            for (int i = 0; !isOut || i < 10; ++i) {
                bool const wasOut = isOut;
                if (mine % 2 == 0)
                    world.Pass(seconds(1800));
                bool const hasToken = !session->AccessToken(All).text->empty();
                bool const isIn = session->IsLoggedIn();
                EXPECT_FALSE(wasOut && (hasToken || isIn));
                session->Claims();
                session->RestoreLogin();
                session->Events().Dispatch();
            }
        });
        EXPECT_FALSE(std::filesystem::exists(session->StoreFile(0)));
        EXPECT_EQ(world.provider.Reuses(), 0);
    }
}

TEST(SessionThreads, SignInOneAtATime)
{
    SessionWorld world;
    auto const session = world.NewSession();
    std::atomic<int> signedIn{0};
    std::atomic<int> done{0};
    // The browser is slow: all others have come meanwhile.
    world.provider.Order([&](Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const& endpoint) {
            while (endpoint == "discovery" && done < 7)
                std::this_thread::sleep_for(milliseconds(1));
        };
    });
    Together(8, [&] {
        signedIn += session->LoginInBrowser("") ? 1 : 0;
        ++done;
    });
    EXPECT_EQ(signedIn, 1) << world.LogText();
    EXPECT_EQ(world.LinesWith("another sign-in is in progress"), 7);
}

TEST(SessionThreads, AreAnsweredAtOnceWhileTheNetworkIsSlow)
{
    SessionWorld world;
    world.configuration.servers["production"].scopes = "data:read offline_access openid";
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    TokenSpec const data{1, "data:read"};
    world.Pass(seconds(3000));
    ASSERT_FALSE(session->AccessToken(data).text->empty());
    world.Pass(seconds(600));
    // As long as the calls last, however busy the machine is.
    std::atomic<bool> areOver{false};
    world.provider.Order([&](Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const& endpoint) {
            auto const end = SinceBoot() + seconds(10);
            while (endpoint == "token" && !areOver && SinceBoot() < end)
                std::this_thread::sleep_for(milliseconds(1));
        };
    });

    std::map<std::string, std::function<void()>> const calls{
        {"IsLoggedIn", [&] { EXPECT_TRUE(session->IsLoggedIn()); }},
        {"Claims", [&] { EXPECT_EQ(session->Claims()["sub"], "alice-1"); }},
        {"State", [&] { EXPECT_EQ(session->State()["loggedIn"], true); }},
        {"LoginExpiryDate", [&] { EXPECT_EQ(session->LoginExpiryDate(), 0); }},
        {"TokenAtHand", [&] { EXPECT_FALSE(session->TokenAtHand(All).usable); }},
        {"AccessToken of another spec", [&] { EXPECT_TRUE(session->AccessToken(data).usable); }},
        {"RestoreLogin", [&] { EXPECT_TRUE(session->RestoreLogin()); }},
        {"Url", [&] { EXPECT_NE(session->Url("token"), ""); }},
        {"EndSessionAddress", [&] { EXPECT_NE(session->EndSessionAddress(), ""); }},
        {"IsLoginInProgress", [&] { EXPECT_FALSE(session->IsLoginInProgress()); }},
        {"SelectServer", [&] { EXPECT_TRUE(session->SelectServer(0)); }},
        {"UseClient", [&] { session->UseClient("", ""); }},
        {"SetDefaultSpec", [&] { session->SetDefaultSpec(All); }},
        {"StoreFile", [&] { session->StoreFile(0); }},
        {"LockStore", [&] { session->LockStore(); }},
        {"UnlockStore", [&] { session->UnlockStore(); }},
        {"ForgetMemory", [&] { session->ForgetMemory(); }},
        {"proxies", [&] { session->SetProxyCredential({}); }},
        {"events", [&] { session->Events().Dispatch(); }},
        {"log", [&] { session->Log().Info("a line"); }},
        {"CancelAnyLogin", [&] { session->CancelAnyLogin(); }},
    };
    std::atomic<bool> isAnswered{false};
    std::thread host([&] {
        EXPECT_FALSE(session->AccessToken(All).text->empty());
        isAnswered = true;
    });
    while (world.provider.Count("token") < 3)
        std::this_thread::sleep_for(milliseconds(1));
    for (auto const& [name, call] : calls) {
        auto const start = SinceBoot();
        call();
        EXPECT_LT(SinceBoot() - start, seconds(5)) << name << " waited for the request";
    }
    EXPECT_FALSE(isAnswered) << "the request ended before the calls did";
    areOver = true;
    host.join();
}
