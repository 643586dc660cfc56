// A host that has no handles left: nobody is signed out for it.

#include <sys/resource.h>

#include <gmock/gmock.h>

#include "openid/Child.h"
#include "openid/TestFolder.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;

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
