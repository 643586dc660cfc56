#include <algorithm>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include <OAuth2Token.h>
#include "support/GuardedBuffer.h"
#include "support/LocaleWithBlank.h"
#include "types/Values.h"

using namespace HxSSOTest;
using Halvorix::WebServices::OAuth2TokenTypeDefault;

namespace {

std::wstring NormalForm(wchar_t const* scope) { return Scope(OAuth2TokenSpec(Type(1), scope)); }

} // namespace

TEST(OAuth2TokenSpec, HasTheDefaultTypeAndNoScope)
{
    OAuth2TokenSpec const spec;
    EXPECT_EQ(spec.GetType(), 1);
    EXPECT_EQ(spec.GetType(), OAuth2TokenTypeDefault);
    EXPECT_EQ(spec.GetScope(nullptr, 0), 0);
    ExpectEqual(spec, SpecOf(R"({"type":1,"scope":"","legacy":false})"));
}

TEST(OAuth2TokenSpec, EqualsADefaultOneWhenBuiltWithItsValues)
{
    ExpectEqual(OAuth2TokenSpec(), OAuth2TokenSpec(Type(1), L""));
}

TEST(OAuth2TokenSpec, KeepsAnyType)
{
    for (std::int32_t number : {0, 1, 2, -7, 4711, INT32_MAX, INT32_MIN}) {
        OAuth2TokenSpec spec(Type(number), L"");
        EXPECT_EQ(spec.GetType(), number);
        OAuth2TokenSpec changed;
        EXPECT_TRUE(changed.SetType(Type(number)));
        EXPECT_EQ(changed.GetType(), number);
    }
}

TEST(OAuth2TokenSpec, BringsAScopeIntoNormalForm)
{
    struct Row {
        wchar_t const* scope;
        wchar_t const* normal;
    };
    for (Row const& row : {
             Row{L"", L""},
             Row{L"    ", L""},
             Row{L" \t\r\n\v\f ", L""},
             Row{L"a", L"a"},
             Row{L"  a  ", L"a"},
             Row{L"\t\r\na\n\v\f", L"a"},
             Row{L"b a", L"a b"},
             Row{L"B a", L"a B"},
             Row{L"b A", L"A b"},
             Row{L"  user:profile   data:read  data:write ", L"data:read data:write user:profile"},
             Row{L"a a", L"a a"},
             Row{L"b a b a", L"a a b b"},
             // Only a blank separates words; other white space goes at their edges.
             Row{L"b\ta", L"b\ta"},
             Row{L"b\na c", L"b\na c"},
             Row{L"b\t a", L"a b"},
             Row{L"b \ta", L"a b"},
             Row{L"b \t\t a", L"a b"},
             Row{L"b \n a\r c", L"a b c"},
             // Shorter first, digits before letters.
             Row{L"ab a abc", L"a ab abc"},
             Row{L"z 10 9 A", L"10 9 A z"},
             Row{L"B2 b1 B0", L"B0 b1 B2"},
             Row{L"\u20ac z \u00e9", L"z \u00e9 \u20ac"},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.scope));
        EXPECT_EQ(NormalForm(row.scope), row.normal);
        OAuth2TokenSpec const spec;
        EXPECT_TRUE(spec.SetScope(row.scope));
        EXPECT_EQ(Scope(spec), row.normal);
    }
}

TEST(OAuth2TokenSpec, SortsTheUnderlineBeforeLettersOfEitherCase)
{
    // Comparison folds to lower case, and the underline stands between the cases.
    EXPECT_EQ(NormalForm(L"A _"), L"_ A");
    EXPECT_EQ(NormalForm(L"a _"), L"_ a");
    EXPECT_EQ(NormalForm(L"Z _ a"), L"_ a Z");
    EXPECT_EQ(NormalForm(L"XA X_ x^ x["), L"x[ x^ X_ XA");
    EXPECT_EQ(NormalForm(L"_ 9 @"), L"9 @ _");
    EXPECT_EQ(NormalForm(L"{ z"), L"z {");
}

TEST(OAuth2TokenSpec, KeepsWordsThatDifferOnlyByCase)
{
    std::wstring const scope = NormalForm(L"b A B a");
    EXPECT_EQ(scope.size(), 7U);
    std::wstring folded = scope;
    std::replace(folded.begin(), folded.end(), L'A', L'a');
    std::replace(folded.begin(), folded.end(), L'B', L'b');
    EXPECT_EQ(folded, L"a a b b");
    for (wchar_t letter : {L'A', L'a', L'B', L'b'}) {
        EXPECT_EQ(std::count(scope.begin(), scope.end(), letter), 1);
    }
}

TEST(OAuth2TokenSpec, TrimsByTheGlobalLocale)
{
    LocaleWithBlank const locale('x');
    EXPECT_EQ(NormalForm(L"xxbxax xcx xx"), L"bxa c");
    EXPECT_EQ(NormalForm(L"xxx"), L"");
}

TEST(OAuth2TokenSpec, NormalFormIsStable)
{
    std::wstring const once = NormalForm(L"  d C\t b  A a ");
    EXPECT_EQ(NormalForm(once.c_str()).size(), once.size());
    EXPECT_EQ(NormalForm(NormalForm(L" c b  a").c_str()), L"a b c");
}

TEST(OAuth2TokenSpec, SetsTheScopeThroughAConstantReference)
{
    OAuth2TokenSpec spec(Type(2), L"old");
    OAuth2TokenSpec const& constant = spec;
    EXPECT_TRUE(constant.SetScope(L"z y"));
    EXPECT_EQ(Scope(spec), L"y z");
    EXPECT_EQ(spec.GetType(), 2);
    EXPECT_TRUE(constant.SetScope(L""));
    EXPECT_EQ(Scope(spec), L"");
}

TEST(OAuth2TokenSpec, CutsTheScopeToTheBuffer)
{
    OAuth2TokenSpec const spec(Type(1), L"b a");
    EXPECT_EQ(spec.GetScope(nullptr, 0), 3);
    EXPECT_EQ(spec.GetScope(nullptr, -1), 3);

    struct Row {
        int capacity;
        int answer;
        std::wstring stored;
    };
    for (Row const& row : {
             Row{4, 3, std::wstring(L"a b\0", 4)},
             Row{3, 2, std::wstring(L"a \0", 3)},
             Row{1, 0, std::wstring(1, L'\0')},
         }) {
        SCOPED_TRACE(row.capacity);
        GuardedBuffer<wchar_t> buffer(row.capacity);
        EXPECT_EQ(spec.GetScope(buffer.Data(), row.capacity), row.answer);
        EXPECT_EQ(buffer.Content(), row.stored);
        EXPECT_TRUE(buffer.GuardsIntact());
    }
    for (int capacity : {0, -3}) {
        GuardedBuffer<wchar_t> buffer(4);
        EXPECT_EQ(spec.GetScope(buffer.Data(), capacity), 0);
        EXPECT_EQ(buffer.Content(), buffer.Untouched());
    }
}

TEST(OAuth2TokenSpec, EqualityIgnoresCaseAndOrderOfGivenWords)
{
    OAuth2TokenSpec const spec(Type(2), L"b a");
    ExpectEqual(spec, spec);
    ExpectEqual(spec, OAuth2TokenSpec(Type(2), L"A B"));
    ExpectEqual(spec, OAuth2TokenSpec(Type(2), L" a  b "));
    ExpectUnequal(spec, OAuth2TokenSpec(Type(2), L"a"));
    ExpectUnequal(spec, OAuth2TokenSpec(Type(2), L"a b b"));
    ExpectUnequal(spec, OAuth2TokenSpec(Type(2), L"a c"));
    ExpectUnequal(spec, OAuth2TokenSpec(Type(2), L""));
}

TEST(OAuth2TokenSpec, EqualityLooksAtTheType)
{
    ExpectUnequal(OAuth2TokenSpec(Type(1), L"a"), OAuth2TokenSpec(Type(2), L"a"));
    ExpectUnequal(OAuth2TokenSpec(Type(0), L""), OAuth2TokenSpec());
    ExpectEqual(OAuth2TokenSpec(Type(-7), L"a"), OAuth2TokenSpec(Type(-7), L"A"));
}

TEST(OAuth2TokenSpec, EqualityLooksAtTheLegacyMark)
{
    OAuth2TokenSpec const legacy = SpecOf(R"({"type":1,"scope":"a","legacy":true})");
    OAuth2TokenSpec const modern = SpecOf(R"({"type":1,"scope":"a","legacy":false})");
    ExpectUnequal(legacy, modern);
    ExpectEqual(legacy, SpecOf(R"({"type":1,"scope":"A","legacy":true})"));
    ExpectEqual(modern, OAuth2TokenSpec(Type(1), L"a"));
}

TEST(OAuth2TokenSpec, EqualityLooksAtTheOrderOfStoredWords)
{
    OAuth2TokenSpec const read = SpecOf(R"({"type":2,"scope":"b a"})");
    EXPECT_EQ(Scope(read), L"b a");
    ExpectUnequal(read, OAuth2TokenSpec(Type(2), L"b a"));
    ExpectEqual(read, SpecOf(R"({"type":2,"scope":"B A"})"));
}

TEST(OAuth2TokenSpec, CopiesEverythingAsItStands)
{
    OAuth2TokenSpec const source = SpecOf(R"({"type":5,"scope":" b  a ","legacy":true})");
    OAuth2TokenSpec const copy(source);
    OAuth2TokenSpec assigned(Type(9), L"old");
    EXPECT_EQ(&(assigned = source), &assigned);
    for (OAuth2TokenSpec const* spec : {&copy, static_cast<OAuth2TokenSpec const*>(&assigned)}) {
        EXPECT_EQ(spec->GetType(), 5);
        EXPECT_EQ(Scope(*spec), L" b  a ");
        ExpectEqual(*spec, source); // the legacy mark, too
        ExpectUnequal(*spec, SpecOf(R"({"type":5,"scope":" b  a ","legacy":false})"));
    }
}

TEST(OAuth2TokenSpec, CopiesAreIndependent)
{
    OAuth2TokenSpec original(Type(2), L"a");
    OAuth2TokenSpec copy(original);
    copy.SetScope(L"b");
    copy.SetType(Type(3));
    EXPECT_EQ(Scope(original), L"a");
    EXPECT_EQ(original.GetType(), 2);

    copy = original;
    original.SetScope(L"c");
    EXPECT_EQ(Scope(copy), L"a");
}

TEST(OAuth2TokenSpec, SurvivesSelfAssignment)
{
    OAuth2TokenSpec spec = SpecOf(R"({"type":5,"scope":"b a","legacy":true})");
    OAuth2TokenSpec const& itself = spec;
    EXPECT_EQ(&(spec = itself), &spec);
    ExpectEqual(spec, SpecOf(R"({"type":5,"scope":"b a","legacy":true})"));
}
