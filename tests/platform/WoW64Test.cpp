// What a 32-bit process of a 64-bit system chooses, told by the seam, so that it
// is held where no such process can run; and the order of the calls of a load.

#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>

#include "FakeSystem.h"
#include "discovery/SSOPathResolver.h"
#include "host/SSOClientManager.h"
#include "support/ProcessState.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using Platform::LocationView;
using Rig::fakeSystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A folder with the executable's two files, and a resolver that looks there.
class WoW64 : public testing::Test {
protected:
    WoW64()
    {
        std::filesystem::create_directories(folder);
        fakeSystem = {};
        fakeSystem.executable = (folder / "host.exe").generic_wstring();
        fakeSystem.library = (folder / "HxSSOServices.dll").generic_wstring();
        Write("HxSSO.exe", "");
    }
    ~WoW64() override { std::filesystem::remove_all(folder); }

    void Write(std::string const& name, std::string const& content) const
    {
        std::ofstream(folder / name, std::ios::binary) << content;
    }

    std::wstring InFolder(std::wstring const& name) const
    {
        return (folder / name).generic_wstring();
    }

    std::filesystem::path const folder =
        std::filesystem::temp_directory_path() /
        ("hxsso-seam-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + "-" +
         testing::UnitTest::GetInstance()->current_test_info()->name());

    std::vector<std::wstring> log;
    SSOPathResolver resolver{
        Version{"10", "22", "00", "1800"},
        [this](std::wstring const& text, Log::LogLevel) { log.push_back(text); }};
};

constexpr char const* BothPaths =
    R"({"ssoClientPlugin": [{"module": "plugin.dll", "modulePath": "/plugin64",
        "modulePathWoW64": "/plugin32", "version": "1",
        "compatibleSsoServicesVersion": {"minVersion": "10"}}],
        "openssl": [{"module": "crypto.dll", "modulePath": "/crypto64",
        "modulePathWoW64": "/crypto32", "version": "1",
        "compatibleSsoServicesVersion": {"minVersion": "10"}}]})";

} // namespace

TEST_F(WoW64, ReadsTheModulePathsOfItsOwn)
{
    Write("SSOVersionCompatibility.config", BothPaths);
    fakeSystem.wow64 = true;
    EXPECT_EQ(resolver.GetSSOClientPluginModule(), L"/plugin32/plugin.dll");
    EXPECT_EQ(resolver.GetOpenSslModule(), L"/crypto32/crypto.dll");
}

TEST_F(WoW64, OtherProcessesReadTheOtherPaths)
{
    Write("SSOVersionCompatibility.config", BothPaths);
    EXPECT_EQ(resolver.GetSSOClientPluginModule(), L"/plugin64/plugin.dll");
    EXPECT_EQ(resolver.GetOpenSslModule(), L"/crypto64/crypto.dll");
}

TEST_F(WoW64, DropsAnObjectThatHasOnlyTheOtherPath)
{
    for (bool const wow64 : {true, false}) {
        fakeSystem.wow64 = wow64;
        log.clear();
        std::string const other = wow64 ? "modulePath" : "modulePathWoW64";
        Write("SSOVersionCompatibility.config",
              R"({"ssoClientPlugin": [{"module": "plugin.dll", ")" + other +
                  R"(": "/other", "version": "1",
                     "compatibleSsoServicesVersion": {"minVersion": "10"}}]})");
        EXPECT_EQ(resolver.GetSSOClientPluginModule(), L"");
        EXPECT_THAT(log,
                    Contains(L"Blank or missing key 'modulePath' or 'modulePathWoW64' in "
                             L"ssoClientPlugin in version compatibility file " +
                             InFolder(L"SSOVersionCompatibility.config") + L". Object ignored."));
    }
}

TEST_F(WoW64, LooksIntoThe64BitViewWhenItsOwnHasNoKey)
{
    Write("SSOClient.config", "{}");
    fakeSystem.wow64 = true;
    fakeSystem.openings = {{LocationView::Own, 2}};
    fakeSystem.locations = {{LocationView::Native64, L"/from/64"}};
    resolver.GetSSOServerAppPath();
    EXPECT_THAT(fakeSystem.calls, ElementsAre(L"open own view", L"open 64-bit view", L"close"));
    EXPECT_THAT(log, Contains(L"Getting HxSSO path from registry: /from/64"));
    EXPECT_THAT(log, Contains(testing::EndsWith(L"\n/from/64")));
    EXPECT_THAT(log, Not(Contains(HasSubstr(L"Unable to get"))));
}

TEST_F(WoW64, KeepsToItsOwnViewWhenThatHasTheKey)
{
    Write("SSOClient.config", "{}");
    fakeSystem.wow64 = true;
    fakeSystem.locations = {{LocationView::Own, L"/from/own"},
                            {LocationView::Native64, L"/from/64"}};
    resolver.GetSSOServerAppPath();
    EXPECT_THAT(fakeSystem.calls, ElementsAre(L"open own view", L"close"));
    EXPECT_THAT(log, Contains(L"Getting HxSSO path from registry: /from/own"));
}

TEST_F(WoW64, TellsTheErrorOfTheSecondViewWhenBothFail)
{
    Write("SSOClient.config", "{}");
    fakeSystem.wow64 = true;
    fakeSystem.openings = {{LocationView::Own, 2}, {LocationView::Native64, 5}};
    resolver.GetSSOServerAppPath();
    EXPECT_THAT(fakeSystem.calls, ElementsAre(L"open own view", L"open 64-bit view"));
    EXPECT_THAT(log,
                Contains(L"Unable to get HxSSO path from registry, failed with error: error 5"));
}

TEST_F(WoW64, OtherProcessesAskTheirOwnViewOnly)
{
    Write("SSOClient.config", "{}");
    fakeSystem.openings = {{LocationView::Own, 2}};
    fakeSystem.locations = {{LocationView::Native64, L"/from/64"}};
    resolver.GetSSOServerAppPath();
    EXPECT_THAT(fakeSystem.calls, ElementsAre(L"open own view"));
    EXPECT_THAT(log,
                Contains(L"Unable to get HxSSO path from registry, failed with error: error 2"));
}

TEST_F(WoW64, TheLoadReadsItsErrorAfterTheDependencyDirectoryIsRestored)
{
    Write("plugin.dll", "");
    Write("SSOVersionCompatibility.config",
          R"({"ssoClientPlugin": [{"module": "plugin.dll", "modulePathWoW64": "%ExePath%",
              "version": "1", "compatibleSsoServicesVersion": {"minVersion": "10"}}]})");
    fakeSystem.wow64 = true;
    fakeSystem.lastError = 193;
    std::shared_ptr<ISSOClient> client;
    SSOClientManager::GetInstance()->GetSSOClient(client);
    EXPECT_EQ(client, nullptr);
    std::wstring const plugin = InFolder(L"plugin.dll");
    EXPECT_THAT(fakeSystem.calls,
                ElementsAre(L"dependencies " + folder.generic_wstring(), L"load " + plugin,
                            L"dependencies restored", L"last error"));
    ASSERT_FALSE(earlyLogQueue.empty());
    EXPECT_EQ(earlyLogQueue.back().text,
              L"Failed to load client plugin module " + plugin + L". Error: error 193");
    SSOClientManager::ReleaseInstance();
}
