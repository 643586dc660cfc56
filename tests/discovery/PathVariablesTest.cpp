#include "discovery/PathVariables.h"

#include <cstddef>
#include <functional>
#include <map>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "discovery/PathText.h"
#include "discovery/SSOPathResolver.h"
#include "platform/Platform.h"

using namespace Halvorix::SSOServices;
using namespace std::string_literals;
namespace Log = Halvorix::Log;
namespace Platform = Halvorix::Platform;

namespace {

using Paths = std::vector<std::wstring>;

VariableLookup Values(std::map<std::wstring, std::wstring> const& values)
{
    return [values](std::wstring name, std::wstring& value) {
        auto const found = values.find(name);
        if (found == values.end()) {
            return false;
        }
        value = found->second;
        return true;
    };
}

bool KnowsNothing(std::wstring const&, std::wstring&) { return false; }

struct Expansion {
    std::wstring text;
    int count;
};

Expansion Expand(std::wstring text, VariableLookup const& lookup)
{
    int const count = ExpandVariables(text, lookup);
    return {text, count};
}

// Slow, and deep in the stack on long texts, but what the expansion means.
Expansion ExpandByExpression(std::wstring const& text, VariableLookup const& lookup)
{
    std::wregex const expression(L"%.*?%");
    std::wstring remainder = text;
    std::wstring result;
    int count = 0;
    std::wsmatch match;
    while (std::regex_search(remainder, match, expression)) {
        std::wstring const variable = match.str();
        std::wstring value;
        bool const known = lookup(variable.substr(1, variable.size() - 2), value);
        result += match.prefix().str() + (known ? value : variable);
        std::wstring const suffix = match.suffix().str();
        remainder = suffix;
        ++count;
    }
    return {result + remainder, count};
}

std::wstring Expanded(std::wstring text, VariableLookup const& lookup)
{
    ExpandPath(text, lookup);
    return text;
}

} // namespace

TEST(ExpandVariables, ReplacesWhatItKnowsAndCountsWhatItMeets)
{
    VariableLookup const lookup = Values({{L"x", L"X"}, {L"long name", L"L"}, {L"void", L""}});
    struct Row {
        std::wstring text;
        std::wstring expanded;
        int count;
    };
    for (Row const& row : {
             Row{L"", L"", 0}, Row{L"plain", L"plain", 0}, Row{L"%", L"%", 0},
             Row{L"a%b", L"a%b", 0}, Row{L"%x", L"%x", 0}, Row{L"x%", L"x%", 0},
             Row{L"%x%", L"X", 1}, Row{L"a%x%b", L"aXb", 1}, Row{L"%x%%x%", L"XX", 2},
             Row{L"%x%/%x%", L"X/X", 2}, Row{L"%x%%", L"X%", 1}, Row{L"%%", L"%%", 1},
             Row{L"%%x%%", L"%%x%%", 2}, Row{L"%%%x%", L"%%X", 2}, Row{L"%%%", L"%%%", 1},
             Row{L"%%%%", L"%%%%", 2}, Row{L"%unknown%", L"%unknown%", 1},
             Row{L"%unknown%/x", L"%unknown%/x", 1}, Row{L"%x%%unknown%", L"X%unknown%", 2},
             // Behind the unknown %a% the b is plain text.
             Row{L"%a%b%x%", L"%a%bX", 2}, Row{L"%a%x%b%", L"%a%x%b%", 2},
             Row{L"%a%x%", L"%a%x%", 1}, Row{L"%long name%", L"L", 1}, Row{L"a%void%b", L"ab", 1},
             Row{L"% x%", L"% x%", 1}, Row{L"%X%", L"%X%", 1}, // case is the lookup's matter
         }) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        Expansion const expansion = Expand(row.text, lookup);
        EXPECT_EQ(expansion.text, row.expanded);
        EXPECT_EQ(expansion.count, row.count);
    }
}

TEST(ExpandVariables, MatchesAcrossNoLineEnd)
{
    VariableLookup const lookup = Values({{L"x", L"X"}, {L"a\nb", L"wrong"}, {L"a\rb", L"wrong"}});
    EXPECT_EQ(Expand(L"%a\nb%", lookup).count, 0);
    EXPECT_EQ(Expand(L"%a\rb%", lookup).count, 0);
    EXPECT_EQ(Expand(L"%a\nb%", lookup).text, L"%a\nb%");
    // A percent sign without a partner on its line is plain text.
    EXPECT_EQ(Expand(L"%a\n%x%", lookup).text, L"%a\nX");
    EXPECT_EQ(Expand(L"%a\r\n%x%\n%", lookup).text, L"%a\r\nX\n%");
    EXPECT_EQ(Expand(L"%a\n%x%\n%", lookup).count, 1);
}

TEST(ExpandVariables, ExpandsNoValueAgain)
{
    VariableLookup const lookup = Values({{L"a", L"%b%"}, {L"b", L"B"}, {L"p", L"%"}});
    EXPECT_EQ(Expand(L"%a%", lookup).text, L"%b%");
    EXPECT_EQ(Expand(L"%a%", lookup).count, 1);
    EXPECT_EQ(Expand(L"%a%%b%", lookup).text, L"%b%B");
    EXPECT_EQ(Expand(L"%p%b%", lookup).text, L"%b%");
    EXPECT_EQ(Expand(L"%p%b%", lookup).count, 1);
    EXPECT_EQ(Expand(L"%p%b%p%", lookup).text, L"%b%");
}

TEST(ExpandVariables, AsksInOrderWithAnEmptyValue)
{
    Paths names;
    Paths values;
    VariableLookup const lookup = [&](std::wstring name, std::wstring& value) {
        names.push_back(name);
        values.push_back(value);
        value = L"left behind";
        return name == L"b";
    };
    Expansion const expansion = Expand(L"1%a%2%b%3%%4%c%", lookup);
    EXPECT_EQ(names, (Paths{L"a", L"b", L"", L"c"}));
    EXPECT_EQ(values, Paths(4));
    EXPECT_EQ(expansion.text, L"1%a%2left behind3%%4%c%");
    EXPECT_EQ(expansion.count, 4);
}

TEST(ExpandVariables, NeedsALookupOnlyForAMatch)
{
    VariableLookup const nothing;
    for (std::wstring const text : {L"", L"plain", L"100%", L"%a\nb%"}) {
        Expansion const expansion = Expand(text, nothing);
        EXPECT_EQ(expansion.text, text);
        EXPECT_EQ(expansion.count, 0);
    }
    for (std::wstring const text : {L"%%", L"%a%", L"x%a%"}) {
        std::wstring copy = text;
        EXPECT_THROW(ExpandVariables(copy, nothing), std::bad_function_call);
        EXPECT_EQ(copy, text);
    }
}

TEST(ExpandVariables, LeavesTheTextWhenALookupThrows)
{
    VariableLookup const lookup = [](std::wstring const& name, std::wstring& value) {
        if (name == L"b") {
            throw std::runtime_error("lookup");
        }
        value = L"A";
        return true;
    };
    std::wstring text = L"%a%/%b%";
    EXPECT_THROW(ExpandVariables(text, lookup), std::runtime_error);
    EXPECT_EQ(text, L"%a%/%b%");
}

TEST(ExpandVariables, KeepsZeroUnits)
{
    VariableLookup const lookup = Values({{L"x\0y"s, L"1\0002"s}});
    Expansion const expansion = Expand(L"a\0%x\0y%\0b"s, lookup);
    EXPECT_EQ(expansion.text, L"a\0001\0002\0b"s);
    EXPECT_EQ(expansion.count, 1);
}

TEST(ExpandVariables, AgreesWithTheExpressionOnRandomTexts)
{
    std::wstring const alphabet = L"%%%%%abc\n\r\u2028\u2029";
    VariableLookup const lookup = Values({{L"a", L"A"},
                                          {L"b", L"%c%"},
                                          {L"ab", L""},
                                          {L"c", L"%"},
                                          {L"\u2028", L"separator"},
                                          {L"a\u2029", L"\n"}});
    std::mt19937 random(20240610);
    int matches = 0;
    for (int round = 0; round < 5000; ++round) {
        std::wstring text;
        for (unsigned length = random() % 24; length > 0; --length) {
            text.push_back(alphabet[random() % alphabet.size()]);
        }
        Expansion const expected = ExpandByExpression(text, lookup);
        Expansion const expansion = Expand(text, lookup);
        ASSERT_EQ(expansion.text, expected.text) << testing::PrintToString(text);
        ASSERT_EQ(expansion.count, expected.count) << testing::PrintToString(text);
        matches += expected.count;
    }
    EXPECT_GT(matches, 5000);
}

// Work that grew with the square of the length would take longer than the test run allows. How
// it grows is measured by the benchmarks: a limit here would fail on a busy machine.
TEST(ExpandVariables, ComesThroughLongTexts)
{
    std::size_t const many = 1 << 20;
    std::wstring const letters(many, L'a');

    Expansion expansion = Expand(L"%" + letters, KnowsNothing);
    EXPECT_EQ(expansion.count, 0);
    EXPECT_TRUE(expansion.text == L"%" + letters);

    expansion = Expand(letters + L"%", KnowsNothing);
    EXPECT_EQ(expansion.count, 0);
    EXPECT_TRUE(expansion.text == letters + L"%");

    expansion = Expand(L"%" + letters + L"%", Values({{letters, L"short"}}));
    EXPECT_EQ(expansion.count, 1);
    EXPECT_EQ(expansion.text, L"short");

    expansion = Expand(letters + L"%a%" + letters, Values({{L"a", L"A"}}));
    EXPECT_EQ(expansion.count, 1);
    EXPECT_TRUE(expansion.text == letters + L"A" + letters);

    expansion = Expand(L"%x%", Values({{L"x", letters}}));
    EXPECT_TRUE(expansion.text == letters);

    std::wstring const signs(many, L'%');
    expansion = Expand(signs, KnowsNothing);
    EXPECT_EQ(expansion.count, 1 << 19);
    EXPECT_TRUE(expansion.text == signs);

    std::wstring lines;
    while (lines.size() < many) {
        lines += L"%\n";
    }
    expansion = Expand(lines, KnowsNothing);
    EXPECT_EQ(expansion.count, 0);
    EXPECT_TRUE(expansion.text == lines);
}

TEST(ExpandPath, ExpandsAndNormalises)
{
    VariableLookup const lookup = Values({{L"ExePath", L"C:\\App"}, {L"x", L"a/b/"}});
    EXPECT_EQ(Expanded(L"%ExePath%/sub\\\\dir/", lookup), L"C:/App/sub/dir");
    EXPECT_EQ(Expanded(L"%x%/%x%/", lookup), L"a/b/a/b");
    EXPECT_EQ(Expanded(L"%unknown%/x/", lookup), L"%unknown%/x");
    EXPECT_EQ(Expanded(L"%ExePath%%unknown%", lookup), L"C:/App%unknown%");
    EXPECT_EQ(Expanded(L"a\\\\b/", lookup), L"a/b");
    EXPECT_EQ(Expanded(L"", lookup), L"");

    std::wstring text = L"%x%\\%unknown%";
    EXPECT_EQ(ExpandPath(text, lookup), 2);
    text = L"a\\b";
    EXPECT_EQ(ExpandPath(text, lookup), 0);
    EXPECT_EQ(text, L"a/b");
}

TEST(ExpandPathList, ExpandsAndNormalisesEveryEntry)
{
    Paths paths = {L"%x%\\", L"", L"plain\\\\y", L"%unknown%/", L"%x%%x%"};
    ExpandPathList(paths, Values({{L"x", L"a\\b"}}));
    EXPECT_EQ(paths, (Paths{L"a/b", L"", L"plain/y", L"%unknown%", L"a/ba/b"}));

    Paths none;
    ExpandPathList(none, KnowsNothing);
    EXPECT_TRUE(none.empty());
}

TEST(ExpandPathList, ComesBeforeTheRemovalOfDuplicates)
{
    Paths paths = {L"A", L"a", L"A/", L"A"};
    ExpandPathList(paths, KnowsNothing);
    RemoveDuplicatePaths(paths);
    EXPECT_EQ(paths, (Paths{L"A", L"a"}));
}

TEST(SystemPathVariable, KnowsTheExecutablesDirectory)
{
    std::wstring const directory = ParentPath(NormalizePath(Platform::ExecutableFile()));
    ASSERT_FALSE(directory.empty());
    for (wchar_t const* name : {L"ExePath", L"exepath", L"EXEPATH", L"AppPath", L"apppath"}) {
        EXPECT_EQ(GetSystemPathVariable(name), directory);
    }
    EXPECT_EQ(NormalizePath(directory), directory);
}

TEST(SystemPathVariable, KnowsTheSystemsFolders)
{
    using Folder = Platform::KnownFolder;
    EXPECT_EQ(GetSystemPathVariable(L"ProgramFiles"),
              Platform::KnownFolderPath(Folder::ProgramFiles));
    EXPECT_EQ(GetSystemPathVariable(L"PROGRAMFILES"),
              Platform::KnownFolderPath(Folder::ProgramFiles));
    EXPECT_EQ(GetSystemPathVariable(L"AppData"), Platform::KnownFolderPath(Folder::RoamingAppData));
    EXPECT_EQ(GetSystemPathVariable(L"LocalAppData"),
              Platform::KnownFolderPath(Folder::LocalAppData));
    EXPECT_FALSE(GetSystemPathVariable(L"ProgramFiles").empty());
}

TEST(SystemPathVariable, HasOneFolderForProgramsWhereTheSystemHasNone)
{
    if (!Platform::LeadingSlashIsRoot()) {
        GTEST_SKIP() << "the system knows its folder";
    }
    EXPECT_EQ(GetSystemPathVariable(L"ProgramFiles"), L"/opt");
}

TEST(SystemPathVariable, KnowsNothingElse)
{
    for (wchar_t const* name : {L"", L"Unknown", L"ExePat", L"ExePathh", L" ExePath", L"%ExePath%",
                                // answered a step before
                                L"SSOServerAppPath", L"SSOServerAppExeDirPath",
                                L"SSOServerAppExeFile", L"SSOServicesModulePath"}) {
        EXPECT_EQ(GetSystemPathVariable(name), L"") << testing::PrintToString(name);
    }
}

TEST(PathVariableName, IgnoresCaseOnly)
{
    EXPECT_TRUE(IsVariableName(L"ExePath", L"ExePath"));
    EXPECT_TRUE(IsVariableName(L"exepath", L"ExePath"));
    EXPECT_TRUE(IsVariableName(L"EXEPATH", L"ExePath"));
    EXPECT_FALSE(IsVariableName(L"ExePat", L"ExePath"));
    EXPECT_FALSE(IsVariableName(L"ExePath ", L"ExePath"));
    EXPECT_FALSE(IsVariableName(L"", L"ExePath"));
    EXPECT_FALSE(IsVariableName(L"Exe_ath", L"ExePath"));
    EXPECT_FALSE(IsVariableName(L"@", L"`")); // 32 apart, but no letters
}

TEST(PathResolver, ExpandsWithoutAWordOfComplaint)
{
    std::vector<std::wstring> lines;
    SSOPathResolver resolver(Version{"1"},
                             [&lines](std::wstring line, Log::LogLevel) { lines.push_back(line); });
    std::wstring const directory = ParentPath(NormalizePath(Platform::ExecutableFile()));

    struct Row {
        std::wstring text;
        std::wstring expanded;
    };
    for (Row const& row : {
             Row{L"%ExePath%/sub\\\\dir/", directory + L"/sub/dir"},
             Row{L"%exepath%", directory},
             Row{L"%EXEPATH%", directory},
             Row{L"%AppPath%", directory},
             Row{L"%NoSuchVariable%/x", L"%NoSuchVariable%/x"},
             Row{L"%NoSuchVariable%\\x\\", L"%NoSuchVariable%/x"},
             Row{L"%ExePath%%NoSuchVariable%", directory + L"%NoSuchVariable%"},
             Row{L"%%", L"%%"},
             Row{L"a\\\\b/", L"a/b"},
             Row{L"", L""},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        std::wstring text = row.text;
        EXPECT_TRUE(resolver.ExpandPathVariables(text));
        EXPECT_EQ(text, row.expanded);
    }
    EXPECT_EQ(lines, Paths{});
}

TEST(PathResolver, LeavesAVariableWhoseValueIsEmpty)
{
    SSOPathResolver resolver(Version{"1"}, [](std::wstring const&, Log::LogLevel) {});
    // The library is no module of this program.
    std::wstring text = L"%SSOServicesModulePath%/x";
    EXPECT_TRUE(resolver.ExpandPathVariables(text));
    EXPECT_EQ(text, L"%SSOServicesModulePath%/x");
}
