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
