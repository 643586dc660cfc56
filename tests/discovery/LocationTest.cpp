// The place that the server application's installation left is one for all processes of
// the system: these tests run by themselves.

#include <memory>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Questions.h"
#include "support/TextConversion.h"

using namespace Rig;
using testing::Contains;
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

class RegistryLocation : public testing::Test {
    void SetUp() override
    {
        if (!MayChangeLocation())
            GTEST_SKIP() << "would change the registry of the user's own Windows";
    }
};

} // namespace

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
