#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "openid/TestFolder.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;
using Rig::TestFolder;
using std::chrono::milliseconds;
using testing::HasSubstr;

namespace {

std::string const Issuer = "https://login.example";
std::string const ClientId = "desktop";

std::filesystem::path StoreIn(TestFolder const& folder) { return folder / "store"; }

} // namespace

TEST(TokenStoreLock, KeepsThreadsApart)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    int inside = 0; // the lock's to guard
    std::atomic<int> most{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (int turn = 0; turn < 50; ++turn) {
                auto const lock = store.Acquire(Issuer, ClientId, std::chrono::minutes(1));
                ASSERT_TRUE(lock);
                most = std::max(most.load(), ++inside);
                std::this_thread::yield();
                --inside;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(most, 1);
}

TEST(TokenStoreLock, DoesNotComeWhileAnotherHasIt)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    auto const lock = store.Acquire(Issuer, ClientId, milliseconds(0));
    ASSERT_TRUE(lock);
    std::thread([&] {
        auto const second = store.Acquire(Issuer, ClientId, milliseconds(50));
        ASSERT_FALSE(second);
        EXPECT_THAT(second.Why().reason, HasSubstr("it is locked, and was not released in time"));
        EXPECT_TRUE(store.Acquire(Issuer, "other", milliseconds(0)));
    }).join();
}

TEST(TokenStoreLock, OfAHostIsCountedAndDoesNotStopItsOwnProcess)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    TokenStore another(StoreIn(folder)); // as another process
    ASSERT_TRUE(store.HoldForHost(Issuer, ClientId, milliseconds(0)));
    ASSERT_TRUE(store.HoldForHost(Issuer, ClientId, milliseconds(0)));
    EXPECT_TRUE(store.Acquire(Issuer, ClientId, milliseconds(0)));
    EXPECT_FALSE(another.Acquire(Issuer, ClientId, milliseconds(0)));
    store.ReleaseForHost(Issuer, ClientId);
    EXPECT_FALSE(another.Acquire(Issuer, ClientId, milliseconds(0)));
    // From another thread, and while a turn of this process goes on.
    {
        auto const turn = store.Acquire(Issuer, ClientId, milliseconds(0));
        ASSERT_TRUE(turn);
        std::thread([&] { store.ReleaseForHost(Issuer, ClientId); }).join();
        EXPECT_FALSE(another.Acquire(Issuer, ClientId, milliseconds(0)));
    }
    EXPECT_TRUE(another.Acquire(Issuer, ClientId, milliseconds(0)));
    store.ReleaseForHost(Issuer, ClientId); // held no longer: nothing
    EXPECT_TRUE(another.Acquire(Issuer, ClientId, milliseconds(0)));
}

TEST(TokenStoreLock, OfAHostIsHadWhileTheProcessHasATurn)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    auto const turn = store.Acquire(Issuer, ClientId, milliseconds(0));
    ASSERT_TRUE(turn);
    EXPECT_TRUE(store.HoldForHost(Issuer, ClientId, milliseconds(0)));
    store.ReleaseForHost(Issuer, ClientId);
}
