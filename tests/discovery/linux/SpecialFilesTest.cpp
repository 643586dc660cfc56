// Names that no regular file has, and names that no character set has.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include <gmock/gmock.h>

#include "discovery/Questions.h"

using namespace Rig;
using testing::ElementsAre;

namespace {

namespace fs = std::filesystem;

enum class Kind { Pipe, Zeros, Nothing };

void Make(fs::path const& file, Kind kind)
{
    fs::remove(file);
    switch (kind) {
    case Kind::Pipe:
        ASSERT_EQ(::mkfifo(file.c_str(), 0666), 0);
        break;
    case Kind::Zeros:
        fs::create_symlink("/dev/zero", file);
        break;
    case Kind::Nothing:
        fs::create_symlink("/dev/null", file);
        break;
    }
}

std::string NameOf(testing::TestParamInfo<Kind> const& info)
{
    switch (info.param) {
    case Kind::Pipe:
        return "Pipe";
    case Kind::Zeros:
        return "Zeros";
    case Kind::Nothing:
        break;
    }
    return "Nothing";
}

class SpecialFile : public testing::TestWithParam<Kind> {
protected:
    SpecialFile() { installation.Complete().Limit(std::chrono::seconds(20)); }
    Installation installation;
};

} // namespace

TEST_P(SpecialFile, IsADamagedConfiguration)
{
    Make(installation.Path("app/SSOClient.config"), GetParam());
    Asked const asked = Ask(installation, {"GetOpenSslModule", "Rescue"});
    EXPECT_EQ(asked.outcome.LoggedAt(
                  Error, "Failed to load client config file {root}/app/SSOClient.config. "
                         "Invalid file format."),
              1);
    EXPECT_THAT(asked.answers, ElementsAre(""));
}

TEST_P(SpecialFile, IsADamagedCompatibilityFile)
{
    Make(installation.Path("server/SSOVersionCompatibility.config"), GetParam());
    Asked const asked = Ask(
        installation, {"GetSSOClientPluginModule", "Rescue=server/SSOVersionCompatibility.config"});
    EXPECT_EQ(asked.outcome.LoggedAt(
                  Error, "Failed to load file {root}/server/SSOVersionCompatibility.config. "
                         "Possibly json format is not valid."),
              1);
    EXPECT_THAT(asked.answers, ElementsAre(""));
}

TEST_P(SpecialFile, IsNoPlaceOfTheServerApplication)
{
    installation.ClientConfig("{}")
        .Folder("xdg/Halvorix/HxSSO")
        .Environment("XDG_CONFIG_DIRS", installation.Text("xdg"));
    Make(installation.Path("xdg/Halvorix/HxSSO/Location"), GetParam());
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "Rescue"});
    EXPECT_EQ(
        asked.outcome.LoggedAt(
            Info, "Unable to get HxSSO path from registry, failed with error: Invalid argument"),
        1);
}

// The system's loader would open it, with the library's lock held.
TEST_P(SpecialFile, IsNoPlugin)
{
    std::string const plugin = "server/plugin/" + ModuleName("RecordingPlugin");
    Make(installation.Path(plugin), GetParam());
    Asked const asked = Ask(installation, {"GetSessionState", "Release",
                                           "Rescue=server/SSOVersionCompatibility.config"});
    EXPECT_THAT(asked.answers, ElementsAre(""));
    EXPECT_EQ(asked.outcome.LoggedAt(Error, "Failed to load client plugin module {root}/" + plugin +
                                                ". Error: {root}/" + plugin +
                                                ": not a regular file"),
              1);
}

TEST(ExecutableOfTheHost, IsAModuleByItsName)
{
    Installation installation;
    EXPECT_THAT(Ask(installation, {"GetModuleDirPath=" + ExecutableName("host")}).answers,
                ElementsAre("{root}/app"));
}

INSTANTIATE_TEST_SUITE_P(Linux, SpecialFile,
                         testing::Values(Kind::Pipe, Kind::Zeros, Kind::Nothing), NameOf);

// Where such a name is left out of a path, another file's name remains.
TEST(HalfASurrogatePair, IsANameThatIsMissed)
{
    Installation installation;
    installation.Complete()
        .ClientConfig("{\"ssoServer\": {\"appName\": \"a\xed\xa0\x80"
                      "b\", \"searchPaths\": "
                      "\"{root}/server\"}}")
        .File("server/ab", "");
    Asked const asked = Ask(installation, {"GetSSOServerAppPath", "GetSSOClientPluginModule"});
    EXPECT_THAT(asked.answers, ElementsAre("", ""));
    installation.File("server/a\xed\xa0\x80"
                      "b",
                      "");
    EXPECT_THAT(Ask(installation, {"GetSSOServerAppPath"}).answers, ElementsAre("{root}/server"));
}
