#include "openid/session/TokenClock.h"

#include <gtest/gtest.h>

using namespace Halvorix::OpenId;
using std::chrono::milliseconds;

namespace {

StoredToken TokenOf(std::string const& text, std::int64_t receivedAt)
{
    StoredToken token;
    token.type = "1";
    token.text = text;
    token.receivedAt = receivedAt;
    token.lifetime = 3;
    return token;
}

} // namespace

// The wall clock counts whole seconds: by it the older token would be good once more.
TEST(TokenClock, KnowsTheEndOfTheTokenBeforeTheNewestOne)
{
    std::int64_t wall = 1000;
    milliseconds boot{50'000};
    TokenClock clock([&] { return wall; }, [&] { return boot; });
    StoredToken const older = TokenOf("older", wall);
    clock.Received("login", older);
    EXPECT_TRUE(clock.IsGood("login", older));
    boot += milliseconds(1600);
    wall += 1;
    EXPECT_FALSE(clock.IsGood("login", older));

    StoredToken const newer = TokenOf("newer", wall);
    clock.Received("login", newer);
    EXPECT_FALSE(clock.IsGood("login", older)) << "a thread that had read the store before";
    EXPECT_TRUE(clock.IsGood("login", newer));
}
