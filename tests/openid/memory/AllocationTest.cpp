// What a want of memory leaves: no lock that nobody gives back, and no login that is lost.

#include <chrono>
#include <new>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "faults/allocation/Allocator.h"
#include "openid/TestFolder.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;
using std::chrono::milliseconds;

namespace {

std::string const Issuer = "https://login.example";
std::string const ClientId = "desktop";

/// Does it with the first allocation failing, with the second, and so on, until all have failed.
template <class Action, class Check>
void FailEachAllocation(Action action, Check check)
{
    bool hasFailed = false, goesOn = true;
    for (int n = 1; goesOn; ++n) {
        ASSERT_LT(n, 5000);
        {
            Faults::Failure const failure(n, Faults::FailureMode::Once);
            try {
                action();
            } catch (std::bad_alloc const&) {
                hasFailed = true;
            }
            goesOn = Faults::Failure::HasHappened();
        }
        check(n);
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_TRUE(hasFailed);
}

} // namespace

TEST(SessionAllocation, LeavesNoLockThatNobodyGivesBack)
{
    Rig::TestFolder const folder;
    auto const store = folder / "store";
    for (bool const isForHost : {false, true}) {
        TokenStore tokens(store);
        bool isHeld = false;
        FailEachAllocation(
            [&] {
                if (isForHost)
                    isHeld =
                        static_cast<bool>(tokens.HoldForHost(Issuer, ClientId, milliseconds(0)));
                else
                    tokens.Acquire(Issuer, ClientId, milliseconds(0));
            },
            [&](int n) {
                if (std::exchange(isHeld, false))
                    tokens.ReleaseForHost(Issuer, ClientId);
                EXPECT_TRUE(tokens.Acquire(Issuer, ClientId, milliseconds(0))) << n;
                TokenStore another(store); // as another process
                EXPECT_TRUE(another.Acquire(Issuer, ClientId, milliseconds(0))) << n;
            });
    }
}

TEST(SessionAllocation, LeavesTheLoginWhereItIs)
{
    Rig::TestFolder const folder;
    TokenStore store(folder / "store");
    StoredLogin login;
    login.issuer = Issuer;
    login.clientId = ClientId;
    login.subject = "alice-1";
    login.refreshToken = std::string("refresh-token-of-some-length");
    login.claims["name"] = "Alice, with a name of some length";
    ASSERT_TRUE(store.Write(login));
    FailEachAllocation([&] { TokenStore(folder / "store").Read(Issuer, ClientId); },
                       [&](int n) {
                           auto const read = TokenStore(folder / "store").Read(Issuer, ClientId);
                           ASSERT_TRUE(read && *read) << n << ' ' << read.Why().reason;
                           EXPECT_EQ((*read)->subject, "alice-1");
                       });
}
