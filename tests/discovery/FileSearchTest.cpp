#include "discovery/FileSearch.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "discovery/PathText.h"
#include "platform/Platform.h"

using namespace Halvorix::SSOServices;
namespace Platform = Halvorix::Platform;

namespace {

std::wstring Executable() { return NormalizePath(Platform::ExecutableFile()); }

} // namespace

TEST(FileSearch, TakesFilesAndDirectoriesAsThere)
{
    EXPECT_TRUE(PathExists(Executable()));
    EXPECT_TRUE(PathExists(ParentPath(Executable())));
    EXPECT_FALSE(PathExists(Executable() + L".missing"));
    EXPECT_FALSE(PathExists(ParentPath(Executable()) + L"/missing/missing"));
    EXPECT_FALSE(PathExists(std::wstring()));
    EXPECT_TRUE(PathExists(std::string(".")));
    EXPECT_FALSE(PathExists(std::string("no-such-file-here")));
}

TEST(FileSearch, TakesTheFirstEntryThatHasTheFile)
{
    std::wstring const directory = ParentPath(Executable());
    std::wstring const name = FileName(Executable());
    std::wstring found = L"old";
    EXPECT_TRUE(FindFileInPaths(
        name, {L"%unresolved%", directory + L"/missing", directory, directory + L"/."}, found));
    EXPECT_EQ(found, directory + L"/" + name);
}

TEST(FileSearch, FindsADirectoryOfThatName)
{
    std::wstring const directory = ParentPath(Executable());
    std::wstring const parent = ParentPath(directory);
    ASSERT_FALSE(parent.empty());
    std::wstring found;
    EXPECT_TRUE(FindFileInPaths(FileName(directory), {parent}, found));
    EXPECT_EQ(found, JoinPath(parent, FileName(directory)));
}

TEST(FileSearch, ClearsTheResultOnAMiss)
{
    std::wstring const name = FileName(Executable());
    std::wstring found = L"old";
    EXPECT_FALSE(FindFileInPaths(name, {}, found));
    EXPECT_EQ(found, L"");
    found = L"old";
    EXPECT_FALSE(
        FindFileInPaths(name, {L"%unresolved%", ParentPath(Executable()) + L"/missing"}, found));
    EXPECT_EQ(found, L"");
}

TEST(FileSearch, TakesAnEmptyEntryAsTheCurrentDirectory)
{
    std::wstring found;
    EXPECT_TRUE(FindFileInPaths(L".", {L""}, found));
    EXPECT_EQ(found, L".");
    EXPECT_FALSE(FindFileInPaths(L"no-such-file-here", {L""}, found));
}
