#include <algorithm>

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
using Rig::LogMessage;
using Rig::ModuleName;
using Rig::Outcome;
using testing::ElementsAreArray;
using testing::HasSubstr;

namespace {

std::string const PluginFile = "{root}/server/plugin/" + ModuleName("RecordingPlugin");

HOST_PROGRAM(AsksTwiceWhetherLoggedIn)
{
    report.Try("initialize", [&] { WebServicesManager::Initialize(false); });
    if (WebServicesManager::GetInstance() == nullptr)
        WebServicesManager::Initialize(false);
    for (char const* const name : {"first", "second"})
        report.Try(std::string(name) + ".call", [&] {
            WebServicesManager* const manager = WebServicesManager::GetInstance();
            if (manager != nullptr)
                report(name, manager->IsLoggedIn());
        });
}

// The lines of a load that failed wait in the library; a second manager that
// finds a good plugin brings them out.
HOST_PROGRAM(FailsThenLoadsTheRecordingPlugin)
{
    report("firstUI", WebServicesUIManager::Initialize(false));
    report("first", WebServicesUIManager::GetInstance()->IsLoggedIn());
    WebServicesUIManager::Uninitialize();
    SSOClientPrivate::SetSSOClientConfigFileOverride(
        std::wstring(arguments[0].begin(), arguments[0].end()));
    report("second", WebServicesUIManager::Initialize(false));
    report("loggedIn", WebServicesUIManager::GetInstance()->IsLoggedIn());
}

/// An installation whose plugin is of the given kind, beside a second server
/// directory with the recording plugin for FailsThenLoadsTheRecordingPlugin.
class FailingInstallation : public Installation {
public:
    explicit FailingInstallation(std::string const& kind)
    {
        Complete();
        Compatibility(Rig::CompatibilityFor(kind));
        ServerApp("good").Plugin("RecordingPlugin", "good/plugin");
        Compatibility(Rig::CompatibilityFor("RecordingPlugin"), "good");
        ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/good"}})", "good");
    }

    Outcome RunBoth()
    {
        return Run("FailsThenLoadsTheRecordingPlugin", {Text("good/SSOClient.config")});
    }
};

std::string FactoryProcText(std::string const& plugin, std::string const& error)
{
    return "Failed to get factory proc from client plugin module " + plugin + ". Error: " + error;
}

std::vector<LogMessage> UpToFirst(std::vector<LogMessage> lines, std::string const& start)
{
    lines.erase(std::find_if(lines.begin(), lines.end(),
                             [&](LogMessage const& line) {
                                 return line.text.compare(0, start.size(), start) == 0;
                             }),
                lines.end());
    return lines;
}

} // namespace

TEST(PluginLoad, LogsTheWholeRoad)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.log, ElementsAreArray(Rig::LinesOfGoodLoad()));
    EXPECT_TRUE(outcome.console.empty());
    EXPECT_EQ(outcome["first"], true);
}

TEST(PluginLoad, TellsThePluginInOrder)
{
    Installation installation;
    installation.Complete().ClientConfig(
        R"({"ssoServer": {"searchPaths": "{root}/server", "exeName": "sub/Server.exe",
            "appName": "HxSSO.exe", "processName": "Prozeß", "serverName": "Dienst"}})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_THAT(
        outcome.calls,
        testing::ElementsAre(
            "GetSSOClientFactory()", "ISSOClientFactory::GetSSOServerManager()",
            R"(ISSOServerManager::SetSSOServerAppFiles("{root}/server", "{root}/server/sub/Server.exe"))",
            "ISSOClientFactory::GetSSOLogManager()",
            R"(ISSOLogManager::GetLogger("HxSSOServices"))",
            R"(ISSOServerManager::SetSSOServerProcessName("Prozeß"))",
            R"(ISSOServerManager::SetSSOServerName("Dienst"))",
            "ISSOClientFactory::GetSSOClientModule()",
            R"(ISSOClientModule::SetOpenSslModule("{root}/server/openssl/)" +
                ModuleName("openssl") + R"("))",
            "ISSOClientFactory::GetSSOClientModule()", "ISSOClientModule::Initialize(false, false)",
            "ISSOClientFactory::GetSSOClient()", "ISSOClient::IsLoggedIn()",
            "ISSOClientFactory::GetSSOClient()", "ISSOClient::IsLoggedIn()"));
}

TEST(PluginLoad, ShowsTheWholeLogWhenThePluginIsNotFound)
{
    Installation installation;
    installation.Complete().Remove("server/plugin");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], false);
    EXPECT_EQ(outcome["second"], false);
    // The error at once, then every line in order, the error last of all.
    std::vector<LogMessage> lines = UpToFirst(Rig::LinesOfGoodLoad(), "Dynamically");
    lines.push_back({Error, "Client plugin module not found: " + PluginFile});
    lines.insert(lines.begin(), lines.back());
    EXPECT_THAT(outcome.console, ElementsAreArray(Rig::AsConsoleLines(lines)));
}

TEST(PluginLoad, ShowsEachEarlierErrorTwiceWhenThePluginIsNotFound)
{
    Installation installation;
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    // No plugin fits, so the path is empty.
    std::string const notFound = "Client plugin module not found: ";
    EXPECT_EQ(outcome.OnConsole(notFound), 2);
    EXPECT_EQ(outcome.console.back(), notFound);
    EXPECT_EQ(outcome.OnConsole(Rig::Banner()), 1);
    std::string const noFile = "Failed to find compatible client plugin version for HxSSOServices "
                               "version 10.22.00.1800 since version compatibility file "
                               "SSOVersionCompatibility.config is not found";
    EXPECT_EQ(outcome.OnConsole(noFile), 2);
}

TEST(PluginLoad, CountsADirectoryAsThePluginFile)
{
    Installation installation;
    installation.Complete()
        .Remove("server/plugin")
        .Folder("server/plugin/" + ModuleName("RecordingPlugin"));
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], false);
    ASSERT_EQ(outcome.console.size(), outcome.console.empty() ? 1u : outcome.console.size());
    EXPECT_THAT(outcome.console.front(),
                HasSubstr("Failed to load client plugin module " + PluginFile + ". Error: "));
}

TEST(PluginLoad, SaysWhyAFileIsNoModule)
{
    Installation installation;
    installation.Complete()
        .Remove("server/plugin")
        .File("server/plugin/" + ModuleName("RecordingPlugin"), "this is no module");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], false);
    // The system's text for 193 has an insert and is not to be had this way.
    std::string const error = Rig::IsWindows() ? "" : PluginFile + ": file too short";
    EXPECT_EQ(outcome.console.front(),
              "Failed to load client plugin module " + PluginFile + ". Error: " + error);
}

TEST(PluginLoad, SaysWhichErrorAMissingDependencyGives)
{
    Installation installation;
    installation.Complete().Compatibility(Rig::CompatibilityFor("DependentPlugin"));
    installation.Plugin("DependentPlugin");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], false);
    std::string const plugin = "{root}/server/plugin/" + ModuleName("DependentPlugin");
    std::string const error = Rig::IsWindows()
                                  ? Rig::SystemErrorText(126)
                                  : "PluginDependency.so: cannot open shared object file: No such "
                                    "file or directory";
    EXPECT_THAT(
        outcome.console,
        ElementsAreArray(Rig::AsConsoleLines(
            {{Error, "Failed to load client plugin module " + plugin + ". Error: " + error}})));
}

TEST(PluginLoad, FindsDependenciesBesideThePlugin)
{
    FailingInstallation installation("DependentPlugin");
    installation.Plugin("DependentPlugin").Plugin("PluginDependency");
    Outcome const outcome = installation.RunBoth();
    EXPECT_EQ(outcome.LoggedAt(Info, "Successfully loaded client plugin module {root}/server/"
                                     "plugin/" +
                                         ModuleName("DependentPlugin")),
              1);
}

TEST(PluginLoad, KeepsTheLinesOfAFailedLoadForTheNextManager)
{
    FailingInstallation installation("RecordingPlugin");
    installation.Remove("server/plugin")
        .File("server/plugin/" + ModuleName("RecordingPlugin"), "this is no module");
    Outcome const outcome = installation.RunBoth();
    EXPECT_EQ(outcome["first"], false);
    EXPECT_EQ(outcome["loggedIn"], true);
    // Four calls without a plugin: two of Initialize, the question, and two of
    // Uninitialize, each with its banner; then the load that works.
    EXPECT_EQ(outcome.LoggedAt(Info, Rig::Banner()), 6);
    EXPECT_EQ(outcome.LoggedAt(Info, "Dynamically loading client plugin module " + PluginFile), 1);
    EXPECT_EQ(outcome.log.front(), (LogMessage{Info, Rig::Banner()}));
}

TEST(PluginLoad, RefusesThePlainNameOfTheProcedure)
{
    FailingInstallation installation("PlainNamePlugin");
    installation.Plugin("PlainNamePlugin");
    Outcome const outcome = installation.RunBoth();
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], false);
    std::string const plugin = "{root}/server/plugin/" + ModuleName("PlainNamePlugin");
    std::string const error = Rig::IsWindows()
                                  ? Rig::SystemErrorText(127)
                                  : plugin + ": undefined symbol: _Z19GetSSOClientFactoryv";
    EXPECT_EQ(outcome.LoggedAt(Error, FactoryProcText(plugin, error)), 1);
    EXPECT_EQ(outcome.LoggedAt(Info, "Successfully loaded client plugin module " + plugin), 1);
    EXPECT_EQ(outcome.LoggedAt(Info, "Getting factory proc from client plugin module " + plugin),
              1);
    EXPECT_EQ(outcome.Logged("Getting factory from client plugin module " + plugin), 0);
    // The module stays, and every later call logs the banner and nothing else.
    EXPECT_EQ(outcome.LoggedAt(Info, "Dynamically loading client plugin module " + plugin), 1);
    EXPECT_EQ(outcome.LoggedAt(Info, Rig::Banner()), 6);
}

TEST(PluginLoad, SaysNothingOfAnEmptyFactory)
{
    Installation installation;
    installation.Complete().Script("GetSSOClientFactory", R"({"empty": true})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], false);
    EXPECT_TRUE(outcome.console.empty());
    EXPECT_THAT(outcome.calls, testing::ElementsAre("GetSSOClientFactory()"));
}

TEST(PluginLoad, EndsAnEmptyFactoryWithTheGettingFactoryLine)
{
    FailingInstallation installation("DependentPlugin");
    installation.Plugin("DependentPlugin").Plugin("PluginDependency");
    Outcome const outcome = installation.RunBoth();
    std::string const plugin = "{root}/server/plugin/" + ModuleName("DependentPlugin");
    auto const getting =
        std::find(outcome.log.begin(), outcome.log.end(),
                  LogMessage{Info, "Getting factory from client plugin module " + plugin});
    ASSERT_NE(getting, outcome.log.end());
    EXPECT_EQ(*(getting + 1), (LogMessage{Info, Rig::Banner()}));
}

TEST(PluginLoad, GoesOnWithoutALogManager)
{
    Installation installation;
    installation.Complete().Script("ISSOClientFactory::GetSSOLogManager", R"({"empty": true})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome["first"], true);
    EXPECT_TRUE(outcome.log.empty());
    EXPECT_TRUE(outcome.console.empty());
    EXPECT_EQ(outcome.Called("ISSOClientModule::Initialize(false, false)"), 1);
}

TEST(PluginLoad, ShowsTheWholeLogWhenThePluginHasNoLogger)
{
    Installation installation;
    installation.Complete().Script("ISSOLogManager::GetLogger", R"({"empty": true})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome["first"], true);
    EXPECT_TRUE(outcome.log.empty());
    EXPECT_THAT(outcome.console, ElementsAreArray(Rig::AsConsoleLines(UpToFirst(
                                     Rig::LinesOfGoodLoad(), "Searching for openssl override"))));
}

TEST(PluginLoad, GoesOnWithoutAServerManager)
{
    Installation installation;
    installation.Complete().Script("ISSOClientFactory::GetSSOServerManager", R"({"empty": true})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome["first"], true);
    EXPECT_THAT(outcome.log, ElementsAreArray(Rig::LinesOfGoodLoad()));
    for (std::string const& call : outcome.calls)
        EXPECT_THAT(call, testing::Not(HasSubstr("ISSOServerManager::")));
}

TEST(PluginLoad, GoesOnWithoutAClientModule)
{
    Installation installation;
    installation.Complete().Script("ISSOClientFactory::GetSSOClientModule", R"({"empty": true})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome["first"], true);
    // The step of the load is silent; the getter of Initialize is not.
    EXPECT_EQ(outcome.LoggedAt(Error, "Failed to obtain ISSOClientModule. ISSOClientFactory::"
                                      "GetSSOClientModule returned null."),
              1);
    EXPECT_EQ(outcome.Logged("Searching for openssl override in client config file "
                             "{root}/app/SSOClient.config"),
              0);
}

TEST(PluginLoad, GivesThePluginEmptyTextsWhenThereIsNoServerApplication)
{
    Installation installation;
    installation.Complete()
        .Remove("server/HxSSO.exe")
        .ClientConfig(R"({"ssoServer": {"VersionCompatibilityConfigfilePath": "{root}/server"}})")
        .Compatibility(R"({"ssoClientPlugin": [{"module": ")" + ModuleName("RecordingPlugin") +
                       R"(", "modulePath": "{root}/server/plugin",
            "compatibleSsoServicesVersion": {"minVersion": "10"}}]})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome["first"], true);
    EXPECT_EQ(outcome.Called(R"(ISSOServerManager::SetSSOServerAppFiles("", ""))"), 1);
    EXPECT_EQ(outcome.Called(R"(ISSOClientModule::SetOpenSslModule(""))"), 1);
    EXPECT_EQ(outcome.LoggedAt(Error, "Openssl module not found: "), 1);
}

TEST(PluginLoad, GivesThePluginAnOpenSslPathThatPointsToNothing)
{
    Installation installation;
    installation.Complete().Remove("server/openssl");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome["first"], true);
    std::string const file = "{root}/server/openssl/" + ModuleName("openssl");
    EXPECT_EQ(outcome.log.back(), (LogMessage{Error, "Openssl module not found: " + file}));
    EXPECT_EQ(outcome.Called("ISSOClientModule::SetOpenSslModule(\"" + file + "\")"), 1);
}

TEST(PluginLoad, LoadsFromAFolderThatIsNoAscii)
{
    Installation installation("Bücher ☃");
    installation.Complete();
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], true);
    EXPECT_THAT(outcome.log, ElementsAreArray(Rig::LinesOfGoodLoad()));
}

namespace {

HOST_PROGRAM(KeepsAModuleDirectoryOfItsOwn)
{
    Rig::SetHostModuleDirectory("C:\\windows");
    report("before", Rig::HostModuleDirectory());
    report("initialize", WebServicesManager::Initialize(false));
    report("after", Rig::HostModuleDirectory());
}

} // namespace

TEST(PluginLoad, DropsTheModuleDirectoryOfTheHost)
{
    if (!Rig::IsWindows())
        GTEST_SKIP() << "no such directory on this system";
    Installation installation;
    Outcome const good = installation.Complete().Run("KeepsAModuleDirectoryOfItsOwn");
    EXPECT_EQ(good["before"], "C:\\windows");
    EXPECT_EQ(good["after"], "");
    installation.File("server/plugin/" + ModuleName("Broken"), "this is no module")
        .Compatibility(Rig::CompatibilityFor("Broken"));
    Outcome const bad = installation.Run("KeepsAModuleDirectoryOfItsOwn");
    EXPECT_EQ(bad["before"], "C:\\windows");
    EXPECT_EQ(bad["after"], "");
}

// That it may be a number, and what the plugin is asked afterwards, is with the faults.
class PluginThatThrows : public testing::TestWithParam<char const*> {};

TEST_P(PluginThatThrows, ReachesTheHostAndLeavesTheLibraryUsable)
{
    Installation installation;
    installation.Complete().Script(GetParam(), R"({"throw": "plugin says no"})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["initialize"], "threw plugin says no");
    // The count stays at 1 and there is no instance, so the second Initialize
    // only counts.
    EXPECT_TRUE(outcome["first"].isNull());
    EXPECT_EQ(outcome["first.call"], "returned");
}

INSTANTIATE_TEST_SUITE_P(
    PluginLoad, PluginThatThrows,
    testing::Values("GetSSOClientFactory", "ISSOClientFactory::GetSSOServerManager",
                    "ISSOServerManager::SetSSOServerAppFiles",
                    "ISSOClientFactory::GetSSOLogManager", "ISSOLogManager::GetLogger",
                    "ILogger::WriteLine", "ISSOServerManager::SetSSOServerProcessName",
                    "ISSOServerManager::SetSSOServerName", "ISSOClientFactory::GetSSOClientModule",
                    "ISSOClientModule::SetOpenSslModule", "ISSOClientModule::Initialize"),
    [](testing::TestParamInfo<char const*> const& info) {
        std::string name = info.param;
        name.erase(std::remove(name.begin(), name.end(), ':'), name.end());
        return name;
    });

class PluginThatCallsBack : public testing::TestWithParam<char const*> {};

TEST_P(PluginThatCallsBack, GetsItsAnswers)
{
    Installation installation;
    installation.Complete().Script(GetParam(), R"({"callBack": true})");
    Outcome const outcome = installation.Run("AsksTwiceWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.ending.timedOut);
    EXPECT_EQ(outcome["second"], true);
    // Before the factory is known the plugin's interfaces are not to be had.
    std::string const state = GetParam() == std::string("GetSSOClientFactory")
                                  ? ""
                                  : "ISSOClientPrivate::GetSessionState";
    EXPECT_GE(outcome.Called(R"(CalledBack("{root}/app", true, ")" + state + R"("))"), 1);
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
    // Every other line of the load is there, whatever the call back added.
    for (LogMessage const& line : Rig::LinesOfGoodLoad())
        EXPECT_GE(outcome.LoggedAt(line.level, line.text), 1) << line;
}

INSTANTIATE_TEST_SUITE_P(PluginLoad, PluginThatCallsBack,
                         testing::Values("GetSSOClientFactory",
                                         "ISSOServerManager::SetSSOServerAppFiles",
                                         "ISSOLogManager::GetLogger", "ILogger::WriteLine",
                                         "ISSOServerManager::SetSSOServerName",
                                         "ISSOClientModule::SetOpenSslModule",
                                         "ISSOClient::IsLoggedIn"),
                         [](testing::TestParamInfo<char const*> const& info) {
                             std::string name = info.param;
                             name.erase(std::remove(name.begin(), name.end(), ':'), name.end());
                             return name;
                         });
