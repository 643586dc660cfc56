#include <string>

#include <gtest/gtest.h>

#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include "support/GuardedBuffer.h"
#include "types/Values.h"

using namespace HxSSOTest;
using namespace std::string_literals;

TEST(OAuth2Token, StartsEmptyWithADefaultSpec)
{
    OAuth2Token const token;
    EXPECT_FALSE(token.IsValid());
    EXPECT_EQ(token.GetTokenSize(), 0);
    ASSERT_NE(token.GetToken(), nullptr);
    EXPECT_EQ(token.GetToken()[0], L'\0');
    EXPECT_EQ(token.GetToken(nullptr, 0), 0);
    EXPECT_TRUE(token.GetSpec() == OAuth2TokenSpec());
}

TEST(OAuth2Token, IsValidWithAnyText)
{
    EXPECT_TRUE(Token(L" ").IsValid());
    EXPECT_TRUE(Token(L"abc").IsValid());
    EXPECT_TRUE(Token(L"\0"s).IsValid());
    EXPECT_FALSE(Token(L"", OAuth2TokenSpec(Type(2), L"a")).IsValid());
}

TEST(OAuth2Token, HandsOutItsOwnText)
{
    OAuth2Token const token = Token(L"abc\u20ac");
    EXPECT_EQ(token.GetToken(), L"abc\u20ac"s);
    EXPECT_EQ(token.GetToken(), token.GetToken()); // the same pointer
    EXPECT_EQ(token.GetTokenSize(), 4);
}

TEST(OAuth2Token, CopiesTheWholeTextOrNothing)
{
    OAuth2Token const token = Token(L"abc");
    EXPECT_EQ(token.GetToken(nullptr, 0), 3);
    EXPECT_EQ(token.GetToken(nullptr, -1), 3);
    EXPECT_EQ(token.GetToken(nullptr, 1), 3);

    struct Row {
        int capacity;
        int answer;
        std::wstring stored;
    };
    for (Row const& row : {
             Row{5, 3, L"abc\0"s},
             Row{4, 3, L"abc\0"s},
             Row{3, 0, L"\0"s},
             Row{1, 0, L"\0"s},
         }) {
        SCOPED_TRACE(row.capacity);
        GuardedBuffer<wchar_t> buffer(row.capacity);
        EXPECT_EQ(token.GetToken(buffer.Data(), row.capacity), row.answer);
        EXPECT_EQ(buffer.First(row.stored.size()), row.stored);
        EXPECT_TRUE(buffer.GuardsIntact());
    }
    for (int capacity : {0, -1}) {
        GuardedBuffer<wchar_t> buffer(4);
        EXPECT_EQ(token.GetToken(buffer.Data(), capacity), 0);
        EXPECT_EQ(buffer.Content(), buffer.Untouched());
    }
}

TEST(OAuth2Token, CountsZeroUnitsOfItsText)
{
    OAuth2Token const token = Token(L"ab\0cd"s);
    EXPECT_EQ(token.GetTokenSize(), 5);
    EXPECT_EQ(token.GetToken(nullptr, 0), 5);
    EXPECT_EQ(std::wstring(token.GetToken(), 6), L"ab\0cd\0"s);

    GuardedBuffer<wchar_t> enough(6);
    EXPECT_EQ(token.GetToken(enough.Data(), 6), 2);
    EXPECT_EQ(enough.First(3), L"ab\0"s);

    GuardedBuffer<wchar_t> tooSmall(5);
    EXPECT_EQ(token.GetToken(tooSmall.Data(), 5), 0);
    EXPECT_EQ(tooSmall.First(1), L"\0"s);
}

TEST(OAuth2Token, IsFilledWithTextAndSpecAsTheyStand)
{
    OAuth2TokenSpec const spec = SpecOf(R"({"type":-3,"scope":" b  a ","legacy":true})");
    OAuth2Token token = Token(L"  old  ", OAuth2TokenSpec(Type(9), L"z"));
    SSOServicesPrivate::Initialize(token, L" \t new ", spec);
    EXPECT_EQ(token.GetToken(), L" \t new "s);
    EXPECT_EQ(token.GetSpec().GetType(), -3);
    EXPECT_EQ(Scope(token.GetSpec()), L" b  a ");
    EXPECT_TRUE(token.GetSpec() == spec); // the legacy mark, too
    EXPECT_FALSE(token.GetSpec() == OAuth2TokenSpec(Type(-3), L"a b"));
}

TEST(OAuth2Token, GivesAnIndependentSpec)
{
    OAuth2Token const token = Token(L"t", OAuth2TokenSpec(Type(2), L"a"));
    OAuth2TokenSpec copy = token.GetSpec();
    copy.SetScope(L"changed");
    copy.SetType(Type(3));
    EXPECT_EQ(Scope(token.GetSpec()), L"a");
    EXPECT_EQ(token.GetSpec().GetType(), 2);
}

TEST(OAuth2Token, TakesAnIndependentSpec)
{
    OAuth2TokenSpec spec(Type(2), L"a");
    OAuth2Token const token = Token(L"t", spec);
    spec.SetScope(L"changed");
    EXPECT_EQ(Scope(token.GetSpec()), L"a");
}

TEST(OAuth2Token, EqualityMindsCaseInTheTextOnly)
{
    OAuth2TokenSpec const lower(Type(2), L"scope");
    OAuth2TokenSpec const upper(Type(2), L"SCOPE");
    OAuth2Token const token = Token(L"text", lower);
    ExpectEqual(token, token);
    ExpectEqual(token, Token(L"text", lower));
    ExpectEqual(token, Token(L"text", upper));
    ExpectUnequal(token, Token(L"Text", lower));
    ExpectUnequal(token, Token(L"text2", lower));
    ExpectUnequal(token, Token(L"tex", lower));
    ExpectUnequal(token, Token(L"text", OAuth2TokenSpec(Type(3), L"scope")));
    ExpectUnequal(token, Token(L"text", OAuth2TokenSpec(Type(2), L"other")));
    ExpectEqual(OAuth2Token(), OAuth2Token());
    ExpectEqual(OAuth2Token(), Token(L""));
    ExpectUnequal(OAuth2Token(), Token(L" "));
}

TEST(OAuth2Token, EqualityComparesBehindZeroUnits)
{
    ExpectEqual(Token(L"a\0b"s), Token(L"a\0b"s));
    ExpectUnequal(Token(L"a\0b"s), Token(L"a\0c"s));
    ExpectUnequal(Token(L"a\0"s), Token(L"a"));
}

TEST(OAuth2Token, EqualityLooksAtTheLegacyMarkOfTheSpec)
{
    OAuth2TokenSpec const legacy = SpecOf(R"({"type":1,"scope":"","legacy":true})");
    ExpectUnequal(Token(L"a", legacy), Token(L"a"));
    ExpectEqual(Token(L"a", legacy), Token(L"a", legacy));
}

TEST(OAuth2Token, CopiesAreIndependent)
{
    OAuth2Token original = Token(L"first", OAuth2TokenSpec(Type(2), L"a"));
    OAuth2Token const copy(original);
    OAuth2Token assigned = Token(L"old");
    EXPECT_EQ(&(assigned = original), &assigned);
    ExpectEqual(copy, original);
    ExpectEqual(assigned, original);

    SSOServicesPrivate::Initialize(original, L"second", OAuth2TokenSpec(Type(3), L"b"));
    for (OAuth2Token const* token : {&copy, static_cast<OAuth2Token const*>(&assigned)}) {
        EXPECT_EQ(token->GetToken(), L"first"s);
        EXPECT_EQ(token->GetSpec().GetType(), 2);
        EXPECT_EQ(Scope(token->GetSpec()), L"a");
    }
}

TEST(OAuth2Token, CopiesZeroUnits)
{
    OAuth2Token const copy(Token(L"a\0b"s));
    EXPECT_EQ(copy.GetTokenSize(), 3);
    EXPECT_EQ(std::wstring(copy.GetToken(), 3), L"a\0b"s);
}

TEST(OAuth2Token, IsClearedByAssignmentFromAnEmptyOne)
{
    OAuth2Token token = Token(L"text", OAuth2TokenSpec(Type(2), L"a"));
    token = OAuth2Token();
    EXPECT_FALSE(token.IsValid());
    EXPECT_TRUE(token.GetSpec() == OAuth2TokenSpec());
}

TEST(OAuth2Token, SurvivesSelfAssignment)
{
    OAuth2Token token = Token(L"text", OAuth2TokenSpec(Type(2), L"a"));
    OAuth2Token const& itself = token;
    EXPECT_EQ(&(token = itself), &token);
    ExpectEqual(token, Token(L"text", OAuth2TokenSpec(Type(2), L"a")));
}
