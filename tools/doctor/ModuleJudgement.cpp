#include <algorithm>
#include <iterator>

#include "doctor/FileFlaw.h"
#include "doctor/Judgement.h"
#include "doctor/Text.h"

namespace Halvorix::Doctor {

namespace {

constexpr char const* GivenAnyway = "; the plugin is given its path anyway";

Hint FileForFolder()
{
    return {"modulePath names a file and not its folder", "remove the file's name from modulePath"};
}

// Those of the server application have a value once it is found.
Hint UnknownHint(std::vector<std::string> const& unknown, std::string const& correct)
{
    bool const isOfServer =
        std::all_of(unknown.begin(), unknown.end(), [](std::string const& name) {
            return IsOwnVariable(name) && Lower(name).rfind("ssoserver", 0) == 0;
        });
    return {HaveNoValue(unknown),
            isOfServer ? "first correct what keeps the server application from being found"
                       : correct + ": write the folder itself, or a variable that has a value"};
}

void AddMissingPlugin(Findings const& findings, ProblemList& problems, Plugin const& plugin)
{
    std::vector<Hint> hints;
    if (!plugin.presence.flaw.empty())
        hints.push_back(HintAtBrokenLink(plugin.file, plugin.presence));
    if (!plugin.presence.similar.empty())
        hints.push_back({plugin.presence.similar + " is there, but " +
                             DifferenceOf(plugin.presence.similar, NameOf(plugin.file)),
                         "correct module in " + findings.compatibility.file +
                             ": the file is named " + plugin.presence.similar});
    for (Module const& module : findings.compatibility.plugins.modules) {
        if (module.fit != Fit::Chosen || !hints.empty())
            continue;
        std::string const key = "ssoClientPlugin[" + std::to_string(module.number - 1) + "].";
        AddHints(findings.compatibility.oddities,
                 {key + "module", key + "modulePath", key + "modulePathWoW64"}, hints);
    }
    if (plugin.presence.isBelowFile)
        hints.push_back(FileForFolder());
    std::vector<std::string> const unknown = VariablesIn(Wide(plugin.file));
    std::string const entry =
        "install it there, or correct its entry in " + findings.compatibility.file;
    if (!unknown.empty())
        hints.push_back(
            UnknownHint(unknown, "correct its entry in " + findings.compatibility.file));
    AddHidden(findings.compatibility.search, entry, hints);
    AddHiddenServerApps(findings.server, entry, hints);
    problems.AddMissing("plugin-file-missing", Subject::Plugin,
                        "the chosen client plugin " + plugin.file + " does not exist", entry,
                        hints);
}

void AddMissingOpenSsl(ProblemList& problems, OpenSsl const& openSsl)
{
    std::vector<Hint> hints;
    if (!openSsl.presence.flaw.empty())
        hints.push_back(HintAtBrokenLink(openSsl.file, openSsl.presence));
    std::string const& similar = openSsl.presence.similar;
    if (!similar.empty())
        hints.push_back({similar + " is there, but " + DifferenceOf(similar, NameOf(openSsl.file)),
                         "rename it, or name " + similar + " where this one is named"});
    if (openSsl.presence.isBelowFile)
        hints.push_back(FileForFolder());
    std::vector<std::string> const unknown = VariablesIn(Wide(openSsl.file));
    if (!unknown.empty())
        hints.push_back(UnknownHint(unknown, "correct modulePath"));
    std::string text = "the OpenSSL module " + openSsl.file + " does not exist";
    for (Hint const& hint : hints)
        text += "; " + hint.text;
    problems.Add(Warning, "openssl-missing", Subject::OpenSsl, text + GivenAnyway,
                 hints.empty() ? "install it there" : hints.front().remedy);
}

// What fits the library cannot be said without it, and that it is missing is said.
bool IsOfLibrary(Tools::Check const& check, std::string const& libraryName)
{
    return check.name == "symbols" || check.name == "runtime" || check.name == "jsoncpp" ||
           (check.name == "dependencies" && check.detail.rfind(libraryName, 0) == 0);
}

void JudgeChecks(Findings const& findings, ProblemList& problems,
                 std::vector<Tools::Check> const& checks)
{
    struct Remedy {
        char const* check;
        char const* text;
    };
    static constexpr Remedy remedies[] = {
        {"file", "install the plugin again, so that the program's user can read it"},
        {"module", "install the plugin again"},
        {"architecture", "install the plugin that is built for this architecture"},
        {"export", "export the factory procedure (writing-a-plugin.md), or install another plugin"},
        {"runtime", "install a plugin that is built with the library's compiler"},
        {"jsoncpp", "install a plugin that is built with the library's jsoncpp"},
        {"symbols", "install modules that fit together, or the plugin again"},
        {"loader", "install the tools again"},
        {"load", "install what the system asks for, or the plugin again"},
    };
    for (Tools::Check const& check : FailedOf(checks)) {
        if (!IsLibraryWhole(findings) && IsOfLibrary(check, findings.program.libraryName))
            continue;
        auto const remedy =
            std::find_if(std::begin(remedies), std::end(remedies),
                         [&check](Remedy const& known) { return check.name == known.check; });
        problems.Add(Fatal, "plugin-" + check.name, Subject::Plugin,
                     "the client plugin " + findings.plugin.file + ": " + check.name + ": " +
                         check.detail,
                     !check.remedy.empty()          ? check.remedy
                     : remedy == std::end(remedies) ? AskVendor
                                                    : remedy->text);
    }
}

} // namespace

void JudgePlugin(Findings const& findings, ProblemList& problems)
{
    Plugin const& plugin = findings.plugin;
    if (plugin.file.empty())
        return;
    if (plugin.presence.isOutOfReach) {
        problems.Add(
            Fatal, "plugin-out-of-reach", Subject::Plugin,
            "the client plugin " + plugin.file +
                " is there, but the library does not find a path with characters beyond U+FFFF",
            "install it in a folder without such characters");
        return;
    }
    if (!plugin.presence.reason.empty())
        return; // told as an interruption
    if (!plugin.presence.isThere) {
        AddMissingPlugin(findings, problems, plugin);
        return;
    }
    if (plugin.loaded.empty()) {
        problems.Add(Fatal, "plugin-in-working-directory", Subject::Plugin,
                     "the client plugin " + plugin.file +
                         " is in the current directory, from which the system does not load it",
                     "write the whole path in its entry in " + findings.compatibility.file +
                         ", or begin it with a variable such as %SSOServerAppPath%");
        return;
    }
    JudgeChecks(findings, problems, plugin.fileChecks);
    JudgeChecks(findings, problems, plugin.loadChecks);
}

// A load goes on without it, and the plugin is told all the same.
void JudgeOpenSsl(Findings const& findings, ProblemList& problems)
{
    OpenSsl const& openSsl = findings.openSsl;
    if (IsConfigStopped(findings) || findings.compatibility.search.file.empty())
        return;
    JudgeCompatibilityOddities(findings, problems, true);
    JudgeStoppingModules(findings, problems, findings.compatibility.openSsl);
    // Neither is the list read behind an exception, nor the plugin told.
    if (!findings.interruptions.empty() || AnyStops(findings.compatibility.oddities))
        return;
    if (!openSsl.file.empty() && !openSsl.isOverride)
        JudgeIncomplete(problems, findings.compatibility, findings.compatibility.openSsl);
    bool const isRead = !findings.compatibility.file.empty() && !findings.compatibility.parseError;
    if (openSsl.file.empty() && !isRead)
        return; // as said of that file
    ModuleList const& list = findings.compatibility.openSsl;
    if (openSsl.file.empty()) {
        std::vector<Hint> hints;
        AddListHints(findings.compatibility, list, hints);
        // Few plugins need one.
        if (list.isNothingListed && hints.empty())
            return;
        std::string const zeros = RemedyOfZeros(list);
        problems.Add(Warning, "openssl-not-chosen", Subject::OpenSsl,
                     (list.problem.empty() ? "no OpenSSL module fits"
                                           : "no OpenSSL module is listed: " + list.problem) +
                         ReasonsOf(list) + "; the plugin is given no path",
                     !hints.empty()   ? hints.front().remedy
                     : !zeros.empty() ? zeros
                                      : "install one, with its entry in the version "
                                        "compatibility file");
    } else if (!openSsl.presence.isThere && openSsl.presence.reason.empty())
        AddMissingOpenSsl(problems, openSsl);
    else if (!openSsl.presence.flaw.empty())
        problems.Add(Warning, "openssl-not-a-file", Subject::OpenSsl,
                     "the OpenSSL module " + openSsl.file + " " + openSsl.presence.flaw +
                         GivenAnyway,
                     "install it there");
}

} // namespace Halvorix::Doctor
