// The file that the system mapped, and its word on one that it did not.

#include <algorithm>
#include <filesystem>
#include <iterator>

#include <gmock/gmock.h>

#include "discovery/Questions.h"
#include "framework/Installation.h"

using Rig::Ask;
using Rig::Asked;
using Rig::Error;
using Rig::Info;
using Rig::Installation;
using Rig::LogMessage;
using Rig::ModuleName;
using testing::Contains;
using testing::ElementsAre;

namespace {

std::string CompatibilityFor(std::string const& plugin, std::string const& modulePath)
{
    return R"({"ssoClientPlugin": [{"module": ")" + ModuleName(plugin) + R"(", "modulePath": ")" +
           modulePath + R"(", "compatibleSsoServicesVersion": {"minVersion": "10"}}]})";
}

std::vector<LogMessage> Failures(std::vector<LogMessage> const& log)
{
    std::vector<LogMessage> failures;
    std::copy_if(log.begin(), log.end(), std::back_inserter(failures), [](LogMessage const& line) {
        return line.level == Error && line.text.find("client plugin module") != std::string::npos;
    });
    return failures;
}

} // namespace

// The configured path up to the load, and the mapped file from then on.
TEST(PluginLoad, NamesTheMappedFileBehindAPathWithDots)
{
    Installation installation;
    installation.Complete()
        .Folder("server/x")
        .Compatibility(CompatibilityFor("RecordingPlugin", "%SSOServerAppPath%/x/../plugin"));
    Asked const asked = Ask(installation, {"Load"});
    std::string const configured = "{root}/server/x/../plugin/" + ModuleName("RecordingPlugin");
    std::string const mapped = "{root}/server/plugin/" + ModuleName("RecordingPlugin");
    for (LogMessage const& line :
         {LogMessage{Info, "Dynamically loading client plugin module " + configured},
          LogMessage{Info, "Successfully loaded client plugin module " + mapped},
          LogMessage{Info, "Getting factory proc from client plugin module " + mapped},
          LogMessage{Info, "Getting factory from client plugin module " + mapped}})
        EXPECT_EQ(asked.outcome.LoggedAt(line.level, line.text), 1) << line;
}

namespace {

/// A line that tells the file, as far as there is room. Not all systems count the
/// terminator in.
MATCHER_P2(NamesAsLoaded, file, room, "")
{
    std::string const text = "Successfully loaded client plugin module {root}";
    if (arg.text.compare(0, text.size(), text) != 0)
        return false;
    std::string const told = arg.text.substr(text.size());
    *result_listener << told.size();
    if (!Rig::IsWindows() || file.size() < room)
        return told == file;
    return told == file.substr(0, room - 1) || told == file.substr(0, room);
}

} // namespace

// On Windows the library asks for it with room for 260 units; what is longer is cut,
// and works all the same.
TEST(PluginLoad, NamesOfALongFileWhatThereIsRoomFor)
{
    for (std::size_t const length : {258, 259, 260, 261, 300}) {
        SCOPED_TRACE(length);
        Installation installation;
        installation.Complete();
        std::string const root =
            installation.Text("app").substr(0, installation.Text("app").size() - 4);
        std::string const name = "/" + ModuleName("RecordingPlugin");
        std::string const folder(length - root.size() - name.size() - 1, 'x');
        try {
            installation.Plugin("RecordingPlugin", folder);
        } catch (std::filesystem::filesystem_error const& error) {
            GTEST_SKIP() << "no such long names here: " << error.what();
        }
        installation.Compatibility(CompatibilityFor("RecordingPlugin", root + "/" + folder));
        Asked const asked = Ask(installation, {"Load"});
        std::string const file = "/" + folder + name;
        EXPECT_EQ(
            asked.outcome.LoggedAt(Info, "Dynamically loading client plugin module {root}" + file),
            1);
        EXPECT_THAT(asked.outcome.log, Contains(NamesAsLoaded(file, 260 - root.size())));
    }
}

// Each failure has the text of its own error, whatever failed before it.
TEST(PluginLoad, SaysOfEachFailureWhatItWas)
{
    Installation installation;
    installation.Complete()
        .Plugin("DependentPlugin")
        .Plugin("PlainNamePlugin")
        .File("server/plugin/" + ModuleName("Text"), "this is no module");
    std::vector<std::string> questions;
    for (char const* const plugin : {"Text", "DependentPlugin", "PlainNamePlugin", "Text",
                                     "PlainNamePlugin", "DependentPlugin"}) {
        std::string const config = std::string(plugin) + ".config";
        installation.File(config, CompatibilityFor(plugin, "%SSOServerAppPath%/plugin"));
        questions.push_back("Copy=" + config + ">server/SSOVersionCompatibility.config");
        questions.emplace_back("GetSessionState");
        questions.emplace_back("Release");
    }
    questions.emplace_back("Rescue=server/SSOVersionCompatibility.config");
    Asked const asked = Ask(installation, questions);
    std::string const folder = "{root}/server/plugin/";
    std::string const dependent = folder + ModuleName("DependentPlugin");
    std::string const plain = folder + ModuleName("PlainNamePlugin");
    std::string const text = folder + ModuleName("Text");
    bool const windows = Rig::IsWindows();
    LogMessage const noModule{Error, "Failed to load client plugin module " + text +
                                         ". Error: " + (windows ? "" : text + ": file too short")};
    LogMessage const noDependency{
        Error, "Failed to load client plugin module " + dependent + ". Error: " +
                   (windows ? Rig::SystemErrorText(126)
                            : "PluginDependency.so: cannot open shared object file: No such "
                              "file or directory")};
    LogMessage const noProcedure{
        Error, "Failed to get factory proc from client plugin module " + plain + ". Error: " +
                   (windows ? Rig::SystemErrorText(127)
                            : plain + ": undefined symbol: _Z19GetSSOClientFactoryv")};
    EXPECT_THAT(Failures(asked.outcome.log), ElementsAre(noModule, noDependency, noProcedure,
                                                         noModule, noProcedure, noDependency));
}
