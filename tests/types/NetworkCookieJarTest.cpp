#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include "support/GetterTexts.h"

using Halvorix::WebServices::NetworkCookie;
using Halvorix::WebServices::NetworkCookieJar;
using HxSSOTest::GetterText;

namespace {

NetworkCookie Cookie(char const* name)
{
    NetworkCookie cookie;
    cookie.SetName(name);
    cookie.SetDomain(L"domain");
    cookie.SetExpiryDate(7);
    cookie.SetSecure(true);
    return cookie;
}

std::string Name(NetworkCookie const& cookie)
{
    return GetterText(cookie, &NetworkCookie::GetName);
}

void ExpectDefault(NetworkCookie const& cookie)
{
    EXPECT_EQ(cookie.GetName(nullptr, 0), 0);
    EXPECT_EQ(cookie.GetValue(nullptr, 0), 0);
    EXPECT_EQ(cookie.GetDomain(nullptr, 0), 0);
    EXPECT_EQ(cookie.GetPath(nullptr, 0), 0);
    EXPECT_FALSE(cookie.IsSecure());
    EXPECT_FALSE(cookie.IsHttpOnly());
    EXPECT_EQ(cookie.GetExpiryDate(), 0);
}

} // namespace

TEST(NetworkCookieJar, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible<NetworkCookieJar>::value);
    EXPECT_FALSE(std::is_copy_assignable<NetworkCookieJar>::value);
}

TEST(NetworkCookieJar, StartsEmpty)
{
    NetworkCookieJar const jar;
    EXPECT_EQ(jar.GetCookieCount(), 0);
    ExpectDefault(jar.GetCookie(0));
}

TEST(NetworkCookieJar, KeepsTheOrderOfAdding)
{
    NetworkCookieJar jar;
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(jar.AddCookie(Cookie(std::to_string(99 - i).c_str())));
    }
    ASSERT_EQ(jar.GetCookieCount(), 100);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Name(jar.GetCookie(i)), std::to_string(99 - i));
    }
}

TEST(NetworkCookieJar, KeepsEveryField)
{
    NetworkCookie cookie = Cookie("name");
    cookie.SetValue("value");
    cookie.SetPath(L"/path");
    cookie.SetHttpOnly(true);
    NetworkCookieJar jar;
    jar.AddCookie(cookie);
    NetworkCookie const back = jar.GetCookie(0);
    EXPECT_EQ(Name(back), "name");
    EXPECT_EQ(GetterText(back, &NetworkCookie::GetValue), "value");
    EXPECT_EQ(GetterText(back, &NetworkCookie::GetDomain), L"domain");
    EXPECT_EQ(GetterText(back, &NetworkCookie::GetPath), L"/path");
    EXPECT_TRUE(back.IsSecure());
    EXPECT_TRUE(back.IsHttpOnly());
    EXPECT_EQ(back.GetExpiryDate(), 7);
}

TEST(NetworkCookieJar, HoldsEqualCookiesTwice)
{
    NetworkCookieJar jar;
    NetworkCookie const cookie = Cookie("same");
    EXPECT_TRUE(jar.AddCookie(cookie));
    EXPECT_TRUE(jar.AddCookie(cookie));
    EXPECT_EQ(jar.GetCookieCount(), 2);
    EXPECT_EQ(Name(jar.GetCookie(0)), "same");
    EXPECT_EQ(Name(jar.GetCookie(1)), "same");
}

TEST(NetworkCookieJar, AddsACookieOfItsOwn)
{
    NetworkCookieJar jar;
    jar.AddCookie(Cookie("a"));
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(jar.AddCookie(jar.GetCookie(0)));
    }
    EXPECT_EQ(jar.GetCookieCount(), 21);
    EXPECT_EQ(Name(jar.GetCookie(20)), "a");
}

TEST(NetworkCookieJar, GivesADefaultCookieOutsideItsRange)
{
    NetworkCookieJar jar;
    jar.AddCookie(Cookie("a"));
    jar.AddCookie(Cookie("b"));
    ExpectDefault(jar.GetCookie(2));
    ExpectDefault(jar.GetCookie(3));
    ExpectDefault(jar.GetCookie(2147483647));
    ExpectDefault(jar.GetCookie(-1));
    ExpectDefault(jar.GetCookie(-2147483647 - 1));
    EXPECT_EQ(jar.GetCookieCount(), 2);
}

TEST(NetworkCookieJar, SharesNoCookieWithItsCaller)
{
    NetworkCookieJar jar;
    NetworkCookie cookie = Cookie("a");
    jar.AddCookie(cookie);
    cookie.SetName("changed");
    cookie.SetExpiryDate(0);
    EXPECT_EQ(Name(jar.GetCookie(0)), "a");

    NetworkCookie taken = jar.GetCookie(0);
    taken.SetName("changed");
    taken.SetExpiryDate(0);
    EXPECT_EQ(Name(jar.GetCookie(0)), "a");
    EXPECT_EQ(jar.GetCookie(0).GetExpiryDate(), 7);
}

TEST(NetworkCookieJar, ForgetsEverythingAtOnce)
{
    NetworkCookieJar jar;
    jar.DeleteAll();
    EXPECT_EQ(jar.GetCookieCount(), 0);

    jar.AddCookie(Cookie("a"));
    jar.AddCookie(Cookie("b"));
    NetworkCookie const kept = jar.GetCookie(1);
    jar.DeleteAll();
    EXPECT_EQ(jar.GetCookieCount(), 0);
    ExpectDefault(jar.GetCookie(0));
    EXPECT_EQ(Name(kept), "b");

    jar.AddCookie(Cookie("c"));
    EXPECT_EQ(jar.GetCookieCount(), 1);
    EXPECT_EQ(Name(jar.GetCookie(0)), "c");
}
