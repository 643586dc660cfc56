#include "discovery/SSOClientConfig.h"

#include <string>

#include <gtest/gtest.h>

using namespace Halvorix::SSOServices;

namespace {

SSOClientConfig WithDefaults(SSOClientConfig config)
{
    ApplyClientConfigDefaults(config);
    return config;
}

} // namespace

TEST(ClientConfigDefaults, FillAnEmptyConfiguration)
{
    SSOClientConfig const config = WithDefaults({});
    EXPECT_EQ(config.appName, L"HxSSO.exe");
    EXPECT_EQ(config.exeName, L"HxSSO.exe");
    EXPECT_EQ(config.serverName, "Halvorix.SSO.DefaultServer-v2");
    EXPECT_EQ(config.processName, "Halvorix.SSO.DefaultServer-v2");
    EXPECT_TRUE(config.searchPaths.empty());
    EXPECT_EQ(config.bundleId, L"");
    EXPECT_EQ(config.versionCompatibilityConfigFilePath, L"");
    EXPECT_EQ(config.openSslModuleName, L"");
    EXPECT_EQ(config.openSslModulePath, L"");
}

TEST(ClientConfigDefaults, LetTheTwoNamesStandInForEachOther)
{
    SSOClientConfig given;
    given.appName = L"app";
    EXPECT_EQ(WithDefaults(given).appName, L"app");
    EXPECT_EQ(WithDefaults(given).exeName, L"app");

    given = {};
    given.exeName = L"exe";
    EXPECT_EQ(WithDefaults(given).appName, L"exe");
    EXPECT_EQ(WithDefaults(given).exeName, L"exe");

    given.appName = L"app";
    EXPECT_EQ(WithDefaults(given).appName, L"app");
    EXPECT_EQ(WithDefaults(given).exeName, L"exe");
}

TEST(ClientConfigDefaults, NameTheProcessAfterTheServer)
{
    SSOClientConfig given;
    given.serverName = "server";
    EXPECT_EQ(WithDefaults(given).serverName, "server");
    EXPECT_EQ(WithDefaults(given).processName, "server");

    given = {};
    given.processName = "process";
    EXPECT_EQ(WithDefaults(given).serverName, "Halvorix.SSO.DefaultServer-v2");
    EXPECT_EQ(WithDefaults(given).processName, "process");
}

TEST(ClientConfigDefaults, LeaveWhatIsGiven)
{
    SSOClientConfig given;
    given.appName = L"app";
    given.exeName = L"exe";
    given.searchPaths = {L"a", L""};
    given.processName = "process";
    given.serverName = "server";
    given.bundleId = L"bundle";
    given.versionCompatibilityConfigFilePath = L"path";
    given.openSslModuleName = L"module";
    given.openSslModulePath = L"directory";
    SSOClientConfig const config = WithDefaults(given);
    EXPECT_EQ(config.appName, L"app");
    EXPECT_EQ(config.exeName, L"exe");
    EXPECT_EQ(config.searchPaths, given.searchPaths);
    EXPECT_EQ(config.processName, "process");
    EXPECT_EQ(config.serverName, "server");
    EXPECT_EQ(config.bundleId, L"bundle");
    EXPECT_EQ(config.versionCompatibilityConfigFilePath, L"path");
    EXPECT_EQ(config.openSslModuleName, L"module");
    EXPECT_EQ(config.openSslModulePath, L"directory");
}
