#include "doctor/Examination.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <utility>

#include "common/System.h"
#include "discovery/PathText.h"
#include "doctor/Searches.h"
#include "doctor/Text.h"
#include "host/SSOClientManager.h"
#include "support/LibraryIdentity.h"

namespace Halvorix::Doctor {

namespace {

// As the library stumbles, so does this: what comes out of a question is noted, and
// the next one is asked.
template <class Question>
std::wstring Ask(char const* during, Findings& findings, Question question)
{
    BeginQuestion();
    try {
        return question();
    } catch (QuestionLimit const& limit) {
        findings.interruptions.push_back({during, limit.text, false, false, {}, true});
    } catch (std::exception const& exception) {
        findings.interruptions.push_back({during, Tools::Presentable(exception.what()), false,
                                          IsDenial(exception), CircleOf(exception)});
    } catch (...) {
        findings.interruptions.push_back({during, "what is no std::exception", false, false, {}});
    }
    return {};
}

template <class Part>
void Try(char const* during, Findings& findings, Part part)
{
    Ask(during, findings, [&part] {
        part();
        return std::wstring();
    });
}

// A load ends with the exception where it cannot look at one of them.
void LookForFiles(std::wstring const& plugin, std::wstring const& openSsl, Findings& findings)
{
    if (!plugin.empty()) {
        findings.plugin.presence = LookForPlugin(plugin);
        LookCloser(plugin, findings.plugin.presence);
    }
    if (!openSsl.empty()) {
        findings.openSsl.presence = LookFor(openSsl);
        LookCloser(openSsl, findings.openSsl.presence);
    }
    Presence const& ofPlugin = findings.plugin.presence;
    Presence const& ofOpenSsl = findings.openSsl.presence;
    if (!ofPlugin.reason.empty())
        findings.interruptions.push_back({"the look for the client plugin's file", ofPlugin.reason,
                                          false, ofPlugin.isDenied, ofPlugin.circle});
    if (!ofOpenSsl.reason.empty())
        findings.interruptions.push_back({"the look for the OpenSSL module's file",
                                          ofOpenSsl.reason, true, ofOpenSsl.isDenied,
                                          ofOpenSsl.circle});
}

} // namespace

void ExamineServerApp(Resolver& resolver, Findings& findings)
{
    ServerApp& server = findings.server;
    std::wstring const& appName = resolver.GetClientConfig().appName;
    server.search = LookThrough(appName, DirectoriesSearchedFor(appName));
    for (Directory& directory : server.search.tried) {
        std::wstring const list =
            SSOServices::JoinPath(Wide(directory.path), SSOServices::CompatibilityFileName);
        if (directory.finding == Finding::LaterHit ||
            (directory.finding == Finding::NoFile && !IsOnOtherMachine(list)))
            directory.holdsList = LookFor(list).isThere;
    }
    server.directory = Shown(resolver.GetSSOServerAppPath());
    server.isInWorkingDirectory =
        server.directory.empty() &&
        std::any_of(server.search.tried.begin(), server.search.tried.end(),
                    [](Directory const& directory) {
                        return directory.finding == Finding::Hit && directory.path.empty();
                    });
    std::wstring const executable = resolver.GetSSOServerAppExeFile();
    server.executable = Shown(executable);
    if (!executable.empty()) {
        server.presence = LookFor(executable);
        LookCloser(executable, server.presence);
    }
}

Findings Examine(Options const& options)
{
    // A host gets its locale from the library's first use.
    SSOServices::SSOClientManager::GetInstance();
    ForgetSearches();
    Findings findings;
    SSOServices::Version version;
    SSOServices::ParseVersion(version, SSOServices::LibraryVersion);
    // Nothing but its log tells whether it has taken a directory from the registry.
    std::string const location = BeginningOf(SSOServices::Messages::RegistryRead);
    Resolver resolver(version, [&](std::wstring const& line, Log::LogLevel) {
        if (Shown(line).rfind(location, 0) == 0)
            findings.config.hasLocation = true;
    });
    if (!options.config.empty())
        resolver.SetSSOClientConfigFileOverride(options.config);
    resolver.SetSupportFileSearchPaths(SSOServices::SplitSupportPathList(options.searchPaths));

    // In the order of a load.
    std::wstring const plugin = Ask("the choice of the client plugin", findings,
                                    [&] { return resolver.GetSSOClientPluginModule(); });
    Ask("the search for the server application", findings,
        [&] { return resolver.GetSSOServerAppExeFile(); });
    std::size_t const beforeOpenSsl = findings.interruptions.size();
    std::wstring const openSsl = Ask("the choice of the OpenSSL module", findings,
                                     [&] { return resolver.GetOpenSslModule(); });
    if (findings.interruptions.size() > beforeOpenSsl)
        findings.interruptions.back().isAfterPlugin = true;
    findings.plugin.file = Shown(plugin);
    findings.plugin.asFile = Tools::FromWide(plugin);
    findings.openSsl.file = Shown(openSsl);
    LookForFiles(plugin, openSsl, findings);

    Try("the look at the program", findings, [&] { ExamineProgram(resolver, options, findings); });
    Try("the look at the client configuration", findings,
        [&] { ExamineClientConfig(resolver, findings); });
    Try("the look at the server application", findings,
        [&] { ExamineServerApp(resolver, findings); });
    Try("the look at the version compatibility file", findings,
        [&] { ExamineCompatibility(resolver, findings); });
    Try("the look at what the library needs", findings, [&] { ExamineLibrary(findings); });
    Try("the look at the client plugin", findings, [&] { ExaminePlugin(findings); });
    return findings;
}

} // namespace Halvorix::Doctor
