#include <atomic>
#include <locale>
#include <thread>
#include <vector>

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

HOST_PROGRAM(RacesForTheFirstCall)
{
    std::atomic<int> waiting{0};
    std::atomic<int> answers{0};
    std::vector<std::thread> threads;
    constexpr int count = 8;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&] {
            ++waiting;
            while (waiting < count)
                std::this_thread::yield();
            if (SSOClientPrivate::GetSessionState() == "ISSOClientPrivate::GetSessionState")
                ++answers;
        });
    for (std::thread& thread : threads)
        thread.join();
    report("answers", answers.load());
}

} // namespace

TEST(Manager, IsCreatedOnceByThreadsThatRace)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("RacesForTheFirstCall");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["answers"], 8);
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
    EXPECT_EQ(outcome.LoggedAt(Info, Rig::Banner()), 1);
}

namespace {

// The plugin appears after the first manager has failed.
HOST_PROGRAM(FailsUntilThePluginAppears)
{
    WebServicesUIManager::Initialize(false);
    report("first", WebServicesUIManager::GetInstance()->IsLoggedIn());
    std::filesystem::rename(std::filesystem::u8path(arguments[0]),
                            std::filesystem::u8path(arguments[1]));
    report("sameManager", WebServicesUIManager::GetInstance()->IsLoggedIn());
    WebServicesUIManager::Uninitialize();
    report("initialized", WebServicesManager::IsInitialized());
    report("state", SSOClientPrivate::GetSessionState());
}

} // namespace

TEST(Manager, LoadsAgainOnlyAfterItsRelease)
{
    Installation installation;
    installation.Complete();
    Outcome const outcome =
        installation.Remove("server/away")
            .Run("FailsUntilThePluginAppears",
                 {installation.Text("server/plugin"), installation.Text("server/plugin")});
    EXPECT_EQ(outcome["first"], true);

    std::filesystem::rename(installation.Path("server/plugin"), installation.Path("server/away"));
    Outcome const failed =
        installation.Run("FailsUntilThePluginAppears",
                         {installation.Text("server/away"), installation.Text("server/plugin")});
    EXPECT_EQ(failed.ending.status, 0) << failed.errors;
    EXPECT_EQ(failed["first"], false);
    EXPECT_EQ(failed["sameManager"], false);
    EXPECT_EQ(failed["initialized"], false);
    EXPECT_EQ(failed["state"], "ISSOClientPrivate::GetSessionState");
    // The file was looked for once by the first manager; after its flush, each
    // call added one banner: Initialize of the other manager, two questions,
    // two calls of Uninitialize. The new manager logs its own.
    EXPECT_EQ(failed.OnConsole("Client plugin module not found: {root}/server/plugin/" +
                               Rig::ModuleName("RecordingPlugin")),
              2);
    EXPECT_EQ(failed.LoggedAt(Info, Rig::Banner()), 6);
    EXPECT_EQ(failed.OnConsole(Rig::Banner()), 1);
}

namespace {

HOST_PROGRAM(UsesThePluginOfTwoManagers)
{
    WebServicesUIManager::Initialize(true);
    WebServicesUIManager::Uninitialize();
    WebServicesUIManager::Initialize(false);
    WebServicesUIManager::Uninitialize();
}

} // namespace

TEST(Manager, RunsTheWholeLoadAgainAfterItsRelease)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("UsesThePluginOfTwoManagers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 2);
    EXPECT_EQ(outcome.Called(R"(ISSOLogManager::GetLogger("HxSSOServices"))"), 2);
    EXPECT_EQ(outcome.LoggedAt(Info, Rig::Banner()), 2);
    EXPECT_EQ(outcome.Called("ISSOClientModule::InitializeUI(true, false)"), 1);
    EXPECT_EQ(outcome.Called("ISSOClientModule::InitializeUI(false, false)"), 1);
    EXPECT_EQ(outcome.Called("ISSOClientModule::UninitializeUI()"), 2);
}

TEST(Manager, SurvivesALoggerThatCallsBackInASecondLoad)
{
    Installation installation;
    installation.Complete().Script("ILogger::WriteLine", R"({"callBack": true})");
    Outcome const outcome = installation.Run("UsesThePluginOfTwoManagers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.ending.crashed);
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 2);
    EXPECT_EQ(outcome.Called("ISSOClientModule::UninitializeUI()"), 2);
}

TEST(Manager, SurvivesALoggerThatAsksForWhatTheFactoryRefuses)
{
    Installation installation;
    installation.Complete()
        .Script("ILogger::WriteLine", R"({"callBack": true})")
        .Script("ISSOClientFactory::GetSSOClientPrivate", R"({"empty": true})");
    Outcome const outcome = installation.Run("UsesThePluginOfTwoManagers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_GE(outcome.LoggedAt(Error, "Failed to obtain ISSOClientPrivate. "
                                      "ISSOClientFactory::GetSSOClientPrivate returned null."),
              1);
}

TEST(Manager, SurvivesALoggerThatAsksForWhatIsBeingSearched)
{
    Installation installation;
    installation.Complete()
        .Script("ILogger::WriteLine", R"({"askForPaths": true})")
        .Compatibility(R"({"ssoClientPlugin": [{"module": ")" + Rig::ModuleName("RecordingPlugin") +
                       R"(",
            "modulePath": "%SSOServerAppPath%/plugin",
            "compatibleSsoServicesVersion": {"minVersion": "10"}}]})");
    Outcome const outcome = installation.Run("LeavesThePluginLoaded");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_GE(outcome.Called(R"(AskedForPaths(""))"), 1);
}

TEST(Manager, LetsAPluginCallBackWhileTheProcessEnds)
{
    Installation installation;
    installation.Complete()
        .Script("GetSSOClientFactory", R"({"fresh": true})")
        .Script("~ISSOClientFactory", R"({"callBack": true})");
    Outcome const outcome = installation.Run("LeavesThePluginLoaded");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.ending.crashed) << outcome.errors;
    EXPECT_EQ(outcome.Called("~ISSOClientFactory()"), 1);
    // The library answers, by then without the plugin.
    EXPECT_EQ(outcome.Called(R"(CalledBack("{root}/app", true, ""))"), 1);
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
}

namespace {

HOST_PROGRAM(LeavesThePluginLoaded) { WebServicesManager::Initialize(); }

HOST_PROGRAM(OverridesTheConfiguration)
{
    std::wstring const file(arguments[0].begin(), arguments[0].end());
    SSOClientPrivate::SetSSOClientConfigFileOverride(file);
    WebServicesManager::Initialize();
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"too late");
    report("override", SSOClientPrivate::GetSSOClientConfigFileOverride());
    report("file", SSOClientPrivate::GetSSOClientConfigFile());
}

} // namespace

TEST(Manager, TakesAnOverrideUntilTheConfigurationIsLoaded)
{
    Installation installation;
    installation.Complete()
        .ClientConfig("{", "app")
        .ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})", "elsewhere");
    Outcome const outcome = installation.Run("OverridesTheConfiguration",
                                             {installation.Text("elsewhere/SSOClient.config")});
    std::string const file = "{root}/elsewhere/SSOClient.config";
    EXPECT_EQ(outcome["override"], file);
    EXPECT_EQ(outcome["file"], file);
    EXPECT_EQ(outcome.LoggedAt(Info, "Client config file override set to " + file), 1);
    EXPECT_EQ(outcome.LoggedAt(Info, "Found client config file override at " + file), 1);
    EXPECT_EQ(
        outcome.LoggedAt(Error, "Failed to set client config file override too late since client "
                                "config file " +
                                    file + " is already loaded"),
        1);
    EXPECT_EQ(outcome.Called("ISSOClientModule::Initialize(false, false)"), 1);
}

namespace {

HOST_PROGRAM(LooksAtItsLocale)
{
    report("before", std::locale() == std::locale::classic());
    SSOClientPrivate::GetModuleDirPath(L"");
    report("after", std::locale() == std::locale::classic());
}

} // namespace

TEST(Manager, ReplacesTheLocaleOfTheProcess)
{
    Installation installation;
    Outcome const outcome = installation.Run("LooksAtItsLocale");
    EXPECT_EQ(outcome["before"], true);
    EXPECT_EQ(outcome["after"], false);
}

namespace {

HOST_PROGRAM(AsksWhileThePluginWaits)
{
    WebServicesManager::Initialize();
    std::filesystem::path const release = std::filesystem::u8path(arguments[0]);
    std::filesystem::path waiting = release;
    waiting += ".waiting";
    std::thread caller([&] { report("slow", WebServicesManager::GetInstance()->IsLoggedIn()); });
    while (!std::filesystem::exists(waiting))
        std::this_thread::yield();
    // These need the lock: the plugin's operation must not hold it.
    std::wstring path = L"%ExePath%";
    report("locked", SSOClientPrivate::ExpandPathVariables(path));
    bool const expired = WebServicesManager::GetInstance()->IsTokenExpired();
    bool const stillWaiting = !std::filesystem::exists(release);
    std::ofstream(release) << "go on";
    caller.join();
    report("expired", expired);
    report("stillWaiting", stillWaiting);
}

} // namespace

TEST(Manager, HoldsNoLockWhileThePluginWorks)
{
    Installation installation;
    installation.Complete().Script("ISSOClient::IsLoggedIn", R"({"wait": "{root}/release"})");
    Outcome const outcome =
        installation.Run("AsksWhileThePluginWaits", {installation.Text("release")});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["locked"], true);
    EXPECT_EQ(outcome["expired"], true);
    EXPECT_EQ(outcome["stillWaiting"], true);
    EXPECT_EQ(outcome["slow"], true);
}

namespace {

HOST_PROGRAM(NeedsEveryInterfaceTwice)
{
    WebServicesManager::Initialize();
    for (int i = 0; i < 2; ++i) {
        report("module" + std::to_string(i), SSOClientPrivate::GetProductName().c_str());
        report("client" + std::to_string(i), WebServicesManager::GetInstance()->IsLoggedIn());
        long long id = 7;
        std::vector<std::string> const none;
        report("server" + std::to_string(i),
               SSOClientPrivate::StartSSOServerProcess(none, std::chrono::milliseconds(1), id));
        report("private" + std::to_string(i), SSOClientPrivate::Ping());
        WebServicesUIManager::Initialize();
        report("ui" + std::to_string(i), WebServicesUIManager::GetInstance()->Login());
    }
}

} // namespace

class RefusedByTheFactory : public testing::TestWithParam<std::pair<char const*, char const*>> {};

TEST_P(RefusedByTheFactory, IsLoggedEachTimeAndLeavesTheOthersWorking)
{
    auto const [interfaceName, shortName] = GetParam();
    Installation installation;
    installation.Complete().Script(std::string("ISSOClientFactory::Get") + (interfaceName + 1),
                                   R"({"empty": true})");
    Outcome const outcome = installation.Run("NeedsEveryInterfaceTwice");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    for (char const* const other : {"module", "client", "server", "private", "ui"})
        for (char const* const turn : {"0", "1"}) {
            Json::Value const answer = outcome[std::string(other) + turn];
            bool const works = answer.isString() ? !answer.asString().empty() : answer.asBool();
            EXPECT_EQ(works, other != std::string(shortName)) << other;
        }
    // Initialize of both managers needs the module too.
    int const times = shortName == std::string("module") ? 4 : 2;
    EXPECT_EQ(outcome.LoggedAt(Error, std::string("Failed to obtain ") + interfaceName +
                                          ". ISSOClientFactory::Get" + (interfaceName + 1) +
                                          " returned null."),
              times);
}

INSTANTIATE_TEST_SUITE_P(Manager, RefusedByTheFactory,
                         testing::Values(std::pair("ISSOClientModule", "module"),
                                         std::pair("ISSOServerManager", "server"),
                                         std::pair("ISSOClient", "client"),
                                         std::pair("ISSOClientUI", "ui"),
                                         std::pair("ISSOClientPrivate", "private")),
                         [](auto const& info) { return std::string(info.param.first); });
