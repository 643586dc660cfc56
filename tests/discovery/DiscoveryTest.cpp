// What of the searches takes the library itself, in a process of its own: the exported
// functions, exceptions that leave them, what the load hands to the plugin. What files alone
// decide is asked over the fake system, in the tests that are named after its parts.

#include <fstream>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Questions.h"

using namespace Rig;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string const OtherConfig = "{root}/other/Other.config";
std::string const CompatibilityName = "server/SSOVersionCompatibility.config";

std::string Server(std::string const& members) { return R"({"ssoServer": {)" + members + "}}"; }

} // namespace

TEST(ClientConfig, IsSearchedInTheSupportFilePaths)
{
    Installation installation;
    installation.ClientConfig("{}", "third").ServerApp("lib");
    Asked const asked =
        Ask(installation,
            {"SetSupportFileSearchPaths={root}/second//;;%EXEPATH%/../third;{root}/app;%Unknown%/x",
             "GetSSOClientConfigFile"});
    EXPECT_THAT(asked.answers, ElementsAre("{root}/app/../third/SSOClient.config"));
    // No entry between the two separators, none twice. The call itself was a
    // load, which found no plugin and put the log out.
    EXPECT_THAT(asked.outcome.console,
                testing::IsSupersetOf({"Searching for client config file SSOClient.config "
                                       "in the following paths:",
                                       "{root}/app/../third", "%Unknown%/x"}));
    std::string console;
    for (std::string const& line : asked.outcome.console)
        console += line + "\n";
    std::string const list = ExecutableFirst + "\n{root}/second\n{root}/app/../third\n%Unknown%/x";
    EXPECT_THAT(console, testing::HasSubstr(
                             SearchesConfig(list).text + "\n" +
                             FindsConfig("{root}/app/../third/SSOClient.config").text + "\n"));
}

TEST(ClientConfig, TakesNoSupportFilePathsAfterItsSearch)
{
    Installation installation;
    installation.Complete().Remove("app/SSOClient.config").ClientConfig("{}", "third");
    installation.ServerApp("lib").Compatibility(CompatibilityFor("RecordingPlugin"), "lib");
    installation.Plugin("RecordingPlugin", "lib/plugin");
    Asked const asked =
        Ask(installation, {"GetSSOClientConfigFile", "SetSupportFileSearchPaths={root}/third",
                           "GetSSOClientConfigFile"});
    EXPECT_THAT(asked.answers, ElementsAre("SSOClient.config", "SSOClient.config"));
    EXPECT_EQ(asked.outcome.LoggedAt(Info, SearchesConfig().text), 1);
    EXPECT_EQ(asked.outcome.Called("ISSOClientModule::SetSupportFileSearchPaths(\"{root}/third\")"),
              1);
}

TEST(ClientConfig, ReadsAnEmptySupportFilePathAsTheCurrentDirectory)
{
    Installation installation;
    installation.ClientConfig("{}", "work").ServerApp("lib");
    installation.Compatibility(CompatibilityFor("RecordingPlugin"), "lib");
    installation.Plugin("RecordingPlugin", "lib/plugin");
    Asked const asked =
        Ask(installation, {"SetSupportFileSearchPaths={root}/x;", "GetSSOClientConfigFile"});
    EXPECT_THAT(asked.answers, ElementsAre("SSOClient.config"));
    EXPECT_EQ(asked.outcome.LoggedAt(Info, SearchesConfig(ExecutableFirst + "\n{root}/x\n").text),
              1);
    EXPECT_EQ(asked.outcome.LoggedAt(Info, FindsConfig("SSOClient.config").text), 1);
}

TEST(ClientConfig, IsReplacedByAnOverrideThatIsThere)
{
    Installation installation;
    installation.ClientConfig(Server(R"("appName": "Wrong.exe")"))
        .File("other/Other.config", Server(R"("appName": "Right.exe")"));
    Asked const asked =
        Ask(installation,
            {"SetSSOClientConfigFileOverride=" + OtherConfig, "GetSSOClientConfigFileOverride",
             "GetSSOClientConfigFile", "GetSSOServerAppPath", "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre(OtherConfig, OtherConfig, "", OtherConfig));
    EXPECT_THAT(asked.lines, ElementsAre(SetsOverride(OtherConfig), FindsOverride(OtherConfig),
                                         LoadsConfig(OtherConfig), HasNoLocation(),
                                         SearchesServer("Right.exe"), MissesServer("Right.exe")));
}

TEST(ClientConfig, IsNotReadByQuestionsThatDoNotNeedIt)
{
    Installation installation;
    installation.ClientConfig("{}");
    Asked const asked = Ask(
        installation, {"GetSSOClientConfigFile", "GetSSOClientConfigFileOverride",
                       "ExpandPathVariables=%ExePath%%SSOServicesModulePath%", "GetModuleDirPath=x",
                       "GetLogFile", "SetSSOClientConfigFileOverride=x", "Rescue"});
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), SetsOverride("x")));
}

TEST(ClientConfig, ThrowsOutOfEachQuestionThatReadsIt)
{
    for (char const* const question :
         {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath", "GetSSOClientPluginModule",
          "GetOpenSslModule", "ExpandPathVariables=%SSOServerAppPath%", "GetSessionState",
          "SetSupportFileSearchPaths=x"}) {
        SCOPED_TRACE(question);
        Installation installation;
        installation.Complete().ClientConfig("[]");
        Asked const asked = Ask(installation, {question, "GetSSOClientConfigFile"});
        EXPECT_THAT(asked.answers, ElementsAre(RequiresObject, AppConfig));
    }
}

TEST(ClientConfig, LeavesTheLibraryUsableAfterAnExceptionOfTheLoad)
{
    Installation installation;
    installation.Complete().ClientConfig("[]");
    installation.File("good.config",
                      Server(R"("searchPaths": ")" + installation.Text("server") + R"(")"));
    // The load is not tried again, no lock is held, and a new manager reads anew.
    Asked const asked =
        Ask(installation, {"GetSessionState", "GetSessionState", "Threaded", "Release",
                           "Copy=good.config>app/SSOClient.config", "GetSSOServerAppPath", "Load"});
    EXPECT_THAT(asked.answers, ElementsAre(RequiresObject, "", "", "{root}/server"));
}

TEST(ServerApp, HandsOnWhatTheFileSystemThrows)
{
    if (IsWindows())
        GTEST_SKIP() << "a name too long is a missing file on Windows";
    Installation installation;
    std::string const name(300, 'a');
    installation.ClientConfig(
        Server(R"("searchPaths": "{root}/server", "appName": ")" + name + "\""));
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                                           "ExpandPathVariables=%SSOServerAppPath%",
                                           "GetSessionState", "GetSSOClientConfigFile"});
    ASSERT_EQ(asked.answers.size(), 5u);
    for (int const question : {0, 1, 2, 3})
        EXPECT_THAT(asked.answers[static_cast<std::size_t>(question)],
                    testing::AllOf(testing::StartsWith("std::exception: boost::filesystem::status"),
                                   HasSubstr("File name too long")));
    EXPECT_EQ(asked.answers[4], AppConfig);
}

TEST(ModuleChoice, NamesThePluginWithoutLoadingIt)
{
    Installation installation;
    installation.Complete().Remove("server/plugin");
    std::string const plugin = "{root}/server/plugin/" + ModuleName("RecordingPlugin");
    Asked const asked = Ask(installation, {"GetSSOClientPluginModule", "GetSSOClientPluginModule",
                                           "Copy=rescue>server/plugin", "Load"});
    EXPECT_THAT(asked.answers, ElementsAre(plugin, plugin));
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                            SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/server"),
                            FindsServer("{root}/server/HxSSO.exe"), SearchesCompatibility(),
                            FindsCompatibility(), SearchesModule("client plugin"),
                            FindsPlugin(plugin)));
}

TEST(ModuleChoice, NamesTheOpenSslModule)
{
    Installation installation;
    installation.Complete();
    std::string const module = "{root}/server/openssl/" + ModuleName("openssl");
    Asked const asked = Ask(installation, {"GetOpenSslModule", "GetOpenSslModule", "Load"});
    EXPECT_THAT(asked.answers, ElementsAre(module, module));
    // The override is asked for before anything else is searched.
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                            SearchesOpenSslOverride(), MissesOpenSslOverride(),
                            SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/server"),
                            FindsServer("{root}/server/HxSSO.exe"), SearchesCompatibility(),
                            FindsCompatibility(), SearchesModule("openssl"), FindsOpenSsl(module)));
}

TEST(ModuleChoice, TellsThePluginOfAnOpenSslOverrideThatIsNotThere)
{
    Installation installation;
    installation.Complete().ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"},
        "openssl": {"moduleName": "Bücher ☃.dll", "modulePath": "%ExePath%\\sub//"}})");
    std::string const module = "{root}/app/sub/Bücher ☃.dll";
    Asked const asked = Ask(installation, {"GetOpenSslModule", "Load"});
    EXPECT_THAT(asked.answers, ElementsAre(module));
    EXPECT_EQ(asked.outcome.Called("ISSOClientModule::SetOpenSslModule(\"" + module + "\")"), 1);
    EXPECT_EQ(asked.outcome.LoggedAt(Error, "Openssl module not found: " + module), 1);
}

TEST(ModuleChoice, ReadsThePathForItsKindOfProcess)
{
    Installation installation;
    installation.ClientConfig(Server(R"("searchPaths": "{root}/server")")).ServerApp();
    // Not by the rig, which means this process's path by the first.
    std::ofstream(installation.Path(CompatibilityName))
        << R"({"ssoClientPlugin": [{"module": "m", "modulePath": "%ExePath%/64",
            "modulePathWoW64": "%ExePath%/32", "version": "1",
            "compatibleSsoServicesVersion": {"minVersion": "10"}}]})";
    EXPECT_THAT(Ask(installation, {"GetSSOClientPluginModule"}).answers,
                ElementsAre(IsWoW64() ? "{root}/app/32/m" : "{root}/app/64/m"));
}

TEST(ModuleChoice, IsMadeAnewAfterAnExceptionAndTheLoadIsNot)
{
    Installation installation;
    installation.ClientConfig(Server(R"("searchPaths": "{root}/server")"))
        .ServerApp()
        .Compatibility(R"({"ssoClientPlugin": [5]})")
        .File("good.config", R"({"ssoClientPlugin": [{"module": "m", "modulePath": "x",
            "compatibleSsoServicesVersion": {"minVersion": "1"}}]})");
    Asked const asked =
        Ask(installation, {"GetSSOClientPluginModule", "GetSSOClientPluginModule",
                           "GetSessionState", "Threaded", "Copy=good.config>" + CompatibilityName,
                           "GetSSOClientPluginModule", "Release", "Rescue=" + CompatibilityName});
    EXPECT_THAT(asked.answers,
                ElementsAre(RequiresObject, RequiresObject, RequiresObject, "", "x/m"));
}
