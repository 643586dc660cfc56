#include <algorithm>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Questions.h"

using namespace Rig;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

namespace {

std::string const LibConfig = "{root}/lib/SSOClient.config";
std::string const OtherConfig = "{root}/other/Other.config";
std::string const RequiresObject =
    "Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue";
std::string const RequiresText = "Json::LogicError: Type is not convertible to string";

std::string Server(std::string const& members) { return R"({"ssoServer": {)" + members + "}}"; }

std::vector<LogMessage> First(std::size_t count, std::vector<LogMessage> lines)
{
    lines.resize(std::min(count, lines.size()));
    return lines;
}

std::string Nested(int depth)
{
    return std::string(static_cast<std::size_t>(depth), '[') +
           std::string(static_cast<std::size_t>(depth), ']');
}

} // namespace

TEST(ClientConfig, LiesBesideTheExecutableBeforeTheLibrary)
{
    Installation installation;
    installation.ClientConfig("{}").ClientConfig("{}", "lib");
    Asked const both =
        Ask(installation, {"GetSSOClientConfigFile", "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(both.answers, ElementsAre(AppConfig, AppConfig));
    EXPECT_THAT(both.lines, ElementsAre(SearchesConfig(), FindsConfig()));

    installation.Remove("app/SSOClient.config");
    Asked const library = Ask(installation, {"GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(library.answers, ElementsAre(LibConfig));
    EXPECT_THAT(library.lines, ElementsAre(SearchesConfig(), FindsConfig(LibConfig)));
}

TEST(ClientConfig, IsSearchedOnceWhereExecutableAndLibraryShareAFolder)
{
    Installation installation;
    installation.LibraryBesideExecutable().ServerApp("app");
    Asked const asked = Ask(installation, {"GetSSOClientConfigFile", "Rescue"});
    // A warning, so not for the console.
    EXPECT_TRUE(asked.outcome.console.empty());
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig("{root}/app"), MissesConfig("{root}/app")));
}

TEST(ClientConfig, MayBeMissing)
{
    Installation installation;
    Asked const asked = Ask(installation, {"GetSSOClientConfigFile", "GetSSOClientConfigFile",
                                           "GetSSOServerAppPath", "GetSSOClientConfigFile",
                                           "SetSSOClientConfigFileOverride=late",
                                           "GetSSOClientConfigFileOverride", "Rescue"});
    EXPECT_THAT(asked.answers,
                ElementsAre("SSOClient.config", "SSOClient.config", "", "SSOClient.config", ""));
    // One search, nothing loaded, no registry; it counts as loaded all the same.
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), MissesConfig(), SearchesServer(), MissesServer(),
                            RefusesOverride("late", "SSOClient.config")));
    EXPECT_EQ(asked.outcome.Called("ISSOServerManager::SetSSOServerProcessName("
                                   "\"Halvorix.SSO.DefaultServer-v2\")"),
              1);
    EXPECT_EQ(asked.outcome.Called("ISSOServerManager::SetSSOServerName("
                                   "\"Halvorix.SSO.DefaultServer-v2\")"),
              1);
    for (LogMessage const& line : asked.outcome.log)
        EXPECT_THAT(line.text, Not(testing::HasSubstr("openssl override")));
}

TEST(ClientConfig, IsReadFromTheCurrentDirectoryAfterTheSearchMissed)
{
    Installation installation;
    installation.ClientConfig(Server(R"("appName": "Here.exe")"), "work");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), MissesConfig(), LoadsConfig("SSOClient.config"),
                            HasNoLocation(), SearchesServer("Here.exe"), MissesServer("Here.exe")));
}

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

TEST(ClientConfig, IsNotSearchedWhenTheOverrideIsMissing)
{
    Installation installation;
    installation.ClientConfig(Server(R"("appName": "Wrong.exe")"));
    Asked const asked =
        Ask(installation, {"SetSSOClientConfigFileOverride=" + OtherConfig, "GetSSOServerAppPath",
                           "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre("", OtherConfig));
    EXPECT_THAT(asked.lines, ElementsAre(SetsOverride(OtherConfig), MissesOverride(OtherConfig),
                                         SearchesServer(), MissesServer()));
}

TEST(ClientConfig, TakesAnOverrideAfterItWasOnlyFound)
{
    Installation installation;
    installation.ClientConfig("{}").File("other/Other.config", "{}");
    Asked const asked = Ask(installation, {"GetSSOClientConfigFile",
                                           "SetSSOClientConfigFileOverride=" + OtherConfig,
                                           "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre(AppConfig, OtherConfig));
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), SetsOverride(OtherConfig),
                                         FindsOverride(OtherConfig)));
}

TEST(ClientConfig, TakesTheLastOfSeveralOverrides)
{
    Installation installation;
    installation.File("other/Other.config", "{}");
    Asked const asked =
        Ask(installation,
            {"SetSSOClientConfigFileOverride=first", "SetSSOClientConfigFileOverride=second",
             "GetSSOClientConfigFileOverride", "GetSSOClientConfigFile",
             "SetSSOClientConfigFileOverride=" + OtherConfig, "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre("second", "second", OtherConfig));
    EXPECT_THAT(asked.lines,
                ElementsAre(SetsOverride("first"), SetsOverride("second"), MissesOverride("second"),
                            SetsOverride(OtherConfig), FindsOverride(OtherConfig)));
}

TEST(ClientConfig, IsSearchedAgainAfterAnEmptyOverride)
{
    Installation installation;
    installation.ClientConfig("{}");
    Asked const asked =
        Ask(installation, {"SetSSOClientConfigFileOverride=first", "GetSSOClientConfigFile",
                           "SetSSOClientConfigFileOverride=", "GetSSOClientConfigFileOverride",
                           "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre("first", "", AppConfig));
    EXPECT_THAT(asked.lines, ElementsAre(SetsOverride("first"), MissesOverride("first"),
                                         SetsOverride(""), SearchesConfig(), FindsConfig()));
}

TEST(ClientConfig, TakesAnOverrideAsItIsSpelled)
{
    Installation installation;
    installation.ClientConfig("{}").File("other/Other.config", "{}");
    // A variable is a name like any other, a relative path is one of the
    // current directory, and nothing is made shorter.
    Asked const variable =
        Ask(installation, {"SetSSOClientConfigFileOverride=%ExePath%/SSOClient.config",
                           "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(variable.answers, ElementsAre("%ExePath%/SSOClient.config"));
    EXPECT_THAT(variable.lines, ElementsAre(SetsOverride("%ExePath%/SSOClient.config"),
                                            MissesOverride("%ExePath%/SSOClient.config")));
    Asked const relative =
        Ask(installation, {"SetSSOClientConfigFileOverride=..//other/Other.config",
                           "GetSSOServerAppPath", "GetSSOClientConfigFile", "Rescue"});
    EXPECT_THAT(relative.answers, ElementsAre("", "..//other/Other.config"));
    EXPECT_THAT(relative.lines, ElementsAre(SetsOverride("..//other/Other.config"),
                                            FindsOverride("..//other/Other.config"),
                                            LoadsConfig("..//other/Other.config"), HasNoLocation(),
                                            SearchesServer(), MissesServer()));
    if (IsWindows()) {
        std::string const file = "..\\other\\\\Other.config";
        Asked const backslashes = Ask(installation, {"SetSSOClientConfigFileOverride=" + file,
                                                     "GetSSOClientConfigFile", "Rescue"});
        EXPECT_THAT(backslashes.answers, ElementsAre(file));
        EXPECT_THAT(backslashes.lines, ElementsAre(SetsOverride(file), FindsOverride(file)));
    }
}

TEST(ClientConfig, RefusesAnOverrideOnceItIsRead)
{
    struct {
        char const* content;
        LogMessage read;
    } const cases[] = {{"{}", HasNoLocation()}, {"{", RefusesConfig()}};
    for (auto const& [content, read] : cases) {
        SCOPED_TRACE(content);
        Installation installation;
        installation.ClientConfig(content);
        Asked const asked = Ask(
            installation, {"SetSSOClientConfigFileOverride=" + AppConfig, "GetSSOServerAppPath",
                           "SetSSOClientConfigFileOverride=late", "GetSSOClientConfigFileOverride",
                           "SetSSOClientConfigFileOverride=later", "GetSSOClientConfigFile",
                           "GetSSOServerAppExeDirPath", "Rescue"});
        EXPECT_THAT(asked.answers, ElementsAre("", AppConfig, AppConfig, ""));
        EXPECT_THAT(asked.lines, ElementsAre(SetsOverride(AppConfig), FindsOverride(AppConfig),
                                             LoadsConfig(), read, SearchesServer(), MissesServer(),
                                             RefusesOverride("late", AppConfig),
                                             RefusesOverride("later", AppConfig), SearchesServer(),
                                             MissesServer()));
    }
}

TEST(ClientConfig, IsReadByEachQuestionThatNeedsIt)
{
    for (char const* const question :
         {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath", "GetSSOClientPluginModule",
          "GetOpenSslModule", "ExpandPathVariables=%SSOServerAppExeFile%"}) {
        SCOPED_TRACE(question);
        Installation installation;
        installation.ClientConfig("{}");
        Asked const asked = Ask(installation, {question, "Rescue"});
        ASSERT_GE(asked.lines.size(), 4u);
        EXPECT_EQ(asked.lines[2], LoadsConfig());
        EXPECT_EQ(asked.outcome.LoggedAt(Info, LoadsConfig().text), 1);
    }
    for (char const* const question :
         {"GetSSOClientConfigFile", "GetSSOClientConfigFileOverride",
          "ExpandPathVariables=%ExePath%%SSOServicesModulePath%", "GetModuleDirPath=x",
          "GetLogFile", "SetSSOClientConfigFileOverride=x"}) {
        SCOPED_TRACE(question);
        Installation installation;
        installation.ClientConfig("{}");
        Asked const asked = Ask(installation, {question, "Rescue"});
        EXPECT_THAT(asked.lines, Not(Contains(LoadsConfig())));
        EXPECT_THAT(asked.lines, Not(Contains(SearchesServer())));
    }
}

TEST(ClientConfig, AcceptsWhateverIsAnObject)
{
    for (std::string const& content : std::initializer_list<std::string>{
             "{}", "null", R"({"ssoServer": {}, "openssl": {}})",
             R"({"ssoServer": null, "openssl": null})",
             R"({"ssoServer": {"appName": null, "searchPaths": null, "more": {}},
                 "openssl": {"moduleName": null, "more": [1]}, "more": [1, {"a": 2}]})",
             "// comment\n{ /* another */ } // and\n", "{\r\n\"ssoServer\":\r\n{}\r\n}\r\n",
             "{} what follows", R"({"ssoServer": {"AppName": "x", "APPNAME": "y"}})",
             R"({"ssoServer": 5, "ssoServer": {}})", R"({"more": )" + Nested(999) + "}"}) {
        SCOPED_TRACE(content.substr(0, 100));
        Installation installation;
        installation.ClientConfig(content);
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                             HasNoLocation(), SearchesServer(), MissesServer()));
        EXPECT_EQ(asked.outcome.LoggedAt(Info, MissesOpenSslOverride().text), 1);
    }
}

TEST(ClientConfig, RefusesWhatIsNoJson)
{
    for (std::string const& content : std::initializer_list<std::string>{
             "", " \r\n", "{", "not JSON", R"({"ssoServer": })", R"({'ssoServer': {}})",
             "\xEF\xBB\xBF{}", "// nothing but a comment\n", R"({"ssoServer": {"appName": "x})"}) {
        SCOPED_TRACE(content);
        Installation installation;
        installation.ClientConfig(content);
        Asked const asked =
            Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                             RefusesConfig(), SearchesServer(), MissesServer(),
                                             SearchesServer(), MissesServer()));
        EXPECT_EQ(asked.outcome.Logged(SearchesOpenSslOverride().text), 0);
        EXPECT_EQ(asked.outcome.Called("ISSOServerManager::SetSSOServerName("
                                       "\"Halvorix.SSO.DefaultServer-v2\")"),
                  1);
    }
}

TEST(ClientConfig, RefusesAFolder)
{
    Installation installation;
    installation.Folder("app/SSOClient.config").ClientConfig("{}", "lib");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                         RefusesConfig(), SearchesServer(), MissesServer()));
    Asked const overridden = Ask(installation, {"SetSSOClientConfigFileOverride={root}/work",
                                                "GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(overridden.lines,
                ElementsAre(SetsOverride("{root}/work"), FindsOverride("{root}/work"),
                            LoadsConfig("{root}/work"), RefusesConfig("{root}/work"),
                            SearchesServer(), MissesServer()));
}

TEST(ClientConfig, HasADefaultForEachMember)
{
    std::string const server = "Halvorix.SSO.DefaultServer-v2";
    struct {
        std::string members;
        std::string appName;
        std::string exeName;
        std::string processName;
        std::string serverName;
    } const cases[] = {
        {"", "HxSSO.exe", "HxSSO.exe", server, server},
        {R"(, "appName": "A.exe")", "A.exe", "A.exe", server, server},
        {R"(, "exeName": "E.exe")", "E.exe", "E.exe", server, server},
        {R"(, "appName": "A.exe", "exeName": "E.exe")", "A.exe", "E.exe", server, server},
        {R"(, "appName": "", "exeName": "")", "HxSSO.exe", "HxSSO.exe", server, server},
        {R"(, "processName": "P")", "HxSSO.exe", "HxSSO.exe", "P", server},
        {R"(, "serverName": "S")", "HxSSO.exe", "HxSSO.exe", "S", "S"},
        {R"(, "processName": "P", "serverName": "S")", "HxSSO.exe", "HxSSO.exe", "P", "S"},
        {R"(, "bundleId": "B")", "HxSSO.exe", "HxSSO.exe", server, server},
        // Numbers and booleans become text.
        {R"(, "appName": 5, "exeName": true, "processName": false, "serverName": -7)", "5", "true",
         "false", "-7"},
        {R"(, "appName": 1.5)", "1.5", "1.5", server, server},
        {R"(, "appName": null, "exeName": "E.exe", "serverName": null)", "E.exe", "E.exe", server,
         server},
        {R"(, "appName": "Dienst ü.exe", "processName": "Prozeß", "serverName": "\u30b5ーバー")",
         "Dienst ü.exe", "Dienst ü.exe", "Prozeß", "サーバー"},
        // What is no UTF-8 reads as empty.
        {", \"appName\": \"A\xFF.exe\"", "HxSSO.exe", "HxSSO.exe", server, server},
    };
    for (auto const& expected : cases) {
        SCOPED_TRACE(expected.members);
        Installation installation;
        installation.ClientConfig(Server(R"("searchPaths": "{root}/server")" + expected.members))
            .File("server/" + expected.appName, "placeholder");
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.answers, ElementsAre("{root}/server"));
        EXPECT_THAT(asked.lines,
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                                SearchesServer(expected.appName, LibraryFirst + "\n{root}/server"),
                                FindsServer("{root}/server/" + expected.exeName)));
        EXPECT_EQ(
            asked.outcome.Called(
                "ISSOServerManager::SetSSOServerAppFiles(\"{root}/server\", \"{root}/server/" +
                expected.exeName + "\")"),
            1);
        EXPECT_EQ(asked.outcome.Called("ISSOServerManager::SetSSOServerProcessName(\"" +
                                       expected.processName + "\")"),
                  1);
        EXPECT_EQ(asked.outcome.Called("ISSOServerManager::SetSSOServerName(\"" +
                                       expected.serverName + "\")"),
                  1);
    }
}

TEST(ClientConfig, MayLieInAFolderThatIsNoAscii)
{
    Installation installation("Bücher ☃");
    installation.File("другой/Ü.config", Server(R"("appName": "Ä.exe")"));
    std::string const file = "{root}/другой/Ü.config";
    Asked const asked =
        Ask(installation, {"SetSSOClientConfigFileOverride=" + file, "GetSSOClientConfigFile",
                           "GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre(file, ""));
    EXPECT_THAT(asked.lines,
                ElementsAre(SetsOverride(file), FindsOverride(file), LoadsConfig(file),
                            HasNoLocation(), SearchesServer("Ä.exe"), MissesServer("Ä.exe")));
}

TEST(ClientConfig, ThrowsWhatTheJsonLibraryThrowsForAWrongType)
{
    struct {
        std::string content;
        std::string thrown;
    } cases[] = {
        {"[]", RequiresObject},
        {"[{}]", RequiresObject},
        {"\"text\"", RequiresObject},
        {"5", RequiresObject},
        {"true", RequiresObject},
        {R"({"ssoServer": []})", RequiresObject},
        {R"({"ssoServer": ["x"]})", RequiresObject},
        {R"({"ssoServer": "x"})", RequiresObject},
        {R"({"ssoServer": ""})", RequiresObject},
        {R"({"ssoServer": 0})", RequiresObject},
        {R"({"ssoServer": false})", RequiresObject},
        {Server(R"("appName": ["x"])"), RequiresText},
        {Server(R"("appName": [])"), RequiresText},
        {Server(R"("appName": {})"), RequiresText},
        {Server(R"("exeName": ["x"])"), RequiresText},
        {Server(R"("processName": {"x": 1})"), RequiresText},
        {Server(R"("serverName": [])"), RequiresText},
        {Server(R"("bundleId": [])"), RequiresText},
        {Server(R"("VersionCompatibilityConfigfilePath": [])"), RequiresText},
        {Server(R"("searchPaths": ["{root}/server"])"), RequiresText},
        {Server(R"("searchPaths": {})"), RequiresText},
    };
    for (auto const& [content, thrown] : cases) {
        SCOPED_TRACE(content);
        Installation installation;
        installation.ClientConfig(content);
        Asked const asked =
            Ask(installation,
                {"GetSSOServerAppPath", "GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                 "GetOpenSslModule", "SetSSOClientConfigFileOverride=late",
                 "GetSSOClientConfigFileOverride", "GetSSOClientConfigFile", "Rescue"});
        // Tried once, then fields stay blank, without defaults.
        EXPECT_THAT(asked.answers, ElementsAre(thrown, "", "", "", "", AppConfig));
        EXPECT_THAT(First(5, asked.lines),
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), SearchesServer(""),
                                SearchesServer("")));
        EXPECT_THAT(asked.lines, Contains(RefusesOverride("late", AppConfig)));
        EXPECT_THAT(asked.lines, Not(Contains(MissesServer(""))));
        EXPECT_THAT(asked.lines, Not(Contains(HasNoLocation())));
        EXPECT_THAT(asked.lines, Not(Contains(SearchesOpenSslOverride())));
        EXPECT_EQ(asked.outcome.LoggedAt(Info, LoadsConfig().text), 1);
        EXPECT_EQ(asked.outcome.Called(R"(ISSOServerManager::SetSSOServerProcessName(""))"), 1);
        EXPECT_EQ(asked.outcome.Called(R"(ISSOServerManager::SetSSOServerName(""))"), 1);
    }
}

TEST(ClientConfig, KeepsWhatItReadBeforeAnException)
{
    struct {
        std::string openssl;
        std::string thrown;
    } const cases[] = {{"5", RequiresObject},
                       {"[]", RequiresObject},
                       {"\"x\"", RequiresObject},
                       {R"({"moduleName": []})", RequiresText},
                       {R"({"moduleName": "m", "modulePath": {"x": 1}})", RequiresText}};
    for (auto const& [openssl, thrown] : cases) {
        SCOPED_TRACE(openssl);
        Installation installation;
        installation.ServerApp().ClientConfig(R"({"ssoServer": {"appName": "HxSSO.exe",
            "searchPaths": "{root}/server"}, "openssl": )" +
                                              openssl + "}");
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppPath",
                                               "ExpandPathVariables=%SSOServerAppExeFile%",
                                               "GetOpenSslModule", "Rescue"});
        // No default for the executable's name either.
        EXPECT_THAT(asked.answers, ElementsAre(thrown, "{root}/server", "{root}/server", ""));
        EXPECT_THAT(First(6, asked.lines),
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                                SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/server"),
                                FindsServer("{root}/server")));
        EXPECT_THAT(asked.lines, Not(Contains(SearchesOpenSslOverride())));
    }
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

TEST(ClientConfig, MustNotBeNestedDeeperThanAThousandTimes)
{
    Installation installation;
    installation.ClientConfig(R"({"more": )" + Nested(1000) + "}");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.answers,
                ElementsAre("Json::Exception: Exceeded stackLimit in readValue().", ""));
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), SearchesServer("")));
}
