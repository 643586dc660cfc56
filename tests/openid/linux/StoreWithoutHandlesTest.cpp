// A host that has no handles left: nobody is signed out for it.

#include <sys/resource.h>

#include <gmock/gmock.h>

#include <unistd.h>

#include "openid/Child.h"
#include "openid/SessionWorld.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;

namespace {

constexpr int CannotBeLimited = 77;

/// Lets the process open so many files more.
class Handles {
public:
    Handles() { ::getrlimit(RLIMIT_NOFILE, &before); }
    ~Handles() { ::setrlimit(RLIMIT_NOFILE, &before); }
    void Leave(int count)
    {
        int const next = ::dup(STDERR_FILENO);
        ::close(next);
        rlimit const limit{static_cast<rlim_t>(next + count), before.rlim_max};
        if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
            ::_exit(CannotBeLimited);
    }
    void LeaveAll() { ::setrlimit(RLIMIT_NOFILE, &before); }

private:
    rlimit before{};
};

/// Ends the child with the number of its line.
#define EXPECT_OR_LINE(condition)                                                                  \
    if (!(condition))                                                                              \
    return __LINE__ % 256

} // namespace

CHILD_PROGRAM(ReadsAStoreWithoutHandles)
{
    std::filesystem::path const folder = PathFromText(arguments.at(0));
    TokenStore fresh(folder);
    TokenStore informed(folder);
    auto const before = informed.Read("https://login.example", "desktop");
    if (!before || !*before)
        return 2;
    // Written anew, so that the copy of before is no longer the file's.
    if (!fresh.Write(**before))
        return 3;
    rlimit const none{0, 0};
    if (::setrlimit(RLIMIT_NOFILE, &none) != 0)
        return 77;
    auto const without = fresh.Read("https://login.example", "desktop");
    auto const with = informed.Read("https://login.example", "desktop");
    bool const isTold =
        !without && without.Why().reason.find("cannot be read for now: ") != std::string::npos;
    return isTold && with && *with ? 0 : 1;
}

TEST(StoreWithoutHandles, SignsNobodyOut)
{
    Rig::TestFolder const folder;
    TokenStore store(folder / "store");
    StoredLogin login;
    login.issuer = "https://login.example";
    login.clientId = "desktop";
    ASSERT_TRUE(store.Write(login));
    Rig::Child child("ReadsAStoreWithoutHandles", {PathText(folder / "store")});
    int const status = child.Wait();
    if (status == 77)
        GTEST_SKIP() << "the limit of handles cannot be lowered";
    EXPECT_EQ(status, 0);
    // Nothing was set aside.
    auto const read = store.Read("https://login.example", "desktop");
    ASSERT_TRUE(read);
    EXPECT_TRUE(*read);
}

/// The last handle is the lock's: what was found damaged before cannot be looked at again.
CHILD_PROGRAM(ReadsADamagedStoreWithOneHandle)
{
    TokenStore store(PathFromText(arguments.at(0)));
    Handles handles;
    handles.Leave(1);
    auto const read = store.Read("https://login.example", "desktop");
    EXPECT_OR_LINE(!read);
    EXPECT_OR_LINE(read.Why().reason.find(" cannot be read for now: ") != std::string::npos);
    handles.LeaveAll();
    auto const again = store.Read("https://login.example", "desktop");
    EXPECT_OR_LINE(!again);
    EXPECT_OR_LINE(again.Why().reason.find("was set aside as ") != std::string::npos);
    return 0;
}

TEST(StoreWithoutHandles, IsNotTakenForOneWithoutALogin)
{
    Rig::TestFolder const folder;
    TokenStore store(folder / "store");
    std::string reason;
    ASSERT_TRUE(PreparePrivateFolder(folder / "store", reason));
    ASSERT_TRUE(ReplacePrivateFile(store.FileOf("https://login.example", "desktop"), "x", reason));
    Rig::Child child("ReadsADamagedStoreWithOneHandle", {PathText(folder / "store")});
    int const status = child.Wait();
    if (status == CannotBeLimited)
        GTEST_SKIP() << "the limit of handles cannot be lowered";
    EXPECT_EQ(status, 0);
}

/// While a refresh is answered the process runs out of handles.
CHILD_PROGRAM(RefreshesWithoutHandles)
{
    TokenSpec const all{1, ""};
    Rig::SessionWorld world;
    auto const session = world.NewSession();
    EXPECT_OR_LINE(session->LoginInBrowser(""));
    Handles handles;
    world.provider.Order([&](Rig::TestProvider::Behaviour& behaviour) {
        behaviour.onRequest = [&](std::string const&) { handles.Leave(0); };
    });
    world.Pass(std::chrono::seconds(3600));
    std::string const token = *session->AccessToken(all).text;
    EXPECT_OR_LINE(token == world.provider.Last("access_token"));
    // The store can be neither read nor written, and the login is not lost.
    EXPECT_OR_LINE(session->IsLoggedIn());
    EXPECT_OR_LINE(*session->TokenAtHand(all).text == token);
    handles.LeaveAll();
    EXPECT_OR_LINE(session->IsLoggedIn());
    EXPECT_OR_LINE(*session->TokenAtHand(all).text == token);
    // Nor does it come back once another process has signed out.
    TokenStore another(session->StoreFolder());
    EXPECT_OR_LINE(another.Remove(world.provider.Issuer(), "client-1"));
    EXPECT_OR_LINE(!session->IsLoggedIn());
    EXPECT_OR_LINE(session->AccessToken(all).text->empty());
    return 0;
}

TEST(StoreWithoutHandles, NeitherLosesNorRevivesALogin)
{
    Rig::Child child("RefreshesWithoutHandles", {});
    int const status = child.Wait();
    if (status == CannotBeLimited)
        GTEST_SKIP() << "the limit of handles cannot be lowered";
    EXPECT_EQ(status, 0);
}
