#include <algorithm>

#include "common/System.h"
#include "discovery/CompatibleModule.h"
#include "doctor/Judgement.h"
#include "doctor/Searches.h"
#include "doctor/Text.h"
#include "doctor/Words.h"

namespace Halvorix::Doctor {

namespace {

// The current directory is searched for that, and for nothing that a file says.
bool IsEmptyLocation(std::vector<KeyValue> const& keys)
{
    auto const isEmpty = [&keys](Origin origin) {
        return std::any_of(keys.begin(), keys.end(), [origin](KeyValue const& key) {
            return key.key == "ssoServer.searchPaths" && key.origin == origin && key.value.empty();
        });
    };
    return isEmpty(Origin::Registry) && !isEmpty(Origin::File);
}

// Whether no other entry has one of them.
bool IsOfLocation(std::vector<std::string> const& variables, std::vector<KeyValue> const& keys)
{
    std::size_t elsewhere = 0;
    std::size_t inLocation = 0;
    for (KeyValue const& key : keys)
        if (key.key == "ssoServer.searchPaths")
            for (std::string const& name : VariablesIn(Wide(key.value)))
                if (std::find(variables.begin(), variables.end(), name) != variables.end())
                    ++(key.origin == Origin::Registry ? inLocation : elsewhere);
    return inLocation > 0 && elsewhere == 0;
}

void AddMissingServerApp(Findings const& findings, ProblemList& problems, ServerApp const& server)
{
    // The library ends there with an exception, which is told.
    if (AnyUnreadable(server.search))
        return;
    std::vector<std::string> const unknown = UnknownOf(server.search);
    // One that is laid out by hand, for a trial say.
    auto const withList =
        std::find_if(server.search.tried.begin(), server.search.tried.end(),
                     [](Directory const& directory) { return directory.holdsList; });
    std::string const otherwise =
        withList != server.search.tried.end()
            ? (withList->path.empty() ? "the current directory" : withList->path) + " has " +
                  Shown(SSOServices::CompatibilityFileName) + " but no " + server.search.file +
                  ": install the server application there, or set ssoServer.appName to its file" +
                  (server.search.file.find_first_of("/\\") == std::string::npos
                       ? "; for a trial an empty file of that name will do"
                       : "")
        : findings.config.state == ConfigState::NoFile && findings.config.override.empty()
            ? "install the server application, or put a client configuration beside the program "
              "that names its directory in ssoServer.searchPaths"
            : "install the server application, or name its directory in ssoServer.searchPaths of "
              "the client configuration";
    std::vector<Hint> hints;
    if (IsOnOtherMachine(Wide(server.search.file)))
        hints.push_back({"it is named on another machine, which is not asked",
                         "write the name of the file alone in ssoServer.appName, and its folder "
                         "in ssoServer.searchPaths"});
    AddSimilar(server.search, hints);
    for (Directory const& directory : server.search.tried)
        if (Lower(directory.similar) == Lower(server.search.file) + ".exe")
            hints.front().remedy =
                "write " + directory.similar + " in ssoServer.appName of the client configuration";
    if (findings.config.state == ConfigState::Read) // else it is not asked
        for (Oddity const& oddity : findings.config.locationOddities)
            hints.push_back({oddity.key + " " + oddity.text, oddity.remedy});
    AddHints(findings.config.oddities,
             {"ssoServer", "ssoServer.searchPaths", "ssoServer.appName", "ssoServer.exeName",
              "the text behind the end"},
             hints);
    AddHidden(findings.config.search, otherwise, hints);
    if (!unknown.empty())
        hints.push_back(
            {HaveNoValue(unknown), IsOfLocation(unknown, findings.config.keys)
                                       ? "correct the directory in " + Tools::NameOfLocation()
                                       : "correct the directories in ssoServer.searchPaths of the "
                                         "client configuration"});
    problems.AddMissing(
        unknown.empty() ? "server-application-missing" : "search-path-with-unknown-variable",
        Subject::ServerApp,
        "the server application " + server.search.file +
            " is in none of the directories searched: " + DirectoriesOf(server.search),
        otherwise, hints);
}

} // namespace

void JudgeServerApp(Findings const& findings, ProblemList& problems)
{
    ServerApp const& server = findings.server;
    if (IsConfigStopped(findings) || server.search.file.empty())
        return; // said already; nothing of it was searched for
    if (server.isInWorkingDirectory) {
        bool const isElsewhereToo = std::any_of(
            server.search.tried.begin(), server.search.tried.end(),
            [](Directory const& directory) { return directory.finding == Finding::LaterHit; });
        problems.Add(
            Fatal, "server-application-in-working-directory", Subject::ServerApp,
            "the server application " + server.search.file +
                " was found in the current directory " +
                (isElsewhereToo ? "before all others" : "only") +
                ", so that the library has no path for it",
            IsEmptyLocation(findings.config.keys)
                ? "write its directory into " + Tools::NameOfLocation()
                : "name its directory in ssoServer.searchPaths of the client configuration, in "
                  "place of the empty entry");
    } else if (server.directory.empty()) {
        AddMissingServerApp(findings, problems, server);
    }
}

// The plugin is in use by the time that somebody needs it.
void JudgeServerExecutable(Findings const& findings, ProblemList& problems)
{
    ServerApp const& server = findings.server;
    if (IsConfigStopped(findings) || server.search.file.empty() || server.directory.empty())
        return;
    if (!server.presence.isThere && server.search.file.find('/') != std::string::npos) {
        problems.Add(Fatal, "server-executable-missing", Subject::ServerApp,
                     "the server application was found in " + server.directory +
                         ", but its executable " + server.executable + " " +
                         Words(server.presence) +
                         "; the folder in ssoServer.appName is part of "
                         "that directory already",
                     "write ssoServer.exeName too in the client configuration, without a folder");
    } else if (!server.presence.isThere) {
        problems.Add(Fatal, "server-executable-missing", Subject::ServerApp,
                     "the server application was found in " + server.directory +
                         ", but its executable " + server.executable + " " + Words(server.presence),
                     !server.presence.linkRemedy.empty()
                         ? server.presence.linkRemedy
                         : std::string("correct ssoServer.exeName of the client configuration, or "
                                       "install the server "
                                       "application again"));
    } else if (!server.presence.flaw.empty()) {
        problems.Add(Fatal, "server-executable-not-a-file", Subject::ServerApp,
                     "the server application's executable " + server.executable + " " +
                         server.presence.flaw,
                     "correct ssoServer.exeName of the client configuration, or install the server "
                     "application again");
    }
}

} // namespace Halvorix::Doctor
