#include "discovery/ModuleFiles.h"

#include <string>

#include <gtest/gtest.h>

#include "discovery/PathText.h"

using namespace Halvorix::SSOServices;
namespace Platform = Halvorix::Platform;

TEST(ModuleFiles, KnowsNothingOfAModuleThatIsNotLoaded)
{
    EXPECT_EQ(ResolveModuleFile(L"no-such-module.dll"), L"");
    EXPECT_EQ(GetModuleDirPath(L"no-such-module.dll"), L"");
}

TEST(ModuleFiles, KnowsTheExecutableByItsName)
{
    std::wstring const file = NormalizePath(Platform::ExecutableFile());
    EXPECT_EQ(ResolveModuleFile(FileName(file)), file);
}

TEST(ModuleFiles, GivesTheExecutablesDirectoryInNormalForm)
{
    std::wstring const directory = GetExecutableDirPath();
    EXPECT_EQ(directory, ParentPath(NormalizePath(Platform::ExecutableFile())));
    EXPECT_EQ(directory, NormalizePath(directory));
    EXPECT_FALSE(directory.empty());
}

// Not by how the name begins, or a plugin called "libm.so" would be the system's.
TEST(ModuleFiles, KnowsModulesByTheirWholeNames)
{
    std::wstring const executable = FileName(NormalizePath(Platform::ExecutableFile()));
    EXPECT_EQ(ResolveModuleFile(executable.substr(0, executable.size() - 1)), L"");
    EXPECT_EQ(ResolveModuleFile(L"libc.so"), L"");
    EXPECT_EQ(ResolveModuleFile(L"libc"), L"");
    EXPECT_EQ(ResolveModuleFile(L"kernel"), L"");
    EXPECT_NE(ResolveModuleFile(L"libc.so.6").empty(), ResolveModuleFile(L"kernel32.dll").empty());
}
