// A plugin that uses the library from inside the calls of its own load.

#include <algorithm>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "host/Expected.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::WebServicesManager;
using Rig::Installation;
using Rig::LogMessage;
using Rig::Outcome;

namespace {

HOST_PROGRAM(LoadsAndAsks)
{
    WebServicesManager::Initialize();
    report("loggedIn", WebServicesManager::GetInstance()->IsLoggedIn());
}

/// Every place of the load at which the plugin is called, in order.
std::vector<char const*> PlacesOfTheLoad()
{
    return {"GetSSOClientFactory",
            "ISSOClientFactory::GetSSOServerManager",
            "ISSOServerManager::SetSSOServerAppFiles",
            "ISSOClientFactory::GetSSOLogManager",
            "ISSOLogManager::GetLogger",
            "ILogger::WriteLine",
            "ISSOServerManager::SetSSOServerProcessName",
            "ISSOServerManager::SetSSOServerName",
            "ISSOClientFactory::GetSSOClientModule",
            "ISSOClientModule::SetOpenSslModule"};
}

void ExpectOneWholeLoad(Outcome const& outcome)
{
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.ending.timedOut);
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["loggedIn"], true);
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
    EXPECT_EQ(outcome.Called(R"(ISSOLogManager::GetLogger("HxSSOServices"))"), 1);
    for (LogMessage const& line : Rig::LinesOfGoodLoad())
        EXPECT_GE(outcome.LoggedAt(line.level, line.text), 1) << line;
}

int CallBacks(Outcome const& outcome)
{
    return static_cast<int>(
        std::count_if(outcome.calls.begin(), outcome.calls.end(), [](std::string const& call) {
            return call.compare(0, 10, "CalledBack") == 0;
        }));
}

} // namespace

class FactoryThatCallsBack : public testing::TestWithParam<char const*> {};

TEST_P(FactoryThatCallsBack, GetsTheAnswersOfTheOtherInterfaces)
{
    Installation installation;
    installation.Complete().Script(GetParam(), R"({"callBack": true})");
    Outcome const outcome = installation.Run("LoadsAndAsks");
    ExpectOneWholeLoad(outcome);
    EXPECT_GE(
        outcome.Called(R"(CalledBack("{root}/app", true, "ISSOClientPrivate::GetSessionState"))"),
        1);
}

// The other places stand with the tests of the load.
INSTANTIATE_TEST_SUITE_P(PluginLoad, FactoryThatCallsBack,
                         testing::Values("ISSOClientFactory::GetSSOServerManager",
                                         "ISSOClientFactory::GetSSOLogManager",
                                         "ISSOClientFactory::GetSSOClientModule",
                                         "ISSOServerManager::SetSSOServerProcessName",
                                         "ISSOClientModule::Initialize"),
                         [](testing::TestParamInfo<char const*> const& info) {
                             std::string name = info.param;
                             name.erase(std::remove(name.begin(), name.end(), ':'), name.end());
                             return name;
                         });

TEST(PluginLoad, TakesCallsBackFromEveryPlaceAtOnce)
{
    Installation installation;
    installation.Complete();
    for (char const* const place : PlacesOfTheLoad())
        installation.Script(place, R"({"callBack": true})");
    Outcome const outcome = installation.Run("LoadsAndAsks");
    ExpectOneWholeLoad(outcome);
    EXPECT_GE(CallBacks(outcome), static_cast<int>(PlacesOfTheLoad().size()));
}

TEST(PluginLoad, TakesQuestionsForPathsFromEveryPlaceAtOnce)
{
    Installation installation;
    installation.Complete();
    for (char const* const place : PlacesOfTheLoad())
        installation.Script(place, R"({"askForPaths": true})");
    Outcome const outcome = installation.Run("LoadsAndAsks");
    ExpectOneWholeLoad(outcome);
    std::string const file = "{root}/server/openssl/" + Rig::ModuleName("openssl");
    EXPECT_GE(outcome.Called("AskedForPaths(\"" + file + "\")"),
              static_cast<int>(PlacesOfTheLoad().size()));
}
