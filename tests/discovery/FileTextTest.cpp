// What the two files' bytes become, and names that look like variables.

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Questions.h"

using namespace Rig;
using testing::ElementsAre;

namespace {

std::string const EndOfText = "\x1A"; // of old, on Windows

std::string CompatibilityWith(std::string const& module, std::string const& more = "",
                              std::string const& modulePath = "%ExePath%")
{
    return "{" + more + R"("ssoClientPlugin": [{"module": ")" + module + R"(", "modulePath": ")" +
           modulePath + R"(", "compatibleSsoServicesVersion": {"minVersion": "10"}}]})";
}

Installation& ServerWith(Installation& installation, std::string const& compatibility)
{
    return installation.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})")
        .ServerApp()
        .Compatibility(compatibility);
}

} // namespace

// It is read as a text file: on Windows its line ends become one line feed.
TEST(CompatibilityFile, IsATextToTheSystem)
{
    Installation installation;
    ServerWith(installation, CompatibilityWith("one\r\ntwo"));
    EXPECT_THAT(Ask(installation, {"GetSSOClientPluginModule"}).answers,
                ElementsAre(IsWindows() ? "{root}/app/one\ntwo" : "{root}/app/one\r\ntwo"));
}

TEST(CompatibilityFile, EndsWhereTheSystemEndsTexts)
{
    Installation installation;
    ServerWith(installation, CompatibilityWith("Chosen", R"("more": ")" + EndOfText + R"(", )"));
    Asked const asked = Ask(installation, {"GetSSOClientPluginModule"});
    EXPECT_THAT(asked.answers, ElementsAre(IsWindows() ? "" : "{root}/app/Chosen"));
    EXPECT_EQ(asked.outcome.OnConsole(RefusesFile().text), IsWindows() ? 1 : 0);
}

// The other file is read byte by byte on both.
TEST(ClientConfig, IsReadByteByByte)
{
    Installation installation;
    installation.Complete().ClientConfig(
        R"({"ssoServer": {"searchPaths": "{root}/server", "serverName": "one)"
        "\r\n"
        "two" +
        EndOfText + R"(three"}})");
    Asked const asked = Ask(installation, {"Load"});
    EXPECT_EQ(
        asked.outcome.Called(R"(ISSOServerManager::SetSSOServerName("one\r\ntwo\u001athree"))"), 1);
}

// What stays of a variable that nobody knows is a name like any other.
TEST(ServerApp, IsFoundInAFolderThatIsNamedLikeAVariable)
{
    Installation installation;
    installation.ClientConfig(R"({"ssoServer": {"searchPaths": "%Unknown%"}})")
        .ServerApp("work/%Unknown%")
        .Compatibility(CompatibilityWith("Chosen", "", "%Unknown%/%SSOServerAppPath%"),
                       "work/%Unknown%");
    // The value is not expanded again.
    EXPECT_THAT(
        Ask(installation, {"GetSSOServerAppPath", "ExpandPathVariables=%SSOServerAppPath%/x",
                           "GetSSOClientPluginModule"})
            .answers,
        ElementsAre("%Unknown%", "%Unknown%/x", "%Unknown%/%Unknown%/Chosen"));
}

TEST(CompatibilityFile, IsFoundInAFolderThatIsNamedLikeAVariable)
{
    Installation installation;
    installation.Compatibility(CompatibilityWith("Chosen"), "work/%SSOServerAppPath%");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "GetSSOClientPluginModule"});
    EXPECT_THAT(asked.answers, ElementsAre("", "{root}/app/Chosen"));
}
