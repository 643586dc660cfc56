#include <algorithm>
#include <memory>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Questions.h"
#include "host/Expected.h"
#include "support/TextConversion.h"

using namespace Rig;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

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

class RegistryLocation : public testing::Test {
    void SetUp() override
    {
        if (!MayChangeLocation())
            GTEST_SKIP() << "would change the registry of the user's own Windows";
    }
};

} // namespace

TEST(ServerApp, LiesBesideTheLibraryBeforeTheExecutable)
{
    Installation installation;
    installation.ServerApp("lib").ServerApp("app").ServerApp().ClientConfig(Paths("{root}/server"));
    Asked const library = Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                                             "GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(library.answers, ElementsAre("{root}/lib", "{root}/lib", "{root}/lib"));
    EXPECT_THAT(library.lines, ElementsAreArray(Road(SearchesServer("HxSSO.exe", WithServer),
                                                     FindsServer("{root}/lib/HxSSO.exe"))));
    installation.Remove("lib/HxSSO.exe");
    EXPECT_THAT(Ask(installation, {"GetSSOServerAppExeDirPath"}).answers,
                ElementsAre("{root}/app"));
    installation.Remove("app/HxSSO.exe");
    EXPECT_THAT(Ask(installation, {"GetSSOServerAppExeDirPath"}).answers,
                ElementsAre("{root}/server"));
}

TEST(ServerApp, IsFoundWithoutAConfiguration)
{
    for (char const* const folder : {"lib", "app"}) {
        Installation installation;
        installation.ServerApp(folder);
        std::string const path = "{root}/" + std::string(folder);
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.answers, ElementsAre(path));
        EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), MissesConfig(), SearchesServer(),
                                             FindsServer(path + "/HxSSO.exe")));
    }
}

TEST(ServerApp, IsSearchedOnceWhereExecutableAndLibraryShareAFolder)
{
    Installation installation;
    installation.LibraryBesideExecutable().ClientConfig(Paths("{root}\\\\app/;%AppPath%//"));
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
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
        Installation installation;
        installation.ClientConfig(Paths(searchPaths));
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.answers, ElementsAre(""));
        EXPECT_THAT(asked.lines,
                    ElementsAreArray(Road(SearchesServer("HxSSO.exe", LibraryFirst + shown),
                                          MissesServer("HxSSO.exe", LibraryFirst + shown))));
    }
    Installation installation;
    installation.ServerApp("b").ServerApp("c").ClientConfig(Paths("{root}/a;{root}/b;{root}/c"));
    EXPECT_THAT(Ask(installation, {"GetSSOServerAppPath"}).answers, ElementsAre("{root}/b"));
    Installation relative;
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
        Installation installation;
        installation.Folder("server")
            .File(expected.file, "")
            .ClientConfig(Paths("{root}/server", expected.names));
        Asked const asked =
            Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                               "ExpandPathVariables=%SSOServerAppExeFile%", "Rescue"});
        EXPECT_THAT(asked.answers, ElementsAre(expected.path, expected.path, expected.executable));
        ASSERT_FALSE(asked.lines.empty());
        EXPECT_EQ(asked.lines.back(), FindsServer(expected.executable));
        EXPECT_EQ(asked.outcome.Called("ISSOServerManager::SetSSOServerAppFiles(\"" +
                                       expected.path + "\", \"" + expected.executable + "\")"),
                  1);
    }
}

TEST(ServerApp, IsSearchedAgainUntilItIsFound)
{
    Installation installation;
    installation.ServerApp("store").ClientConfig(Paths("{root}/server"));
    Asked const asked =
        Ask(installation,
            {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
             "ExpandPathVariables=%SSOServerAppExeFile%", "Copy=store/HxSSO.exe>server/HxSSO.exe",
             "GetSSOServerAppPath", "Remove=server/HxSSO.exe", "GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.answers,
                ElementsAre("", "", "%SSOServerAppExeFile%", "{root}/server", "{root}/server"));
    LogMessage const searches = SearchesServer("HxSSO.exe", WithServer);
    LogMessage const misses = MissesServer("HxSSO.exe", WithServer);
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                            searches, misses, searches, misses, searches, misses, searches,
                            FindsServer("{root}/server/HxSSO.exe")));
    EXPECT_THAT(asked.outcome.console, ElementsAreArray(AsConsoleLines({misses, misses, misses})));
}

TEST(ServerApp, HasNoPathInTheCurrentDirectory)
{
    Installation installation;
    installation.ServerApp("work").ClientConfig(Paths("{root}/a;;{root}/b"));
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppExeDirPath",
                                           "ExpandPathVariables=%SSOServerAppPath%/x",
                                           "ExpandPathVariables=%SSOServerAppExeFile%", "Rescue"});
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
            Installation installation;
            installation.ServerApp().ClientConfig(
                Paths(variable + std::string("/x;{root}/server")));
            Asked const asked = Ask(installation, {question, question, "Rescue"});
            EXPECT_THAT(asked.answers, ElementsAre("{root}/server", "{root}/server"));
            // What the search within the search says is no matter.
            std::string const paths = LibraryFirst + "\n" + variable + "/x\n{root}/server";
            EXPECT_THAT(Last(2, asked.lines), ElementsAre(SearchesServer("HxSSO.exe", paths),
                                                          FindsServer("{root}/server/HxSSO.exe")));
            EXPECT_EQ(asked.outcome.LoggedAt(Info, FindsServer("{root}/server/HxSSO.exe").text), 1);
        }
    }
    // On the other roads to it, and in vain.
    for (char const* const question : {"GetOpenSslModule", "GetSSOClientPluginModule"}) {
        SCOPED_TRACE(question);
        Installation installation;
        installation.ClientConfig(Paths("%SSOServerAppPath%"));
        Asked const asked = Ask(installation, {question, "GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.answers, ElementsAre("", ""));
        std::string const paths = LibraryFirst + "\n%SSOServerAppPath%";
        EXPECT_THAT(Last(2, asked.lines), ElementsAre(SearchesServer("HxSSO.exe", paths),
                                                      MissesServer("HxSSO.exe", paths)));
    }
}

TEST(ServerApp, HandsOnWhatTheFileSystemThrows)
{
    if (IsWindows())
        GTEST_SKIP() << "a name too long is a missing file on Windows";
    Installation installation;
    std::string const name(300, 'a');
    installation.ClientConfig(Paths("{root}/server", R"(, "appName": ")" + name + "\""));
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

TEST(ServerApp, LosesWhatDoesNotFitIntoAUnit)
{
    Installation installation;
    installation.ServerApp("🎵").ClientConfig(Paths("{root}/🎵"));
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    // Where text has units of 16 bits, only the low ones of U+1F3B5 stay.
    std::string const paths = LibraryFirst + (IsWindows() ? "\n{root}/\xEF\x8E\xB5" : "\n{root}/🎵");
    EXPECT_THAT(asked.answers, ElementsAre(IsWindows() ? "" : "{root}/🎵"));
    EXPECT_THAT(asked.lines,
                ElementsAreArray(Road(SearchesServer("HxSSO.exe", paths),
                                      IsWindows() ? MissesServer("HxSSO.exe", paths)
                                                  : FindsServer("{root}/🎵/HxSSO.exe"))));
}

// The place that the server application's installation left is one for all
// processes of the system: these tests run by themselves.

TEST_F(RegistryLocation, IsTheLastOfTheSearchPaths)
{
    Installation installation;
    installation.ServerApp().ClientConfig(Paths("{root}/a;%Unknown%"));
    Location const location(installation, "{root}//server/");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre("{root}/server"));
    // The line has it as it stands, the list in normal form.
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                            HasLocation("{root}//server/"),
                            SearchesServer("HxSSO.exe",
                                           LibraryFirst + "\n{root}/a\n%Unknown%\n{root}/server"),
                            FindsServer("{root}/server/HxSSO.exe")));
}

TEST_F(RegistryLocation, IsAskedForByEveryReadableConfiguration)
{
    for (char const* const content : {"{}", "null", R"({"openssl": null})"}) {
        SCOPED_TRACE(content);
        Installation installation;
        installation.ServerApp().ClientConfig(content);
        Location const location(installation, "{root}/server");
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                             HasLocation("{root}/server"),
                                             SearchesServer("HxSSO.exe", WithServer),
                                             FindsServer("{root}/server/HxSSO.exe")));
    }
    // It is in the list before the second half of the file is read.
    Installation installation;
    installation.ServerApp().ClientConfig(R"({"ssoServer": {"appName": "HxSSO.exe"},
                                              "openssl": 5})");
    Location const location(installation, "{root}/server");
    Asked const asked = Ask(installation, {"GetOpenSslModule", "GetSSOServerAppPath", "Rescue"});
    ASSERT_EQ(asked.answers.size(), 2u);
    EXPECT_EQ(asked.answers[1], "{root}/server");
    EXPECT_THAT(asked.lines, Contains(HasLocation("{root}/server")));
}

TEST_F(RegistryLocation, IsNotAskedForWithoutAConfiguration)
{
    Installation installation;
    installation.ServerApp();
    Location const location(installation, "{root}/server");
    Asked const missing = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(missing.lines,
                ElementsAre(SearchesConfig(), MissesConfig(), SearchesServer(), MissesServer()));
    installation.Remove("work/SSOVersionCompatibility.config").ClientConfig("{");
    Asked const invalid = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(invalid.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                           RefusesConfig(), SearchesServer(), MissesServer()));
    installation.ClientConfig("[]");
    Asked const wrong = Ask(installation, {"GetSSOServerAppPath", "GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(wrong.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), SearchesServer("")));
}

TEST_F(RegistryLocation, MayHoldVariables)
{
    struct {
        std::string value;
        std::string shown;
    } const cases[] = {{"%ExePath%\\..\\server", "{root}/app/../server"},
                       {"%Unknown%\\x", "%Unknown%/x"},
                       {"{root}/a;{root}/b", "{root}/a;{root}/b"},
                       {"Bücher ☃", "Bücher ☃"},
                       // Of no use, and no way into a circle.
                       {"%SSOServerAppPath%", "%SSOServerAppPath%"}};
    for (auto const& [value, shown] : cases) {
        SCOPED_TRACE(value);
        Installation installation;
        installation.ClientConfig("{}");
        Location const location(installation, value);
        std::string const paths = LibraryFirst + "\n" + shown;
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                             HasLocation(value), SearchesServer("HxSSO.exe", paths),
                                             MissesServer("HxSSO.exe", paths)));
    }
}

TEST_F(RegistryLocation, MeansTheCurrentDirectoryWhenItIsEmpty)
{
    Installation installation;
    installation.ServerApp("work").ClientConfig("{}");
    Location const location(installation, "");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre(""));
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasLocation(""),
                            SearchesServer("HxSSO.exe", LibraryFirst + "\n"),
                            FindsServer("HxSSO.exe")));
}

TEST_F(RegistryLocation, IsOneOfTheListWhenItIsThereAlready)
{
    Installation installation;
    installation.ClientConfig(Paths("{root}/server"));
    Location const location(installation, "{root}/app/");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.lines, Contains(SearchesServer("HxSSO.exe", WithServer)));
}

TEST_F(RegistryLocation, IsReadInTheFirstConfigurationFolderThatHasIt)
{
    if (IsWindows())
        GTEST_SKIP() << "the value lies in the registry on Windows";
    Installation installation;
    installation.ServerApp()
        .ClientConfig("{}")
        .File("second/Halvorix/HxSSO/Location", installation.Text("server") + "\nmore\n")
        .File("third/Halvorix/HxSSO/Location", "wrong")
        .Environment("XDG_CONFIG_DIRS", "{root}/first:{root}/second:{root}/third");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_THAT(asked.answers, ElementsAre("{root}/server"));
    EXPECT_THAT(asked.lines, Contains(HasLocation("{root}/server")));
    installation.Environment("XDG_CONFIG_DIRS", "{root}/third");
    EXPECT_THAT(Ask(installation, {"GetSSOServerAppPath", "Rescue"}).lines,
                Contains(HasLocation("wrong")));
    installation.Environment("XDG_CONFIG_DIRS", "{root}/first:{root}/fourth");
    EXPECT_THAT(Ask(installation, {"GetSSOServerAppPath", "Rescue"}).lines,
                ElementsAreArray(Road(SearchesServer(), MissesServer())));
}

namespace {

/// A value as some installation might leave it in the registry.
std::string Units(std::wstring const& text)
{
    std::string bytes;
    for (wchar_t const unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8 & 0xFF);
    }
    return bytes;
}

constexpr unsigned TextType = 1;
constexpr unsigned ExpandableTextType = 2;
constexpr unsigned BinaryType = 3;
constexpr unsigned NumberType = 4;
constexpr unsigned SeveralTextsType = 7;

} // namespace

TEST_F(RegistryLocation, IsReadWhateverItsType)
{
    if (!IsWindows())
        GTEST_SKIP() << "values have types in the registry only";
    std::wstring const terminated(L"C:\\a%b%\0", 8);
    struct {
        unsigned type;
        std::string bytes;
        char const* text;
    } const cases[] = {
        {TextType, Units(terminated), "C:\\a%b%"},
        {ExpandableTextType, Units(L"%TEMP%\\x"), "%TEMP%\\x"},
        {BinaryType, Units(terminated), "C:\\a%b%"},
        {BinaryType, Units(L"unterminated"), "unterminated"},
        // An odd size: the last byte is the low half of a unit.
        {BinaryType, Units(L"ab") + "c", "abc"},
        {BinaryType, "", ""},
        {NumberType, Units(L"AB"), "AB"},
        {SeveralTextsType, Units(std::wstring(L"first\0second\0\0", 14)), "first"},
        {TextType, Units(std::wstring(L"\0behind", 7)), ""},
    };
    for (auto const& [type, bytes, text] : cases) {
        SCOPED_TRACE(text);
        Installation installation;
        installation.ClientConfig("{}");
        Location const location(installation, "");
        SetRawLocation(type, bytes);
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        ASSERT_GE(asked.lines.size(), 4u);
        EXPECT_EQ(asked.lines[3], HasLocation(text));
    }
}

TEST_F(RegistryLocation, MayBeLong)
{
    if (!IsWindows())
        GTEST_SKIP() << "only the registry is asked with a limit";
    Installation installation;
    installation.ServerApp().ClientConfig("{}");
    std::wstring const root =
        Halvorix::SSOServices::Utf8ToWide(installation.Text("app/..")); // a directory of its own
    struct {
        std::size_t length;
        bool terminated;
        bool fits; // into 1024 bytes
    } const cases[] = {{254, true, true},   {255, true, true},  {256, true, true},
                       {511, true, true},   {512, false, true}, {512, true, false},
                       {513, false, false}, {2000, true, false}};
    for (auto const& [length, terminated, fits] : cases) {
        SCOPED_TRACE(length);
        // Slashes make it long, and go again.
        std::wstring const slashes(length - root.size() - 6, L'/');
        std::string bytes = Units(root + slashes + L"server");
        if (terminated)
            bytes += Units(std::wstring(1, L'\0'));
        Location const location(installation, "");
        SetRawLocation(TextType, bytes);
        Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
        installation.Remove("work/SSOVersionCompatibility.config");
        std::string const text = "{root}/app/.." + std::string(slashes.size(), '/') + "server";
        if (fits) {
            EXPECT_THAT(
                asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasLocation(text),
                            SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/app/../server"),
                            FindsServer("{root}/app/../server/HxSSO.exe")));
        } else {
            // Passed over without a word.
            EXPECT_THAT(asked.lines, ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(),
                                                 SearchesServer(), MissesServer()));
        }
    }
}

TEST_F(RegistryLocation, MayBeMissingInItsKey)
{
    if (!IsWindows())
        GTEST_SKIP() << "only the registry has keys without the value";
    Installation installation;
    installation.ClientConfig("{}");
    Location const location(installation, "");
    SetRawLocation(TextType, Units(L"x"), "Elsewhere");
    RemoveLocationValue();
    EXPECT_THAT(Ask(installation, {"GetSSOServerAppPath", "Rescue"}).lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), SearchesServer(),
                            MissesServer()));
}

TEST_F(RegistryLocation, LiesInTheViewOf64BitForAProcessWhoseOwnHasNoKey)
{
    if (!IsWoW64())
        GTEST_SKIP() << "only a 32-bit process on a 64-bit Windows has a second view";
    Installation installation;
    installation.ServerApp().ClientConfig("{}");
    SetLocationOf64Bit(installation.Path("server").wstring());
    std::unique_ptr<void, void (*)(void*)> const at64Bit(&installation,
                                                         [](void*) { RemoveLocationOf64Bit(); });
    std::vector<std::string> const questions = {"GetSSOServerAppPath", "Rescue"};
    Asked const second = Ask(installation, questions);
    EXPECT_THAT(second.answers, ElementsAre("{root}/server"));
    EXPECT_THAT(second.lines, Contains(FindsServer("{root}/server/HxSSO.exe")));
    installation.Remove("work/SSOVersionCompatibility.config");
    {
        Location const own(installation, "{root}/own");
        Asked const first = Ask(installation, questions);
        EXPECT_THAT(first.answers, ElementsAre(""));
        EXPECT_THAT(first.lines, Contains(HasLocation("{root}/own")));
        installation.Remove("work/SSOVersionCompatibility.config");
    }
    RemoveLocationOf64Bit();
    EXPECT_THAT(Ask(installation, questions).lines,
                ElementsAreArray(Road(SearchesServer(), MissesServer())));
}
