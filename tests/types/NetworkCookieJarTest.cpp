#include <string>

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include "types/Values.h"

using namespace HxSSOTest;

TEST(NetworkCookieJar, StartsEmpty)
{
    NetworkCookieJar const jar;
    EXPECT_EQ(jar.GetCookieCount(), 0);
    ExpectFields(jar.GetCookie(0), {});
}

TEST(NetworkCookieJar, KeepsTheOrderOfAdding)
{
    NetworkCookieJar jar;
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(jar.AddCookie(Named(std::to_string(99 - i))));
    }
    ASSERT_EQ(jar.GetCookieCount(), 100);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Name(jar.GetCookie(i)), std::to_string(99 - i));
    }
}

TEST(NetworkCookieJar, KeepsEveryField)
{
    CookieFields const fields = {"name", "value", L"domain", L"/path", true, true, 7};
    NetworkCookieJar jar;
    jar.AddCookie(Cookie(fields));
    ExpectFields(jar.GetCookie(0), fields);
}

TEST(NetworkCookieJar, HoldsEqualCookiesTwice)
{
    NetworkCookieJar jar;
    NetworkCookie const cookie = Named("same");
    EXPECT_TRUE(jar.AddCookie(cookie));
    EXPECT_TRUE(jar.AddCookie(cookie));
    EXPECT_EQ(jar.GetCookieCount(), 2);
    EXPECT_EQ(Name(jar.GetCookie(0)), "same");
    EXPECT_EQ(Name(jar.GetCookie(1)), "same");
}

TEST(NetworkCookieJar, AddsACookieOfItsOwn)
{
    NetworkCookieJar jar;
    jar.AddCookie(Named("a"));
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(jar.AddCookie(jar.GetCookie(0)));
    }
    EXPECT_EQ(jar.GetCookieCount(), 21);
    EXPECT_EQ(Name(jar.GetCookie(20)), "a");
}

TEST(NetworkCookieJar, GivesADefaultCookieOutsideItsRange)
{
    NetworkCookieJar jar;
    jar.AddCookie(Named("a"));
    jar.AddCookie(Named("b"));
    ExpectFields(jar.GetCookie(2), {});
    ExpectFields(jar.GetCookie(3), {});
    ExpectFields(jar.GetCookie(2147483647), {});
    ExpectFields(jar.GetCookie(-1), {});
    ExpectFields(jar.GetCookie(-2147483647 - 1), {});
    EXPECT_EQ(jar.GetCookieCount(), 2);
}

TEST(NetworkCookieJar, SharesNoCookieWithItsCaller)
{
    CookieFields const fields = {"a", "v", L"d", L"p", true, false, 7};
    NetworkCookieJar jar;
    NetworkCookie cookie = Cookie(fields);
    jar.AddCookie(cookie);
    cookie.SetName("changed");
    cookie.SetExpiryDate(0);
    ExpectFields(jar.GetCookie(0), fields);

    NetworkCookie taken = jar.GetCookie(0);
    taken.SetName("changed");
    taken.SetExpiryDate(0);
    ExpectFields(jar.GetCookie(0), fields);
}

TEST(NetworkCookieJar, ForgetsEverythingAtOnce)
{
    NetworkCookieJar jar;
    jar.DeleteAll();
    EXPECT_EQ(jar.GetCookieCount(), 0);

    jar.AddCookie(Named("a"));
    jar.AddCookie(Named("b"));
    NetworkCookie const kept = jar.GetCookie(1);
    jar.DeleteAll();
    EXPECT_EQ(jar.GetCookieCount(), 0);
    ExpectFields(jar.GetCookie(0), {});
    EXPECT_EQ(Name(kept), "b");

    jar.AddCookie(Named("c"));
    EXPECT_EQ(jar.GetCookieCount(), 1);
    EXPECT_EQ(Name(jar.GetCookie(0)), "c");
}
