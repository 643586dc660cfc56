#include "discovery/PathText.h"

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>
#include <gtest/gtest.h>

#include "platform/Platform.h"

using namespace Halvorix::SSOServices;
namespace Platform = Halvorix::Platform;

namespace {

using Paths = std::vector<std::wstring>;

// What a leading slash leaves of itself.
std::wstring Root() { return Platform::LeadingSlashIsRoot() ? L"/" : L""; }

// The normal form, put together from the names between the slashes.
std::wstring Assembled(std::wstring const& path)
{
    std::vector<std::wstring> names(1);
    for (wchar_t unit : path) {
        if (unit == L'/' || unit == L'\\') {
            names.emplace_back();
        } else {
            names.back().push_back(unit);
        }
    }
    bool const leading = names.size() > 1 && names.front().empty();
    bool const trailing = names.size() > 1 && names.back().empty();
    bool const leadingRoot = leading && Platform::LeadingSlashIsRoot();
    std::wstring result = leadingRoot ? L"/" : L"";
    bool first = true;
    for (std::wstring const& name : names) {
        if (!name.empty()) {
            result += (first ? L"" : L"/") + name;
            first = false;
        }
    }
    // What may be a drive is Boost's to say: "prn:" is one, too.
    std::wstring const closed = result + L"/";
    bool const isRoot = boost::filesystem::path(closed).root_path().generic_wstring() == closed;
    return trailing && isRoot && !result.empty() && !leadingRoot ? closed : result;
}

} // namespace

TEST(NormalizePath, BringsTextsIntoNormalForm)
{
    struct Row {
        std::wstring path;
        std::wstring normal;
    };
    std::wstring const root = Root();
    for (Row const& row : {
             Row{L"", L""},
             Row{L"a", L"a"},
             Row{L"a/b", L"a/b"},
             Row{L"a\\b", L"a/b"},
             Row{L"a\\/\\b", L"a/b"},
             Row{L"a//b///c", L"a/b/c"},
             Row{L"a/", L"a"},
             Row{L"a///", L"a"},
             Row{L"a\\\\", L"a"},
             Row{L"/abc/", root + L"abc"},
             Row{L"///", root},
             Row{L"/", root},
             Row{L"\\", root},
             Row{L"\\\\\\", root},
             Row{L"/usr/lib", root + L"usr/lib"},
             Row{L"//server/share/x", root + L"server/share/x"},
             Row{L"\\\\server\\share\\x\\", root + L"server/share/x"},
             Row{L"C:/a/", L"C:/a"},
             Row{L"C:\\App\\sub", L"C:/App/sub"},
             Row{L"C:\\\\App\\\\\\sub\\", L"C:/App/sub"},
             Row{L"/C:/a", root + L"C:/a"},
             Row{L"C:", L"C:"},
             Row{L".", L"."},
             Row{L"./", L"."},
             Row{L"a/./b/../c", L"a/./b/../c"},
             Row{L" a / b ", L" a / b "},
             Row{L" /", L" "},
             Row{L"%x%/", L"%x%"},
             Row{L"a;b", L"a;b"},
             Row{L"\u00e9\\\u20ac/", L"\u00e9/\u20ac"},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.path));
        EXPECT_EQ(NormalizePath(row.path), row.normal);
    }
}

TEST(NormalizePath, KeepsTheSlashOfADrive)
{
    if (Platform::LeadingSlashIsRoot()) {
        GTEST_SKIP() << "drives are no roots on this system";
    }
    EXPECT_EQ(NormalizePath(L"C:/"), L"C:/");
    EXPECT_EQ(NormalizePath(L"C:\\"), L"C:/");
    EXPECT_EQ(NormalizePath(L"C:\\\\"), L"C:/");
    EXPECT_EQ(NormalizePath(L"C://///"), L"C:/");
    EXPECT_EQ(NormalizePath(L"z:\\"), L"z:/");
    EXPECT_EQ(NormalizePath(L"//C:\\"), L"C:/");
    EXPECT_EQ(NormalizePath(L"C:/a/"), L"C:/a");
    EXPECT_EQ(NormalizePath(L"a/C:/"), L"a/C:");
}

TEST(NormalizePath, KeepsOneLeadingSlashWhereItIsTheRoot)
{
    if (!Platform::LeadingSlashIsRoot()) {
        GTEST_SKIP() << "a leading slash is no root on this system";
    }
    EXPECT_EQ(NormalizePath(L"/"), L"/");
    EXPECT_EQ(NormalizePath(L"///"), L"/");
    EXPECT_EQ(NormalizePath(L"//a"), L"/a");
    EXPECT_EQ(NormalizePath(L"\\a\\"), L"/a");
}

TEST(NormalizePath, AgreesWithTheNamesBetweenTheSlashes)
{
    std::wstring const alphabet = L"//\\\\C:a.% \u00e9";
    std::mt19937 random(20240609);
    for (int round = 0; round < 20000; ++round) {
        std::wstring path = random() % 3 == 0 ? L"C:" : L"";
        for (unsigned length = random() % 12; length > 0; --length) {
            path.push_back(alphabet[random() % alphabet.size()]);
        }
        std::wstring const normal = NormalizePath(path);
        ASSERT_EQ(normal, Assembled(path)) << testing::PrintToString(path);
        ASSERT_EQ(NormalizePath(normal), normal) << testing::PrintToString(path);
    }
}

// How it grows is measured by the benchmarks: a limit here would fail on a busy machine.
TEST(NormalizePath, ComesThroughAMillionSlashes)
{
    std::size_t const many = 1 << 20;
    EXPECT_EQ(NormalizePath(std::wstring(many, L'/')), Root());
    EXPECT_EQ(NormalizePath(std::wstring(many, L'\\')), Root());
    EXPECT_EQ(NormalizePath(L"a" + std::wstring(many, L'/')), L"a");
    EXPECT_EQ(NormalizePath(L"a" + std::wstring(many, L'\\') + L"b"), L"a/b");
    EXPECT_EQ(NormalizePath(std::wstring(many, L'/') + L"b"), Root() + L"b");
}

TEST(RemoveDuplicatePaths, KeepsTheFirstOfEqualEntries)
{
    Paths paths = {L"a", L"b", L"a", L"A", L"b", L"", L"c", L"", L"a", L"a/"};
    RemoveDuplicatePaths(paths);
    EXPECT_EQ(paths, (Paths{L"a", L"b", L"A", L"", L"c", L"a/"}));

    Paths none;
    RemoveDuplicatePaths(none);
    EXPECT_TRUE(none.empty());

    Paths same(5, L"x");
    RemoveDuplicatePaths(same);
    EXPECT_EQ(same, Paths{L"x"});
}

TEST(SplitPathList, CutsAtEverySemicolon)
{
    EXPECT_EQ(SplitPathList(L""), Paths{});
    EXPECT_EQ(SplitPathList(L"a"), Paths{L"a"});
    EXPECT_EQ(SplitPathList(L"a;b"), (Paths{L"a", L"b"}));
    EXPECT_EQ(SplitPathList(L"a;;b"), (Paths{L"a", L"", L"b"}));
    EXPECT_EQ(SplitPathList(L"a;"), (Paths{L"a", L""}));
    EXPECT_EQ(SplitPathList(L";a"), (Paths{L"", L"a"}));
    EXPECT_EQ(SplitPathList(L";"), (Paths{L"", L""}));
    EXPECT_EQ(SplitPathList(L" a ; %x%\\b/ "), (Paths{L" a ", L" %x%\\b/ "}));
    EXPECT_EQ(SplitPathList(L"a,b:c"), Paths{L"a,b:c"});
}

TEST(SplitSupportPathList, TakesSemicolonsInARowForOne)
{
    EXPECT_EQ(SplitSupportPathList(L""), Paths{});
    EXPECT_EQ(SplitSupportPathList(L"a;b"), (Paths{L"a", L"b"}));
    EXPECT_EQ(SplitSupportPathList(L"a;;;b"), (Paths{L"a", L"b"}));
    EXPECT_EQ(SplitSupportPathList(L";;a;;"), (Paths{L"", L"a", L""}));
}

TEST(PathParts, JoinsADirectoryAndAName)
{
    EXPECT_EQ(JoinPath(L"C:/a", L"b.dll"), L"C:/a/b.dll");
    EXPECT_EQ(JoinPath(L"a/b", L"c/d"), L"a/b/c/d");
    EXPECT_EQ(JoinPath(L"", L"b.dll"), L"b.dll");
    EXPECT_EQ(JoinPath(L"C:/", L"b.dll"), L"C:/b.dll");
    EXPECT_EQ(JoinPath(L"%x%", L"\u20ac"), L"%x%/\u20ac");
}

TEST(PathParts, CutsTheLastNameOff)
{
    EXPECT_EQ(ParentPath(L"C:/a/b.dll"), L"C:/a");
    EXPECT_EQ(ParentPath(L"a/b/c"), L"a/b");
    EXPECT_EQ(ParentPath(L"b.dll"), L"");
    EXPECT_EQ(ParentPath(L""), L"");
    EXPECT_EQ(FileName(L"C:/a/b.dll"), L"b.dll");
    EXPECT_EQ(FileName(L"a/\u20ac"), L"\u20ac");
    EXPECT_EQ(FileName(L"b.dll"), L"b.dll");
    EXPECT_EQ(FileName(L""), L"");
}

TEST(PathParts, AnswerInForwardSlashes)
{
    if (Platform::LeadingSlashIsRoot()) {
        GTEST_SKIP() << "a backslash is no separator on this system";
    }
    EXPECT_EQ(JoinPath(L"C:\\a", L"b\\c"), L"C:/a/b/c");
    EXPECT_EQ(ParentPath(L"C:\\a\\b\\c"), L"C:/a/b");
    EXPECT_EQ(FileName(L"C:\\a\\b.dll"), L"b.dll");
}

// As Boost appends: a drive alone is its current directory.
TEST(PathText, JoinsADriveWithoutASlash)
{
    EXPECT_EQ(JoinPath(L"D:", L"folder/x"),
              Platform::LeadingSlashIsRoot() ? L"D:/folder/x" : L"D:folder/x");
    EXPECT_EQ(JoinPath(L"D:/", L"x"), L"D:/x");
    EXPECT_EQ(JoinPath(L"", L"x"), L"x");
}

// A unit that is no character is kept: without it the name would be another file's.
TEST(PathText, KeepsHalfASurrogatePair)
{
    std::wstring const name{L'a', static_cast<wchar_t>(0xD800), L'b'};
    EXPECT_EQ(JoinPath(L"folder", name), L"folder/" + name);
    EXPECT_EQ(FileName(L"folder/" + name), name);
    EXPECT_EQ(ParentPath(name + L"/x"), name);
}
