#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "host/Expected.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::WebServicesManager;
using Halvorix::WebServicesUI::WebServicesUIManager;
using Rig::Error;
using Rig::Info;
using Rig::Installation;
using Rig::Outcome;

namespace {

HOST_PROGRAM(SwitchesTheLogOff)
{
    WebServicesManager::EnableLog(false);
    WebServicesManager::Initialize();
    report("enabled", WebServicesManager::GetInstance()->IsLogEnabled());
    WebServicesManager::EnableLog(false);
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"late");
}

HOST_PROGRAM(AsksForTheLogFile)
{
    report("before", SSOClientPrivate::GetLogFile());
    WebServicesManager::Initialize();
    report("during", SSOClientPrivate::GetLogFile());
    WebServicesManager::Uninitialize();
    report("after", SSOClientPrivate::GetLogFile());
}

HOST_PROGRAM(LogsAfterTheManagerIsReleased)
{
    WebServicesUIManager::Initialize();
    WebServicesUIManager::Uninitialize();
    // A new manager: it logs to the logger of the old one.
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"nowhere");
    report("file", SSOClientPrivate::GetSSOClientConfigFile());
}

} // namespace

TEST(Log, CannotBeSwitchedOff)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("SwitchesTheLogOff");
    EXPECT_EQ(outcome["enabled"], true);
    EXPECT_EQ(outcome.LoggedAt(Error, "Failed to set client config file override late since client "
                                      "config file {root}/app/SSOClient.config is already loaded"),
              1);
    // With the logger there, errors go to it alone.
    EXPECT_TRUE(outcome.console.empty());
}

TEST(Log, NamesTheSameFileWithAndWithoutAPlugin)
{
    Installation installation;
    Outcome const without = installation.Run("AsksForTheLogFile");
    Outcome const with = installation.Complete().Run("AsksForTheLogFile");
    for (Outcome const& outcome : {without, with}) {
        std::string const file = outcome["before"].asString();
        EXPECT_THAT(file, testing::EndsWith("/Halvorix/Web Services/Log/WebServices.log"));
        EXPECT_EQ(file.find('\\'), std::string::npos);
        EXPECT_EQ(outcome["during"], file);
        EXPECT_EQ(outcome["after"], file);
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::u8path(file)));
    }
    EXPECT_EQ(without["before"], with["before"]);
    if (!Rig::IsWindows()) {
        EXPECT_EQ(with["before"],
                  "{root}/home/.local/share/Halvorix/Web Services/Log/WebServices.log");
    }
}

TEST(Log, KeepsTheLoggerOverTheReleaseOfTheManager)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("LogsAfterTheManagerIsReleased");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["file"], "nowhere");
    EXPECT_EQ(outcome.LoggedAt(Info, "Client config file override set to nowhere"), 1);
    EXPECT_EQ(outcome.LoggedAt(Error, "Failed to find client config file override nowhere"), 1);
    EXPECT_TRUE(outcome.console.empty());
}
