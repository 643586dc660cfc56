#include <algorithm>
#include <iterator>
#include <set>

#include "doctor/Judgement.h"
#include "doctor/Text.h"

namespace Halvorix::Doctor {

namespace {

void AddMissingCompatibility(Findings const& findings, ProblemList& problems,
                             Compatibility const& file)
{
    // The library ends there with an exception, which is told.
    if (AnyUnreadable(file.search))
        return;
    std::vector<Hint> hints;
    AddSimilar(file.search, hints);
    AddHiddenServerApps(findings.server,
                        "install " + file.search.file + " beside the server application", hints);
    for (Directory const& directory : file.search.tried)
        if (NameOf(directory.path) == file.search.file)
            hints.push_back(
                {"ssoServer.VersionCompatibilityConfigfilePath names the file, not its folder",
                 "remove the file's name from that path"});
    AddHints(findings.config.oddities, {"ssoServer.VersionCompatibilityConfigfilePath"}, hints);
    std::vector<std::string> const unknown = UnknownOf(file.search);
    if (!unknown.empty())
        hints.push_back({HaveNoValue(unknown), "install it beside the server application"});
    problems.AddMissing(
        "compatibility-file-missing", Subject::Compatibility,
        "the version compatibility file " + file.search.file +
            " is in none of the directories searched: " + DirectoriesOf(file.search),
        "install it beside the server application", hints);
}

void JudgeNoPlugin(Findings const& findings, ProblemList& problems, Compatibility const& file)
{
    ModuleList const& list = file.plugins;
    bool const isUnread = list.modules.empty() && list.problem.empty(); // past a limit
    if (isUnread || AnyStops(file.oddities) || AnyStops(list))
        return;
    std::string const zeros = RemedyOfZeros(list);
    std::string const otherwise =
        !list.problem.empty() ? "complete the file, or install it again"
        : !zeros.empty()      ? zeros + ", or install a plugin for this version"
                         : "install a client plugin for this version, with its entry in that file";
    std::vector<Hint> hints;
    AddListHints(file, list, hints);
    for (Oddity const& oddity : file.oddities)
        if (oddity.code == "key-of-the-other-file")
            hints.push_back({oddity.key + " " + oddity.text,
                             "put the version compatibility file there: this looks like a client "
                             "configuration"});
    AddHidden(file.search, otherwise, hints);
    AddHiddenServerApps(findings.server, otherwise, hints);
    if (!list.problem.empty())
        problems.AddMissing("no-plugin-listed", Subject::Compatibility,
                            "the version compatibility file " + file.file +
                                " lists no client plugin: " + list.problem + ReasonsOf(list),
                            otherwise, hints);
    else
        problems.AddMissing("no-plugin-fits", Subject::Compatibility,
                            "no client plugin in " + file.file + " is for version " +
                                findings.program.version + " of the library" + ReasonsOf(list),
                            otherwise, hints);
}

} // namespace

std::string ReasonsOf(ModuleList const& list)
{
    std::vector<std::string> entries;
    for (Module const& module : list.modules)
        if (!module.detail.empty())
            entries.push_back(std::to_string(module.number) + ". " +
                              (module.name.empty() ? "(no name)" : module.name) + ": " +
                              module.detail);
    return entries.empty() ? "" : " (" + Listed(entries, "; ") + ")";
}

std::string RemedyOfZeros(ModuleList const& list)
{
    for (Module const& module : list.modules)
        if (!module.remedy.empty())
            return module.remedy;
    return {};
}

void AddListHints(Compatibility const& file, ModuleList const& list, std::vector<Hint>& hints)
{
    for (Oddity const& oddity : file.oddities)
        if (oddity.meant.rfind(list.key, 0) == 0 ||
            (oddity.key.rfind(list.key, 0) == 0 &&
             (oddity.code == "repeated-key" ||
              ((oddity.code == "not-quoted" || oddity.code == "not-a-number") &&
               oddity.key.find(".compatibleSsoServicesVersion.") != std::string::npos))))
            hints.push_back({InWords(oddity.key) + " " + oddity.text, oddity.remedy});
}

void JudgeIncomplete(ProblemList& problems, Compatibility const& file, ModuleList const& list)
{
    for (Module const& module : list.modules)
        if (module.fit == Fit::Ignored)
            problems.Add(Warning, "compatibility-file-incomplete-entry", Subject::Compatibility,
                         "the version compatibility file: " + Placed(file.file, module.at) +
                             ": entry " + std::to_string(module.number) + " of " + list.key +
                             " is ignored: " + module.detail,
                         "complete that entry, or remove it");
}

// The list of OpenSSL is read when the plugin is there already.
void JudgeCompatibilityOddities(Findings const& findings, ProblemList& problems, bool isAfterPlugin)
{
    Compatibility const& file = findings.compatibility;
    std::vector<Oddity> oddities;
    std::copy_if(
        file.oddities.begin(), file.oddities.end(), std::back_inserter(oddities),
        [isAfterPlugin](Oddity const& oddity) { return StopsOpenSsl(oddity) == isAfterPlugin; });
    JudgeOddities(problems, "compatibility-file", Subject::Compatibility, file.file, oddities);
}

// Where the value itself is not told already.
void JudgeStoppingModules(Findings const& findings, ProblemList& problems, ModuleList const& list)
{
    Compatibility const& file = findings.compatibility;
    std::set<std::string> told; // the entries
    for (Oddity const& oddity : file.oddities)
        if (oddity.stopsReading)
            told.insert(oddity.key.substr(0, oddity.key.find('.')));
    for (Module const& module : list.modules) {
        std::string const key = list.key + "[" + std::to_string(module.number - 1) + "]";
        if (module.fit == Fit::StopsReading && told.count(key) == 0)
            problems.Add(
                Fatal, "compatibility-file-wrong-type", Subject::Compatibility,
                "the version compatibility file cannot be read: " + Placed(file.file, module.at) +
                    ": " + InWords(key) + ": " + module.detail,
                "correct that entry");
    }
}

void JudgeCompatibility(Findings const& findings, ProblemList& problems)
{
    Compatibility const& file = findings.compatibility;
    if (IsConfigStopped(findings) || file.search.file.empty())
        return;
    if (file.file.empty()) {
        // Without the server application there is no place for it.
        if (!findings.server.directory.empty())
            AddMissingCompatibility(findings, problems, file);
        return;
    }
    if (file.parseError) {
        AddDamage(problems, *file.parseError, "compatibility-file", Subject::Compatibility,
                  "the version compatibility file", file.file, ", or install the file again");
        return;
    }
    JudgeCompatibilityOddities(findings, problems, false);
    JudgeStoppingModules(findings, problems, file.plugins);
    if (file.isInWorkingDirectory)
        problems.Add(Warning, "compatibility-file-in-working-directory", Subject::Compatibility,
                     "the version compatibility file was found in the current directory only",
                     "put the file beside the server application");
    if (findings.plugin.file.empty())
        JudgeNoPlugin(findings, problems, file);
    else
        JudgeIncomplete(problems, file, file.plugins);
}

} // namespace Halvorix::Doctor
