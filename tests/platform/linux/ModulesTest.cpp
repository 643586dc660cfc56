// Where a module lies that the process has loaded by a relative name.

#include <dlfcn.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/Platform.h"

namespace fs = std::filesystem;
namespace Platform = Halvorix::Platform;

namespace {

class RelativeModule : public testing::Test {
protected:
    RelativeModule()
    {
        fs::create_directories(folder / "modules");
        fs::create_directories(folder / "elsewhere/modules");
        fs::copy_file(fs::read_symlink("/proc/self/exe").parent_path() / "PluginDependency.so",
                      folder / "modules/relative.so");
        fs::create_symlink("relative.so", folder / "modules/link.so");
        fs::current_path(folder);
    }
    ~RelativeModule() override
    {
        if (module != nullptr)
            ::dlclose(module);
        fs::current_path(before);
        fs::remove_all(folder);
    }

    static std::string FileOf(std::wstring const& name)
    {
        return fs::path(Platform::LoadedModuleFile(name)).string();
    }

    fs::path const before = fs::current_path();
    fs::path const folder =
        fs::canonical(fs::temp_directory_path()) /
        ("hxsso-modules-" +
         std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    void* module = nullptr;
};

} // namespace

TEST_F(RelativeModule, LiesWhereItWasLoadedFrom)
{
    module = ::dlopen("modules/relative.so", RTLD_LAZY | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << ::dlerror();
    EXPECT_EQ(FileOf(L"relative.so"), folder / "modules/relative.so");
    fs::current_path(folder / "elsewhere");
    EXPECT_EQ(FileOf(L"relative.so"), folder / "modules/relative.so");
}

TEST_F(RelativeModule, HasTheNameOfTheLinkWhileThatCanBeFound)
{
    module = ::dlopen("modules/link.so", RTLD_LAZY | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << ::dlerror();
    EXPECT_EQ(FileOf(L"link.so"), folder / "modules/link.so");
    fs::current_path("/");
    EXPECT_EQ(FileOf(L"link.so"), folder / "modules/relative.so");
}

TEST(Module, OfTheSystemItselfIsNoFile)
{
    EXPECT_EQ(Platform::LoadedModuleFile(L"linux-vdso.so.1"), L"");
}
