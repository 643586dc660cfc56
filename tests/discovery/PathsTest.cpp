#include <cctype>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Questions.h"

using namespace Rig;
using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

/// What becomes of texts, all in one process.
std::vector<std::string> Expanded(Installation& installation, std::vector<std::string> texts)
{
    for (std::string& text : texts)
        text = "ExpandPathVariables=" + text;
    return Ask(installation, texts).answers;
}

std::vector<std::string> Spellings(std::string const& name)
{
    std::string upper, lower;
    for (char const c : name) {
        upper += static_cast<char>(std::toupper(c));
        lower += static_cast<char>(std::tolower(c));
    }
    return {"%" + name + "%", "%" + upper + "%", "%" + lower + "%"};
}

std::string OnThisSystem(char const* windows, char const* elsewhere)
{
    return IsWindows() ? windows : elsewhere;
}

} // namespace

TEST(Paths, HaveNineVariablesInAnyCase)
{
    struct {
        char const* name;
        std::string value;
    } const variables[] = {
        {"SSOServerAppPath", "{root}/server"},
        {"SSOServerAppExeDirPath", "{root}/server"},
        {"SSOServerAppExeFile", "{root}/server/bin/Dienst.exe"},
        {"SSOServicesModulePath", "{root}/lib"},
        {"ProgramFiles",
         OnThisSystem(IsWoW64() ? "C:/Program Files (x86)" : "C:/Program Files", "/opt")},
        {"ExePath", "{root}/app"},
        {"AppPath", "{root}/app"},
    };
    struct {
        char const* name;
        std::string end;
    } const userFolders[] = {
        {"AppData", OnThisSystem("/AppData/Roaming", "{root}/home/.config")},
        {"LocalAppData", OnThisSystem("/AppData/Local", "{root}/home/.local/share")}};
    Installation installation;
    installation.Complete().ClientConfig(
        R"({"ssoServer": {"searchPaths": "{root}/server", "appName": "HxSSO.exe",
            "exeName": "bin//Dienst.exe"}})");
    std::vector<std::string> texts;
    std::vector<testing::Matcher<std::string>> forms;
    for (auto const& [name, value] : variables) {
        for (std::string const& spelling : Spellings(name)) {
            texts.push_back(spelling);
            forms.emplace_back(value);
        }
    }
    for (auto const& [name, end] : userFolders) {
        for (std::string const& spelling : Spellings(name)) {
            texts.push_back(spelling);
            forms.emplace_back(AllOf(EndsWith(end), StartsWith(OnThisSystem("C:/", end.c_str())),
                                     Not(HasSubstr("\\"))));
        }
    }
    EXPECT_THAT(Expanded(installation, texts), ElementsAreArray(forms));
}

TEST(Paths, TakeTheUsersFoldersFromTheEnvironment)
{
    if (IsWindows())
        GTEST_SKIP() << "the system tells these folders on Windows";
    Installation installation;
    installation.Environment("XDG_CONFIG_HOME", "{root}//config/%ExePath%/")
        .Environment("XDG_DATA_HOME", "{root}/daten ü");
    // A value is not expanded again.
    EXPECT_THAT(Expanded(installation, {"%AppData%/x", "%LocalAppData%/x", "%ProgramFiles%"}),
                ElementsAre("{root}/config/%ExePath%/x", "{root}/daten ü/x", "/opt"));
    EXPECT_THAT(Ask(installation, {"GetLogFile"}).answers,
                ElementsAre("{root}/daten ü/Halvorix/Web Services/Log/WebServices.log"));
    installation.Environment("XDG_CONFIG_HOME", "").Environment("XDG_DATA_HOME", "");
    EXPECT_THAT(Expanded(installation, {"%AppData%/x", "%LocalAppData%/x"}),
                ElementsAre("{root}/home/.config/x", "{root}/home/.local/share/x"));
    // A variable without a value stays, as one that is unknown.
    installation.Environment("HOME", "");
    EXPECT_THAT(Expanded(installation, {"%AppData%/x", "%LocalAppData%/x"}),
                ElementsAre("%AppData%/x", "%LocalAppData%/x"));
    EXPECT_THAT(Ask(installation, {"GetLogFile"}).answers,
                ElementsAre("Halvorix/Web Services/Log/WebServices.log"));
}

TEST(Paths, NameTheLogFileBelowTheLocalApplicationData)
{
    Installation installation;
    std::vector<std::string> const answers =
        Ask(installation, {"ExpandPathVariables=%LocalAppData%", "GetLogFile"}).answers;
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_NE(answers[0], "%LocalAppData%");
    EXPECT_EQ(answers[1], answers[0] + "/Halvorix/Web Services/Log/WebServices.log");
}

TEST(Paths, AreExpandedInOnePass)
{
    Installation installation("%AppPath% %Unknown%");
    EXPECT_THAT(Expanded(installation, {"%ExePath%/x", "%SSOServicesModulePath%"}),
                ElementsAre("{root}/app/x", "{root}/lib"));
}

TEST(Paths, KeepTheVariablesOfAServerApplicationThatIsMissing)
{
    Installation installation;
    Asked const asked = Ask(installation, {"ExpandPathVariables=%SSOServerAppPath%/a",
                                           "ExpandPathVariables=x/%SSOServerAppExeDirPath%",
                                           "ExpandPathVariables=%SSOServerAppExeFile%", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre("%SSOServerAppPath%/a", "x/%SSOServerAppExeDirPath%",
                                           "%SSOServerAppExeFile%"));
    // Each asks anew.
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), MissesConfig(), SearchesServer(), MissesServer(),
                            SearchesServer(), MissesServer(), SearchesServer(), MissesServer()));
}

TEST(Paths, LeaveTheTextAloneWhenTheSearchThrows)
{
    Installation installation;
    installation.ClientConfig("[]");
    // The first variable is known; the second one throws, and then stays.
    EXPECT_THAT(
        Expanded(installation, {"%ExePath%%SSOServerAppPath%", "%ExePath%%SSOServerAppPath%"}),
        ElementsAre("Json::LogicError: in Json::Value::resolveReference(key, end): "
                    "requires objectValue",
                    "{root}/app%SSOServerAppPath%"));
}

TEST(Paths, FollowModulesThatAreLoaded)
{
    Installation installation;
    installation.Complete();
    std::string const library = "GetModuleDirPath=" + LibraryName();
    std::string const plugin = "GetModuleDirPath=" + ModuleName("RecordingPlugin");
    Asked const asked = Ask(installation, {library, plugin, "GetModuleDirPath=NoSuchModule",
                                           "GetModuleDirPath=%ExePath%", "Load", plugin, library});
    EXPECT_THAT(asked.answers,
                ElementsAre("{root}/lib", "", "", "", "{root}/server/plugin", "{root}/lib"));
    EXPECT_TRUE(asked.lines.empty());
    installation.LibraryBesideExecutable();
    EXPECT_THAT(Ask(installation, {library, "ExpandPathVariables=%SSOServicesModulePath%"}).answers,
                ElementsAre("{root}/app", "{root}/app"));
}

TEST(Paths, MayHoldWhatIsNoAscii)
{
    Installation installation("Bücher ☃");
    installation.Complete();
    Asked const asked =
        Ask(installation,
            {"ExpandPathVariables=%ExePath%/ä", "GetModuleDirPath=" + LibraryName(),
             "GetSSOServerAppPath", "GetSSOServerAppExeDirPath", "GetSSOClientPluginModule",
             "GetOpenSslModule", "GetSSOClientConfigFile", "Load"});
    EXPECT_THAT(asked.answers,
                ElementsAre("{root}/app/ä", "{root}/lib", "{root}/server", "{root}/server",
                            "{root}/server/plugin/" + ModuleName("RecordingPlugin"),
                            "{root}/server/openssl/" + ModuleName("openssl"), AppConfig));
}
