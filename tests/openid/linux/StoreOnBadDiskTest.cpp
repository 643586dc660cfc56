// A store that others may read, and disks that take nothing more.

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "openid/Child.h"
#include "openid/SessionWorld.h"

using namespace Halvorix::OpenId;
using Rig::All;
using Rig::SessionWorld;
using std::chrono::seconds;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

bool GetsANewToken(Session& session, SessionWorld& world)
{
    std::string const before = world.provider.Last("access_token");
    std::string const token = *session.AccessToken(All).text;
    return token != before && token == world.provider.Last("access_token");
}

/// The answer of a step; the exit status of a child that failed at it.
#define EXPECT_STEP(condition, status)                                                             \
    if (!(condition))                                                                              \
    return status

} // namespace

TEST(StoreOnBadDisk, ThatOthersMayReadIsSetAside)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    fs::path const file = session->StoreFile(0);
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    ASSERT_EQ(::stat(file.parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    ASSERT_EQ(::chmod(file.c_str(), 0644), 0);
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_THAT(world.LogText(), HasSubstr("Error The stored login cannot be used: "));
    EXPECT_TRUE(fs::exists(fs::path(file) += ".damaged-1"));
    EXPECT_FALSE(fs::exists(file));
}

/// Limits the size of files, as a full disk does.
CHILD_PROGRAM(SignsInOnAFullDisk)
{
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit full{0, RLIM_INFINITY}, all{RLIM_INFINITY, RLIM_INFINITY};
    auto const limit = [](rlimit const& size) { return ::setrlimit(RLIMIT_FSIZE, &size) == 0; };
    EXPECT_STEP(limit(all), 77);
    SessionWorld world;
    auto const session = world.NewSession();
    EXPECT_STEP(limit(full), 77);
    EXPECT_STEP(session->LoginInBrowser(""), 1);
    EXPECT_STEP(session->IsLoggedIn(), 2);
    EXPECT_STEP(!session->AccessToken(All).text->empty(), 3);
    EXPECT_STEP(!world.NewSession()->IsLoggedIn(), 4);
    world.Pass(seconds(3600));
    EXPECT_STEP(GetsANewToken(*session, world), 5);
    // There is room again.
    EXPECT_STEP(limit(all), 6);
    world.Pass(seconds(3600));
    EXPECT_STEP(GetsANewToken(*session, world), 7);
    EXPECT_STEP(world.NewSession()->IsLoggedIn(), 8);
    // And none: what lies there stays whole, and its refresh token is not used up.
    EXPECT_STEP(limit(full), 9);
    world.Pass(seconds(3600));
    EXPECT_STEP(session->AccessToken(All).text->empty(), 10);
    EXPECT_STEP(world.NewSession()->IsLoggedIn(), 11);
    EXPECT_STEP(limit(all), 14);
    world.Pass(seconds(6));
    EXPECT_STEP(GetsANewToken(*session, world), 15);
    EXPECT_STEP(world.provider.Reuses() == 0, 12);
    EXPECT_STEP(world.LinesWith("known to this process alone") == 0, 13); // no room for it either
    return 0;
}

TEST(StoreOnBadDisk, ThatIsFullLosesNoLogin)
{
    Rig::Child child("SignsInOnAFullDisk", {});
    int const status = child.Wait();
    if (status == 77)
        GTEST_SKIP() << "the size of files cannot be limited";
    EXPECT_EQ(status, 0);
}

TEST(StoreOnBadDisk, ThatIsReadOnlyIsToldAndSignsNobodyOut)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.Pass(seconds(3600));
    ASSERT_EQ(::chmod(session->StoreFolder().c_str(), 0500), 0);
    EXPECT_TRUE(session->AccessToken(All).text->empty());
    EXPECT_TRUE(session->IsLoggedIn());
    EXPECT_EQ(world.provider.Count("refresh"), 0);
    ASSERT_EQ(::chmod(session->StoreFolder().c_str(), 0700), 0);
    world.Pass(seconds(3600));
    EXPECT_FALSE(session->AccessToken(All).text->empty());
}
