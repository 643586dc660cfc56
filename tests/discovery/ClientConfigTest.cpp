#include <algorithm>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Place.h"

using namespace Rig;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

std::string const LibConfig = "{root}/lib/SSOClient.config";
std::string const OtherConfig = "{root}/other/Other.config";
std::string const DefaultServer = "Halvorix.SSO.DefaultServer-v2";

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
    Place place;
    place.ClientConfig("{}").ClientConfig("{}", "lib");
    Found const both = Ask(place, {"GetSSOClientConfigFile", "GetSSOClientConfigFile"});
    EXPECT_THAT(both.answers, ElementsAre(AppConfig, AppConfig));
    EXPECT_THAT(both.lines, ElementsAre(SearchesConfig(), FindsConfig()));

    place.Remove("app/SSOClient.config");
    Found const library = Ask(place, {"GetSSOClientConfigFile"});
    EXPECT_THAT(library.answers, ElementsAre(LibConfig));
    EXPECT_THAT(library.lines, ElementsAre(SearchesConfig(), FindsConfig(LibConfig)));
}

TEST(ClientConfig, IsSearchedOnceWhereExecutableAndLibraryShareAFolder)
{
    Place place;
    place.LibraryBesideExecutable().ServerApp("app");
    Found const asked = Ask(place, {"GetSSOClientConfigFile"});
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig("{root}/app"), MissesConfig("{root}/app")));
}

TEST(ClientConfig, MayBeMissing)
{
    Place place;
    Found const asked = Ask(
        place, {"GetSSOClientConfigFile", "GetSSOClientConfigFile", "GetSSOServerAppPath",
                "GetSSOClientConfigFile", "SetSSOClientConfigFileOverride=late",
                "GetSSOClientConfigFileOverride", "GetSSOServerProcessName", "GetSSOServerName"});
    EXPECT_THAT(asked.answers, ElementsAre("SSOClient.config", "SSOClient.config", "",
                                           "SSOClient.config", "", DefaultServer, DefaultServer));
    // One search, nothing loaded, no registry; it counts as loaded all the same.
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), MissesConfig(), SearchesServer(), MissesServer(),
                            RefusesOverride("late", "SSOClient.config")));
    for (LogMessage const& line : Ask(place, {"GetOpenSslModule"}).lines)
        EXPECT_THAT(line.text, Not(testing::HasSubstr("openssl override")));
}

TEST(ClientConfig, IsReadFromTheCurrentDirectoryAfterTheSearchMissed)
{
    Place place;
    place.ClientConfig(Server(R"("appName": "Here.exe")"), "work");
    Found const asked = Ask(place, {"GetSSOServerAppPath"});
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), MissesConfig(), LoadsConfig("SSOClient.config"),
                            HasNoLocation(), SearchesServer("Here.exe"), MissesServer("Here.exe")));
}

TEST(ClientConfig, IsNotSearchedWhenTheOverrideIsMissing)
{
    Place place;
    place.ClientConfig(Server(R"("appName": "Wrong.exe")"));
    Found const asked = Ask(place, {"SetSSOClientConfigFileOverride=" + OtherConfig,
                                    "GetSSOServerAppPath", "GetSSOClientConfigFile"});
    EXPECT_THAT(asked.answers, ElementsAre("", OtherConfig));
    EXPECT_THAT(asked.lines, ElementsAre(SetsOverride(OtherConfig), MissesOverride(OtherConfig),
                                         SearchesServer(), MissesServer()));
}

TEST(ClientConfig, TakesAnOverrideAfterItWasOnlyFound)
{
    Place place;
    place.ClientConfig("{}").File("other/Other.config", "{}");
    Found const asked =
        Ask(place, {"GetSSOClientConfigFile", "SetSSOClientConfigFileOverride=" + OtherConfig,
                    "GetSSOClientConfigFile"});
    EXPECT_THAT(asked.answers, ElementsAre(AppConfig, OtherConfig));
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), SetsOverride(OtherConfig),
                                         FindsOverride(OtherConfig)));
}

TEST(ClientConfig, TakesTheLastOfSeveralOverrides)
{
    Place place;
    place.File("other/Other.config", "{}");
    Found const asked =
        Ask(place, {"SetSSOClientConfigFileOverride=first", "SetSSOClientConfigFileOverride=second",
                    "GetSSOClientConfigFileOverride", "GetSSOClientConfigFile",
                    "SetSSOClientConfigFileOverride=" + OtherConfig, "GetSSOClientConfigFile"});
    EXPECT_THAT(asked.answers, ElementsAre("second", "second", OtherConfig));
    EXPECT_THAT(asked.lines,
                ElementsAre(SetsOverride("first"), SetsOverride("second"), MissesOverride("second"),
                            SetsOverride(OtherConfig), FindsOverride(OtherConfig)));
}

TEST(ClientConfig, IsSearchedAgainAfterAnEmptyOverride)
{
    Place place;
    place.ClientConfig("{}");
    Found const asked =
        Ask(place, {"SetSSOClientConfigFileOverride=first", "GetSSOClientConfigFile",
                    "SetSSOClientConfigFileOverride=", "GetSSOClientConfigFileOverride",
                    "GetSSOClientConfigFile"});
    EXPECT_THAT(asked.answers, ElementsAre("first", "", AppConfig));
    EXPECT_THAT(asked.lines, ElementsAre(SetsOverride("first"), MissesOverride("first"),
                                         SetsOverride(""), SearchesConfig(), FindsConfig()));
}

TEST(ClientConfig, TakesAnOverrideAsItIsSpelled)
{
    Place place;
    place.ClientConfig("{}").File("other/Other.config", "{}");
    // A variable is a name like any other, a relative path is one of the
    // current directory, and nothing is made shorter.
    Found const variable = Ask(place, {"SetSSOClientConfigFileOverride=%ExePath%/SSOClient.config",
                                       "GetSSOClientConfigFile"});
    EXPECT_THAT(variable.answers, ElementsAre("%ExePath%/SSOClient.config"));
    EXPECT_THAT(variable.lines, ElementsAre(SetsOverride("%ExePath%/SSOClient.config"),
                                            MissesOverride("%ExePath%/SSOClient.config")));
    Found const relative = Ask(place, {"SetSSOClientConfigFileOverride=..//other/Other.config",
                                       "GetSSOServerAppPath", "GetSSOClientConfigFile"});
    EXPECT_THAT(relative.answers, ElementsAre("", "..//other/Other.config"));
    EXPECT_THAT(relative.lines, ElementsAre(SetsOverride("..//other/Other.config"),
                                            FindsOverride("..//other/Other.config"),
                                            LoadsConfig("..//other/Other.config"), HasNoLocation(),
                                            SearchesServer(), MissesServer()));
    if (IsWindows()) {
        std::string const file = "..\\other\\\\Other.config";
        Found const backslashes =
            Ask(place, {"SetSSOClientConfigFileOverride=" + file, "GetSSOClientConfigFile"});
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
        Place place;
        place.ClientConfig(content);
        Found const asked =
            Ask(place, {"SetSSOClientConfigFileOverride=" + AppConfig, "GetSSOServerAppPath",
                        "SetSSOClientConfigFileOverride=late", "GetSSOClientConfigFileOverride",
                        "SetSSOClientConfigFileOverride=later", "GetSSOClientConfigFile",
                        "GetSSOServerAppExeDirPath"});
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
        Place place;
        place.ClientConfig("{}");
        Found const asked = Ask(place, {question, question});
        ASSERT_GE(asked.lines.size(), 4u);
        EXPECT_EQ(asked.lines[2], LoadsConfig());
        EXPECT_EQ(asked.Logged(LoadsConfig()), 1);
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
        Place place;
        place.ClientConfig(content);
        Found const asked = Ask(place, {"GetSSOServerAppPath", "GetOpenSslModule"});
        EXPECT_THAT(First(6, asked.lines),
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                                SearchesServer(), MissesServer()));
        EXPECT_EQ(asked.Logged(MissesOpenSslOverride()), 1);
    }
}

TEST(ClientConfig, RefusesWhatIsNoJson)
{
    for (std::string const& content : std::initializer_list<std::string>{
             "", " \r\n", "{", "not JSON", R"({"ssoServer": })", R"({'ssoServer': {}})",
             "\xEF\xBB\xBF{}", "// nothing but a comment\n", R"({"ssoServer": {"appName": "x})"}) {
        SCOPED_TRACE(content);
        Place place;
        place.ClientConfig(content);
        Found const asked = Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppPath",
                                        "GetSSOServerName", "GetOpenSslModule"});
        EXPECT_THAT(asked.answers, ElementsAre("", "", DefaultServer, ""));
        EXPECT_THAT(First(8, asked.lines),
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), RefusesConfig(),
                                SearchesServer(), MissesServer(), SearchesServer(),
                                MissesServer()));
        EXPECT_EQ(asked.Logged(SearchesOpenSslOverride()), 0);
    }
}

TEST(ClientConfig, RefusesAFolder)
{
    Place place;
    place.Folder("app/SSOClient.config").ClientConfig("{}", "lib");
    Found const asked = Ask(place, {"GetSSOServerAppPath"});
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                         RefusesConfig(), SearchesServer(), MissesServer()));
    Found const overridden =
        Ask(place, {"SetSSOClientConfigFileOverride={root}/work", "GetSSOServerAppPath"});
    EXPECT_THAT(overridden.lines,
                ElementsAre(SetsOverride("{root}/work"), FindsOverride("{root}/work"),
                            LoadsConfig("{root}/work"), RefusesConfig("{root}/work"),
                            SearchesServer(), MissesServer()));
}

TEST(ClientConfig, HasADefaultForEachMember)
{
    std::string const& server = DefaultServer;
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
        Place place;
        place.ClientConfig(Server(R"("searchPaths": "{root}/server")" + expected.members))
            .File("server/" + expected.appName, "placeholder");
        Found const asked = Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppExeFile",
                                        "GetSSOServerProcessName", "GetSSOServerName"});
        EXPECT_THAT(asked.answers, ElementsAre("{root}/server", "{root}/server/" + expected.exeName,
                                               expected.processName, expected.serverName));
        EXPECT_THAT(asked.lines,
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                                SearchesServer(expected.appName, LibraryFirst + "\n{root}/server"),
                                FindsServer("{root}/server/" + expected.exeName)));
    }
}

TEST(ClientConfig, MayLieInAFolderThatIsNoAscii)
{
    Place place("Bücher ☃");
    place.File("другой/Ü.config", Server(R"("appName": "Ä.exe")"));
    std::string const file = "{root}/другой/Ü.config";
    Found const asked = Ask(place, {"SetSSOClientConfigFileOverride=" + file,
                                    "GetSSOClientConfigFile", "GetSSOServerAppPath"});
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
        Place place;
        place.ClientConfig(content);
        Found const asked =
            Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                        "GetOpenSslModule", "SetSSOClientConfigFileOverride=late",
                        "GetSSOClientConfigFileOverride", "GetSSOClientConfigFile",
                        "GetSSOServerProcessName", "GetSSOServerName"});
        // Tried once, then fields stay blank, without defaults.
        EXPECT_THAT(asked.answers, ElementsAre(thrown, "", "", "", "", AppConfig, "", ""));
        EXPECT_THAT(First(5, asked.lines),
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), SearchesServer(""),
                                SearchesServer("")));
        EXPECT_THAT(asked.lines, Contains(RefusesOverride("late", AppConfig)));
        EXPECT_THAT(asked.lines, Not(Contains(MissesServer(""))));
        EXPECT_THAT(asked.lines, Not(Contains(HasNoLocation())));
        EXPECT_THAT(asked.lines, Not(Contains(SearchesOpenSslOverride())));
        EXPECT_EQ(asked.Logged(LoadsConfig()), 1);
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
        Place place;
        place.ServerApp().ClientConfig(R"({"ssoServer": {"appName": "HxSSO.exe",
            "searchPaths": "{root}/server"}, "openssl": )" +
                                       openssl + "}");
        Found const asked =
            Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppPath",
                        "ExpandPathVariables=%SSOServerAppExeFile%", "GetOpenSslModule"});
        // No default for the executable's name either.
        EXPECT_THAT(asked.answers, ElementsAre(thrown, "{root}/server", "{root}/server", ""));
        EXPECT_THAT(First(6, asked.lines),
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                                SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/server"),
                                FindsServer("{root}/server")));
        EXPECT_THAT(asked.lines, Not(Contains(SearchesOpenSslOverride())));
    }
}

TEST(ClientConfig, MustNotBeNestedDeeperThanAThousandTimes)
{
    Place place;
    place.ClientConfig(R"({"more": )" + Nested(1000) + "}");
    Found const asked = Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppPath"});
    EXPECT_THAT(asked.answers,
                ElementsAre("Json::Exception: Exceeded stackLimit in readValue().", ""));
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), SearchesServer("")));
}
