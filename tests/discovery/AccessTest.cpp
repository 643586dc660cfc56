// Files and folders that are there and that the host may not read.

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Questions.h"
#include "host/Expected.h"

using namespace Rig;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string const Denied = "denied";

bool CanDeny(Asked const& asked)
{
    return !asked.answers.empty() && asked.answers.front() == Denied;
}

constexpr char const* cannotDeny = "this user may read everything here, or nothing";

} // namespace

TEST(Access, DeniedToTheClientConfigIsAFileThatIsNoJson)
{
    Installation installation;
    installation.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})").ServerApp();
    Asked const asked =
        Ask(installation, {"Deny=app/SSOClient.config", "GetSSOClientConfigFile",
                           "GetSSOServerAppPath", "SetSSOClientConfigFileOverride=late"});
    if (!CanDeny(asked))
        GTEST_SKIP() << cannotDeny;
    EXPECT_THAT(asked.answers, ElementsAre(Denied, AppConfig, ""));
    EXPECT_EQ(asked.outcome.OnConsole(RefusesConfig().text), 1);
    EXPECT_EQ(asked.outcome.OnConsole(RefusesOverride("late", AppConfig).text), 1);
}

TEST(Access, DeniedToTheCompatibilityFileIsAFileThatIsNoJson)
{
    Installation installation;
    installation.Complete();
    Asked const asked = Ask(installation, {"Deny=server/SSOVersionCompatibility.config",
                                           "GetSSOServerAppPath", "GetSSOClientPluginModule"});
    if (!CanDeny(asked))
        GTEST_SKIP() << cannotDeny;
    EXPECT_THAT(asked.answers, ElementsAre(Denied, "{root}/server", ""));
    for (LogMessage const& line :
         {RefusesFile(), HasNoModules("ssoClientPlugin"), MissesModule("client plugin")})
        EXPECT_EQ(asked.outcome.OnConsole(line.text), 1) << line;
}

TEST(Access, DeniedToThePluginIsToldInTheSystemsWords)
{
    Installation installation;
    installation.Complete();
    // A file of its own: the other one is the rig's, by another name.
    std::string const plugin = "server/plugin/" + ModuleName("Denied");
    installation.File(plugin, "this is no module").Compatibility(CompatibilityFor("Denied"));
    Asked const asked = Ask(installation, {"Deny=" + plugin, "GetSessionState"});
    if (!CanDeny(asked))
        GTEST_SKIP() << cannotDeny;
    EXPECT_THAT(asked.answers, ElementsAre(Denied, ""));
    std::string const reason =
        IsWindows() ? SystemErrorText(32)
                    : "{root}/" + plugin + ": cannot open shared object file: Permission denied";
    std::string const text = "Failed to load client plugin module {root}/" + plugin;
    EXPECT_THAT(asked.outcome.console,
                Contains(AsConsoleLines({{Error, text + ". Error: " + reason}}).front()));
}

// A folder that cannot be looked into is no missing file: what the file system
// throws reaches the host, and the next question asks again.
TEST(Access, DeniedToAFolderReachesTheHost)
{
    if (IsWindows())
        GTEST_SKIP() << "the rig cannot deny a folder on Windows";
    Installation installation;
    installation.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/closed;{root}/server"}})")
        .ServerApp()
        .Folder("closed/folder");
    Asked const asked =
        Ask(installation, {"Deny=closed", "GetSSOServerAppPath", "GetSSOServerAppPath",
                           "GetSSOClientPluginModule", "GetSSOClientConfigFile"});
    // For the end of the installation.
    std::filesystem::permissions(installation.Path("closed"), std::filesystem::perms::owner_all);
    if (!CanDeny(asked))
        GTEST_SKIP() << cannotDeny;
    auto const thrown = AllOf(StartsWith("std::exception: boost::filesystem::status"),
                              HasSubstr("Permission denied"));
    EXPECT_THAT(asked.answers, ElementsAre(Denied, thrown, thrown, thrown, AppConfig));
}
