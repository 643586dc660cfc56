// What a 32-bit process of a 64-bit system chooses, told by the seam, so that it
// is held where no such process can run.

#include <string>

#include <gmock/gmock.h>

#include "platform/OverFakeSystem.h"

using namespace Halvorix;
using Platform::LocationView;
using Rig::fakeSystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

class WoW64 : public Rig::OverFakeSystem {};

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
