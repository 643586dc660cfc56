#include <algorithm>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Place.h"

using namespace Rig;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

std::string const WithServer = LibraryFirst + "\n{root}/server";

std::string Paths(std::string const& searchPaths, std::string const& more = "")
{
    return R"({"ssoServer": {"searchPaths": ")" + searchPaths + "\"" + more + "}}";
}

/// The lines of a server application that is found or missed at once.
std::vector<LogMessage> Road(LogMessage const& searches, LogMessage const& end)
{
    return {SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(), searches, end};
}

std::vector<LogMessage> Last(std::size_t count, std::vector<LogMessage> const& lines)
{
    return {lines.end() - static_cast<std::ptrdiff_t>(std::min(count, lines.size())), lines.end()};
}

} // namespace

TEST(ServerApp, LiesBesideTheLibraryBeforeTheExecutable)
{
    Place place;
    place.ServerApp("lib").ServerApp("app").ServerApp().ClientConfig(Paths("{root}/server"));
    Found const library =
        Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath", "GetSSOServerAppPath"});
    EXPECT_THAT(library.answers, ElementsAre("{root}/lib", "{root}/lib", "{root}/lib"));
    EXPECT_THAT(library.lines, ElementsAreArray(Road(SearchesServer("HxSSO.exe", WithServer),
                                                     FindsServer("{root}/lib/HxSSO.exe"))));
    place.Remove("lib/HxSSO.exe");
    EXPECT_THAT(Ask(place, {"GetSSOServerAppExeDirPath"}).answers, ElementsAre("{root}/app"));
    place.Remove("app/HxSSO.exe");
    EXPECT_THAT(Ask(place, {"GetSSOServerAppExeDirPath"}).answers, ElementsAre("{root}/server"));
}

TEST(ServerApp, IsFoundWithoutAConfiguration)
{
    for (char const* const folder : {"lib", "app"}) {
        Place place;
        place.ServerApp(folder);
        std::string const path = "{root}/" + std::string(folder);
        Found const asked = Ask(place, {"GetSSOServerAppPath"});
        EXPECT_THAT(asked.answers, ElementsAre(path));
        EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), MissesConfig(), SearchesServer(),
                                             FindsServer(path + "/HxSSO.exe")));
    }
}

TEST(ServerApp, IsSearchedOnceWhereExecutableAndLibraryShareAFolder)
{
    Place place;
    place.LibraryBesideExecutable().ClientConfig(Paths("{root}\\\\app/;%AppPath%//"));
    Found const asked = Ask(place, {"GetSSOServerAppPath"});
    EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig("{root}/app"), FindsConfig(), LoadsConfig(),
                                         HasNoLocation(), SearchesServer("HxSSO.exe", "{root}/app"),
                                         MissesServer("HxSSO.exe", "{root}/app")));
}

TEST(ServerApp, IsSearchedInTheOrderOfTheList)
{
    struct {
        char const* searchPaths;
        std::string shown; // behind the two that are always there
    } const cases[] = {
        {"{root}/a;{root}/b", "\n{root}/a\n{root}/b"},
        {"{root}/A;{root}/a;{root}/A/;{root}/A", "\n{root}/A\n{root}/a"},
        {"%Unknown%/x;{root}/a", "\n%Unknown%/x\n{root}/a"},
        {"%SSOServicesModulePath%;%exepath%\\\\..\\\\a//", "\n{root}/app/../a"},
        // What lies between two separators is the current directory.
        {"{root}/a;;{root}/b", "\n{root}/a\n\n{root}/b"},
        {"{root}/a;", "\n{root}/a\n"},
        {";;", "\n"},
        {";{root}/a;;", "\n\n{root}/a"},
        {"a b; c", "\na b\n c"},
        {"Bücher;\\u2603", "\nBücher\n☃"},
        {"", ""},
    };
    for (auto const& [searchPaths, shown] : cases) {
        SCOPED_TRACE(searchPaths);
        Place place;
        place.ClientConfig(Paths(searchPaths));
        Found const asked = Ask(place, {"GetSSOServerAppPath"});
        EXPECT_THAT(asked.answers, ElementsAre(""));
        EXPECT_THAT(asked.lines,
                    ElementsAreArray(Road(SearchesServer("HxSSO.exe", LibraryFirst + shown),
                                          MissesServer("HxSSO.exe", LibraryFirst + shown))));
    }
    Place place;
    place.ServerApp("b").ServerApp("c").ClientConfig(Paths("{root}/a;{root}/b;{root}/c"));
    EXPECT_THAT(Ask(place, {"GetSSOServerAppPath"}).answers, ElementsAre("{root}/b"));
    Place relative;
    relative.ServerApp().ClientConfig(Paths("../server"));
    EXPECT_THAT(Ask(relative, {"GetSSOServerAppPath"}).answers, ElementsAre("../server"));
}

TEST(ServerApp, MayHaveAnExecutableOfAnotherName)
{
    struct {
        char const* names;
        std::string file; // what is there
        std::string path;
        std::string executable;
    } const cases[] = {
        {R"(, "appName": "Mark", "exeName": "bin\\Server.exe")", "server/Mark", "{root}/server",
         "{root}/server/bin/Server.exe"},
        // A folder will do.
        {R"(, "appName": "Folder", "exeName": "S.exe")", "server/Folder/x", "{root}/server",
         "{root}/server/S.exe"},
        // A folder in the name becomes one of the path.
        {R"(, "appName": "sub/Mark", "exeName": "S.exe")", "server/sub/Mark", "{root}/server/sub",
         "{root}/server/sub/S.exe"},
        {R"(, "appName": "sub/Mark")", "server/sub/Mark", "{root}/server/sub",
         "{root}/server/sub/sub/Mark"},
        {R"(, "appName": "../other/Mark", "exeName": "S//x/")", "other/Mark", "{root}/lib/../other",
         "{root}/lib/../other/S/x"},
        {R"(, "appName": "Dienst ☃", "exeName": "Ü.exe")", "server/Dienst ☃", "{root}/server",
         "{root}/server/Ü.exe"},
    };
    for (auto const& expected : cases) {
        SCOPED_TRACE(expected.names);
        Place place;
        place.Folder("server")
            .File(expected.file, "")
            .ClientConfig(Paths("{root}/server", expected.names));
        Found const asked = Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                                        "ExpandPathVariables=%SSOServerAppExeFile%"});
        EXPECT_THAT(asked.answers, ElementsAre(expected.path, expected.path, expected.executable));
        ASSERT_FALSE(asked.lines.empty());
        EXPECT_EQ(asked.lines.back(), FindsServer(expected.executable));
    }
}

TEST(ServerApp, IsSearchedAgainUntilItIsFound)
{
    Place place;
    place.ServerApp("store").ClientConfig(Paths("{root}/server"));
    Found const asked = Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                                    "ExpandPathVariables=%SSOServerAppExeFile%",
                                    "Copy=store/HxSSO.exe>server/HxSSO.exe", "GetSSOServerAppPath",
                                    "Remove=server/HxSSO.exe", "GetSSOServerAppPath"});
    EXPECT_THAT(asked.answers,
                ElementsAre("", "", "%SSOServerAppExeFile%", "{root}/server", "{root}/server"));
    LogMessage const searches = SearchesServer("HxSSO.exe", WithServer);
    LogMessage const misses = MissesServer("HxSSO.exe", WithServer);
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                            searches, misses, searches, misses, searches, misses, searches,
                            FindsServer("{root}/server/HxSSO.exe")));
}

TEST(ServerApp, HasNoPathInTheCurrentDirectory)
{
    Place place;
    place.ServerApp("work").ClientConfig(Paths("{root}/a;;{root}/b"));
    Found const asked = Ask(place, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                                    "ExpandPathVariables=%SSOServerAppPath%/x",
                                    "ExpandPathVariables=%SSOServerAppExeFile%"});
    EXPECT_THAT(asked.answers,
                ElementsAre("", "", "%SSOServerAppPath%/x", "%SSOServerAppExeFile%"));
    // Found each time, and each time nothing is known afterwards.
    LogMessage const searches =
        SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/a\n\n{root}/b");
    LogMessage const finds = FindsServer("HxSSO.exe");
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                            searches, finds, searches, finds, searches, finds, searches, finds));
}

TEST(ServerApp, MayNotSearchWhereItIsItself)
{
    for (char const* const variable :
         {"%SSOServerAppPath%", "%SSOServerAppExeDirPath%", "%ssoserverappexefile%"}) {
        for (char const* const question : {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                                           "ExpandPathVariables=%SSOServerAppPath%"}) {
            SCOPED_TRACE(variable + std::string(" ") + question);
            Place place;
            place.ServerApp().ClientConfig(Paths(variable + std::string("/x;{root}/server")));
            Found const asked = Ask(place, {question, question});
            EXPECT_THAT(asked.answers, ElementsAre("{root}/server", "{root}/server"));
            // What the search within the search says is no matter.
            std::string const paths = LibraryFirst + "\n" + variable + "/x\n{root}/server";
            EXPECT_THAT(Last(2, asked.lines), ElementsAre(SearchesServer("HxSSO.exe", paths),
                                                          FindsServer("{root}/server/HxSSO.exe")));
            EXPECT_EQ(asked.Logged(FindsServer("{root}/server/HxSSO.exe")), 1);
        }
    }
    // On the other roads to it, and in vain.
    for (char const* const question : {"GetOpenSslModule", "GetSSOClientPluginModule"}) {
        SCOPED_TRACE(question);
        Place place;
        place.ClientConfig(Paths("%SSOServerAppPath%"));
        Found const asked = Ask(place, {question, "GetSSOServerAppPath"});
        EXPECT_THAT(asked.answers, ElementsAre("", ""));
        std::string const paths = LibraryFirst + "\n%SSOServerAppPath%";
        EXPECT_THAT(Last(2, asked.lines), ElementsAre(SearchesServer("HxSSO.exe", paths),
                                                      MissesServer("HxSSO.exe", paths)));
    }
}

TEST(ServerApp, LosesWhatDoesNotFitIntoAUnit)
{
    Place place;
    place.ServerApp("🎵").ClientConfig(Paths("{root}/🎵"));
    Found const asked = Ask(place, {"GetSSOServerAppPath"});
    // Where text has units of 16 bits, only the low ones of U+1F3B5 stay.
    std::string const paths = LibraryFirst + (IsWindows() ? "\n{root}/\xEF\x8E\xB5" : "\n{root}/🎵");
    EXPECT_THAT(asked.answers, ElementsAre(IsWindows() ? "" : "{root}/🎵"));
    EXPECT_THAT(asked.lines,
                ElementsAreArray(Road(SearchesServer("HxSSO.exe", paths),
                                      IsWindows() ? MissesServer("HxSSO.exe", paths)
                                                  : FindsServer("{root}/🎵/HxSSO.exe"))));
}

// The place that the server application's place left is one for all
// processes of the system: these tests run by themselves.
