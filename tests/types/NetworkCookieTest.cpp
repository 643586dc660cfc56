#include <climits>
#include <string>

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include "support/GuardedBuffer.h"
#include "types/Values.h"

using namespace HxSSOTest;
using namespace std::string_literals;

namespace {

struct NarrowField {
    char const* name;
    void (NetworkCookie::*set)(char const*);
    int (NetworkCookie::*get)(char*, int) const;
};

struct WideField {
    char const* name;
    void (NetworkCookie::*set)(wchar_t const*);
    int (NetworkCookie::*get)(wchar_t*, int) const;
};

// Not constexpr: to Visual Studio the address of an imported function is no constant.
NarrowField const NarrowFields[] = {
    {"Name", &NetworkCookie::SetName, &NetworkCookie::GetName},
    {"Value", &NetworkCookie::SetValue, &NetworkCookie::GetValue},
};

WideField const WideFields[] = {
    {"Domain", &NetworkCookie::SetDomain, &NetworkCookie::GetDomain},
    {"Path", &NetworkCookie::SetPath, &NetworkCookie::GetPath},
};

CookieFields const Filled = {"name", "value", L"domain", L"/path", true, true, 5};

} // namespace

TEST(NetworkCookie, StartsEmpty) { ExpectFields(NetworkCookie(), {}); }

TEST(NetworkCookie, KeepsEveryFieldApart) { ExpectFields(Cookie(Filled), Filled); }

TEST(NetworkCookie, FlagsAreIndependent)
{
    for (bool secure : {false, true}) {
        for (bool httpOnly : {false, true}) {
            NetworkCookie cookie;
            cookie.SetSecure(secure);
            cookie.SetHttpOnly(httpOnly);
            EXPECT_EQ(cookie.IsSecure(), secure);
            EXPECT_EQ(cookie.IsHttpOnly(), httpOnly);
            cookie.SetSecure(!secure);
            EXPECT_EQ(cookie.IsHttpOnly(), httpOnly);
        }
    }
}

TEST(NetworkCookie, KeepsAnyExpiryDate)
{
    NetworkCookie cookie;
    for (long long date : {-1LL, 0LL, 1LL, 4294967296LL, LLONG_MAX, LLONG_MIN}) {
        cookie.SetExpiryDate(date);
        EXPECT_EQ(cookie.GetExpiryDate(), date);
    }
}

TEST(NetworkCookie, GivesItsBytesWithATerminatorOnlyIfThereIsRoom)
{
    for (NarrowField const& field : NarrowFields) {
        SCOPED_TRACE(field.name);
        NetworkCookie cookie;
        (cookie.*field.set)("abc");
        EXPECT_EQ((cookie.*field.get)(nullptr, 0), 3);
        EXPECT_EQ((cookie.*field.get)(nullptr, -1), 3);

        struct Row {
            int capacity;
            int answer;
            std::string stored;
        };
        for (Row const& row : {
                 Row{5, 3, "abc\0#"s},
                 Row{4, 3, "abc\0"s},
                 Row{3, 3, "abc"},
                 Row{2, 2, "ab"},
                 Row{1, 1, "a"},
             }) {
            SCOPED_TRACE(row.capacity);
            GuardedBuffer<char> buffer(row.capacity);
            EXPECT_EQ((cookie.*field.get)(buffer.Data(), row.capacity), row.answer);
            EXPECT_EQ(buffer.Content(), row.stored);
            EXPECT_TRUE(buffer.GuardsIntact());
        }
        GuardedBuffer<char> buffer(4);
        EXPECT_EQ((cookie.*field.get)(buffer.Data(), 0), 0);
        EXPECT_EQ(buffer.Content(), buffer.Untouched());
    }
}

TEST(NetworkCookie, StoresATerminatorForEmptyBytes)
{
    for (NarrowField const& field : NarrowFields) {
        SCOPED_TRACE(field.name);
        NetworkCookie cookie;
        (cookie.*field.set)("old");
        (cookie.*field.set)("");
        EXPECT_EQ((cookie.*field.get)(nullptr, 0), 0);
        GuardedBuffer<char> buffer(4);
        EXPECT_EQ((cookie.*field.get)(buffer.Data(), 4), 0);
        EXPECT_EQ(buffer.Content(), "\0###"s);
    }
}

TEST(NetworkCookie, KeepsBytesOfAnyEncoding)
{
    for (NarrowField const& field : NarrowFields) {
        NetworkCookie cookie;
        (cookie.*field.set)("\xFF caf\xE9 \xC3\xA9 \t");
        EXPECT_EQ(GetterText(cookie, field.get), "\xFF caf\xE9 \xC3\xA9 \t") << field.name;
    }
}

TEST(NetworkCookie, CutsWideTextsToTheBuffer)
{
    for (WideField const& field : WideFields) {
        SCOPED_TRACE(field.name);
        NetworkCookie cookie;
        (cookie.*field.set)(L"abc");
        EXPECT_EQ((cookie.*field.get)(nullptr, 0), 3);

        struct Row {
            int capacity;
            int answer;
            std::wstring stored;
        };
        for (Row const& row : {
                 Row{4, 3, L"abc\0"s},
                 Row{3, 2, L"ab\0"s},
                 Row{1, 0, L"\0"s},
             }) {
            SCOPED_TRACE(row.capacity);
            GuardedBuffer<wchar_t> buffer(row.capacity);
            EXPECT_EQ((cookie.*field.get)(buffer.Data(), row.capacity), row.answer);
            EXPECT_EQ(buffer.Content(), row.stored);
            EXPECT_TRUE(buffer.GuardsIntact());
        }
        for (int capacity : {0, -2}) {
            GuardedBuffer<wchar_t> buffer(4);
            EXPECT_EQ((cookie.*field.get)(buffer.Data(), capacity), 0);
            EXPECT_EQ(buffer.Content(), buffer.Untouched());
        }
    }
}

TEST(NetworkCookie, TakesANullWideTextAsEmpty)
{
    for (WideField const& field : WideFields) {
        SCOPED_TRACE(field.name);
        NetworkCookie cookie;
        (cookie.*field.set)(L"old");
        (cookie.*field.set)(nullptr);
        EXPECT_EQ((cookie.*field.get)(nullptr, 0), 0);
        GuardedBuffer<wchar_t> buffer(2);
        EXPECT_EQ((cookie.*field.get)(buffer.Data(), 2), 0);
        EXPECT_EQ(buffer.First(1), L"\0"s);
    }
}

TEST(NetworkCookie, StoresCopiesOfTheArguments)
{
    std::string narrow = "abc";
    std::wstring wide = L"abc";
    NetworkCookie cookie;
    for (NarrowField const& field : NarrowFields) {
        (cookie.*field.set)(narrow.c_str());
    }
    for (WideField const& field : WideFields) {
        (cookie.*field.set)(wide.c_str());
    }
    narrow.assign(3, 'z');
    wide.assign(3, L'z');
    for (NarrowField const& field : NarrowFields) {
        EXPECT_EQ(GetterText(cookie, field.get), "abc") << field.name;
    }
    for (WideField const& field : WideFields) {
        EXPECT_EQ(GetterText(cookie, field.get), L"abc") << field.name;
    }
}

TEST(NetworkCookie, CopiesAreIndependent)
{
    NetworkCookie original = Cookie(Filled);
    NetworkCookie copy(original);
    ExpectFields(copy, Filled);
    copy = NetworkCookie();
    ExpectFields(copy, {});
    ExpectFields(original, Filled);

    EXPECT_EQ(&(copy = original), &copy);
    original.SetName("changed");
    original.SetValue("changed");
    original.SetDomain(L"changed");
    original.SetPath(L"changed");
    original.SetSecure(false);
    original.SetHttpOnly(false);
    original.SetExpiryDate(0);
    ExpectFields(copy, Filled);
}

TEST(NetworkCookie, SurvivesSelfAssignment)
{
    NetworkCookie cookie = Cookie(Filled);
    NetworkCookie const& itself = cookie;
    EXPECT_EQ(&(cookie = itself), &cookie);
    ExpectFields(cookie, Filled);
}
