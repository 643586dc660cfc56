#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <json/value.h>
#include <json/writer.h> // tests print values

#include "framework/CompatibilityFor.h"
#include "framework/LogMessage.h"
#include "framework/System.h"

namespace Rig {

/// What came of a run. In all texts the installation's own directory reads
/// "{root}".
class Outcome {
public:
    Ending ending;
    std::vector<LogMessage> log;      // what the plugin's logger was given
    std::vector<std::string> calls;   // what else of the plugin was called
    std::vector<std::string> console; // lines of the standard output
    std::string errors;               // the standard error

    /// What the host program reported; null if it did not.
    Json::Value operator[](std::string const& name) const;
    std::map<std::string, Json::Value> values;

    /// Whether a line with this text was logged, and how often.
    int Logged(std::string const& text) const;
    int LoggedAt(int level, std::string const& text) const;
    int OnConsole(std::string const& text) const;
    int Called(std::string const& call) const;
};

/// A directory tree with a host program, the library and whatever a test puts
/// there, removed again at the end:
///   app/     the host program's executable
///   lib/     the library
///   server/  for the server application, its files and the plugin
///   work/    the current directory of the host program
///   home/    the user's home, where the system allows another one
class Installation {
public:
    Installation();
    /// With a name that is no ASCII in all paths.
    explicit Installation(std::string const& folderName);
    ~Installation();
    Installation(Installation const&) = delete;
    Installation& operator=(Installation const&) = delete;

    /// Everything that a sign-in needs: configuration, server application,
    /// compatibility file, recording plugin.
    Installation& Complete();

    std::filesystem::path Path(std::string const& relative) const;
    /// The same in forward slashes, as the library spells it.
    std::string Text(std::string const& relative) const;

    /// In entries of a compatibility file "modulePath" means what this process reads, on
    /// WoW64 "modulePathWoW64", and the other way round.
    Installation& File(std::string const& relative, std::string const& content);
    Installation& Folder(std::string const& relative);
    Installation& Remove(std::string const& relative);

    /// "{root}" in the content becomes the installation's directory.
    Installation& ClientConfig(std::string const& content, std::string const& folder = "app");
    Installation& Compatibility(std::string const& content, std::string const& folder = "server");
    Installation& ServerApp(std::string const& folder = "server");
    /// A module of the rig: RecordingPlugin, PlainNamePlugin, DependentPlugin.
    Installation& Plugin(std::string const& kind = "RecordingPlugin",
                         std::string const& folder = "server/plugin");
    /// The library beside the executable instead of in lib/.
    Installation& LibraryBesideExecutable();
    /// What the recording plugin does in place of its default, by operation.
    Installation& Script(std::string const& operation, std::string const& action);
    /// The plugin writes nothing down: for hosts that call it very often, or while
    /// they end.
    Installation& Quiet();
    /// How long a run may take; a minute without this.
    Installation& Limit(std::chrono::seconds longest);
    /// Another executable of the rig in place of this one.
    Installation& Host(std::string const& executable);
    Installation& Environment(std::string const& name, std::string const& value);
    /// The host's locale, which is made for it where they lie in files. False if it cannot
    /// be made here.
    bool UseLocale(std::string const& language, std::string const& characters);

    /// Runs a host program in the tree. A secret of Secrets.h in what the library
    /// logged, or on the console, is a failure of the test.
    Outcome Run(std::string const& program, std::vector<std::string> const& arguments = {});

private:
    void Place(std::string const& file, std::string const& folder, std::string const& as);
    std::string WithRoot(std::string content) const;
    std::string WithoutRoot(std::string text) const;

    std::filesystem::path root;
    std::chrono::seconds limit = std::chrono::minutes(1);
    std::map<std::string, std::string> environment;
    Json::Value script{Json::objectValue};
};

} // namespace Rig
