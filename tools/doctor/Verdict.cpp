#include "Verdict.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "Text.h"
#include "Words.h"

namespace Halvorix::Doctor {

namespace {

enum Weight { Fatal, Cause, Warning };

std::string Placed(std::string const& file, Position at)
{
    if (at.line == 0)
        return file;
    return file + ", line " + std::to_string(at.line) + ", column " + std::to_string(at.column);
}

std::string DirectoryName(std::string const& path)
{
    return path.empty() ? "the current directory" : path;
}

std::string DirectoriesOf(Search const& search)
{
    std::string list;
    for (Directory const& directory : search.tried)
        list += (list.empty() ? "" : ", ") + DirectoryName(directory.path);
    return list;
}

std::vector<std::string> UnknownOf(Search const& search)
{
    std::vector<std::string> unknown;
    for (Directory const& directory : search.tried)
        unknown.insert(unknown.end(), directory.unknown.begin(), directory.unknown.end());
    return unknown;
}

std::string IsNoVariable(std::vector<std::string> const& unknown)
{
    return ListedVariables(unknown) + (unknown.size() == 1 ? " has" : " have") + " no value";
}

class Judgement {
public:
    explicit Judgement(Findings const& facts) : findings(facts) {}

    Verdict Take()
    {
        JudgeProgram();
        JudgeClientConfig();
        JudgeInterruptions();
        JudgeServerApp();
        JudgeCompatibility();
        JudgePlugin();
        JudgeInterruptionsAfterPlugin();
        JudgeLoad();
        JudgeOpenSsl();
        return std::move(verdict);
    }

private:
    void Add(Weight weight, char const* code, std::string const& text, std::string const& remedy)
    {
        verdict.problems.push_back({code, text, remedy, weight == Fatal, weight == Cause});
        verdict.canWork = verdict.canWork && weight != Fatal;
    }

    void JudgeProgram()
    {
        Program const& program = findings.program;
        if (!program.executableMachine.empty() && program.executableMachine != program.ownMachine)
            Add(Fatal, "executable-of-other-architecture",
                program.executable + " is for " + program.executableMachine +
                    " and this doctor for " + program.ownMachine,
                "run the doctor of the package for " + program.executableMachine);
        if (program.libraryFile.empty())
            Add(Fatal, "library-missing",
                program.libraryName + " is not where " + program.executable +
                    " would load it from" +
                    (program.libraryHint.empty() ? "" : ": " + program.libraryHint),
                program.libraryRemedy.empty()
                    ? "install it beside the program, or name its file with --library"
                    : program.libraryRemedy);
        else if (!program.libraryFlaw.empty())
            Add(Fatal, "library-damaged", program.libraryFile + " " + program.libraryFlaw,
                "install the library anew");
        else if (program.libraryMachine != program.ownMachine)
            Add(Fatal, "library-of-other-architecture",
                program.libraryFile + " is for " + program.libraryMachine +
                    " and this doctor for " + program.ownMachine,
                "install the library that is built for the program");
        else if (!program.fileVersion.empty() && program.fileVersion != program.ownFileVersion)
            Add(Warning, "library-of-other-version",
                program.libraryFile + " is version " + program.fileVersion +
                    ", and this doctor speaks for " + program.ownFileVersion,
                "run the doctor of that version");
        for (Tools::Check const& check : program.libraryChecks)
            Add(Fatal, ("library-" + check.name).c_str(),
                "the library " + program.libraryFile + ": " + check.name + ": " + check.detail,
                check.name == "dependencies" ? "install what is missing beside the library"
                                             : "install the library anew");
    }

    void JudgeClientConfig()
    {
        ClientConfig const& config = findings.config;
        if (!config.override.empty() && config.state == ConfigState::NoFile)
            Add(Cause, "client-config-override-missing",
                "the client configuration " + config.override +
                    " that the program names does not exist, and no other is looked for",
                "put the file there, or let the program name the right one");
        if (IsStopped(config.parseError))
            AddStopped("client-config-too-deep", "the client configuration", config.file,
                       *config.parseError);
        else if (config.parseError)
            Add(Cause, "client-config-not-json",
                "the client configuration is no JSON: " +
                    Placed(config.file, config.parseError->at) + ": " + config.parseError->message,
                "mend that line, or remove the file if the defaults are wanted");
        JudgeOddities("client-config-wrong-type", "client-config-unknown-key",
                      "the client configuration", config.file, config.oddities);
        if (config.isInWorkingDirectory)
            Add(Warning, "client-config-in-working-directory",
                "the client configuration was found in the current directory alone",
                "put the file beside the executable");
    }

    static bool IsStopped(std::optional<ParseError> const& error)
    {
        return error && error->stopsReading;
    }

    void AddStopped(char const* code, std::string const& what, std::string const& file,
                    ParseError const& error)
    {
        Add(Fatal, code, what + " cannot be read: " + Placed(file, error.at) + ": " + error.message,
            "put the right file there");
    }

    void JudgeOddities(char const* fatalCode, char const* warningCode, std::string const& what,
                       std::string const& file, std::vector<Oddity> const& oddities)
    {
        for (Oddity const& oddity : oddities) {
            if (oddity.stopsReading)
                Add(Fatal, fatalCode,
                    what + " cannot be read: " + Placed(file, oddity.at) + ": " + oddity.key +
                        " is " + oddity.text,
                    "mend that value");
            else
                Add(Warning, warningCode,
                    what + ": " + Placed(file, oddity.at) + ": " + oddity.key + " is " +
                        oddity.text,
                    "mend or remove it");
        }
    }

    bool IsConfigStopped() const { return findings.config.state == ConfigState::Stopped; }

    void JudgeServerApp()
    {
        ServerApp const& server = findings.server;
        if (IsConfigStopped())
            return; // said already; nothing of it was searched for
        if (server.isInWorkingDirectory) {
            bool const isElsewhereToo = std::any_of(
                server.search.tried.begin(), server.search.tried.end(),
                [](Directory const& directory) { return directory.finding == Finding::LaterHit; });
            Add(Fatal, "server-application-in-working-directory",
                "the server application " + server.search.file +
                    " was found in the current directory " +
                    (isElsewhereToo ? "before all others" : "alone") +
                    ", so that the library has no path for it",
                "name its directory in ssoServer.searchPaths of the client configuration, in the "
                "place of the empty entry");
        } else if (server.directory.empty()) {
            std::vector<std::string> const unknown = UnknownOf(server.search);
            std::string const missing =
                "the server application " + server.search.file +
                " is in none of the directories searched: " + DirectoriesOf(server.search) +
                MisspeltKeys();
            if (unknown.empty())
                Add(Fatal, "server-application-missing", missing,
                    "install it, or name its directory in ssoServer.searchPaths of the client "
                    "configuration");
            else
                Add(Fatal, "search-path-with-unknown-variable",
                    missing + "; " + IsNoVariable(unknown),
                    "put the directories right in ssoServer.searchPaths of the client "
                    "configuration");
        } else if (!server.presence.isThere) {
            Add(Fatal, "server-executable-missing",
                "the server application was found in " + server.directory +
                    ", but its executable " + server.executable + " " + Words(server.presence),
                "put ssoServer.exeName of the client configuration right, or install it anew");
        }
    }

    // Of those that say where the server application lies and how it is named.
    std::string MisspeltKeys() const
    {
        std::string text;
        for (Oddity const& oddity : findings.config.oddities)
            for (char const* const key :
                 {"ssoServer", "ssoServer.searchPaths", "ssoServer.appName", "ssoServer.exeName"})
                if (oddity.meant == key)
                    text += "; " + oddity.key + " is " + oddity.text;
        return text;
    }

    void JudgeCompatibility()
    {
        Compatibility const& file = findings.compatibility;
        if (IsConfigStopped())
            return;
        if (file.file.empty()) {
            std::vector<std::string> const unknown = UnknownOf(file.search);
            Add(Fatal, "compatibility-file-missing",
                "the version compatibility file " + file.search.file +
                    " is in none of the directories searched: " + DirectoriesOf(file.search) +
                    (unknown.empty() ? "" : "; " + IsNoVariable(unknown)),
                "install it beside the server application");
            return;
        }
        if (IsStopped(file.parseError)) {
            AddStopped("compatibility-file-too-deep", "the version compatibility file", file.file,
                       *file.parseError);
            return;
        }
        if (file.parseError) {
            Add(Fatal, "compatibility-file-not-json",
                "the version compatibility file is no JSON: " +
                    Placed(file.file, file.parseError->at) + ": " + file.parseError->message,
                "mend that line, or install the file anew");
            return;
        }
        JudgeCompatibilityOddities(false);
        JudgeStoppingModules(file.plugins);
        if (file.isInWorkingDirectory)
            Add(Warning, "compatibility-file-in-working-directory",
                "the version compatibility file was found in the current directory alone",
                "put the file beside the server application");
        if (findings.plugin.file.empty())
            JudgeNoPlugin(file);
    }

    // The list of OpenSSL is read when the plugin is there already.
    void JudgeCompatibilityOddities(bool isAfterPlugin)
    {
        Compatibility const& file = findings.compatibility;
        std::vector<Oddity> oddities;
        std::copy_if(file.oddities.begin(), file.oddities.end(), std::back_inserter(oddities),
                     [isAfterPlugin](Oddity const& oddity) {
                         return StopsOpenSsl(oddity) == isAfterPlugin;
                     });
        JudgeOddities("compatibility-file-wrong-type", "compatibility-file-unknown-key",
                      "the version compatibility file", file.file, oddities);
    }

    static bool StopsOpenSsl(Oddity const& oddity)
    {
        return oddity.stopsReading && oddity.key.rfind("openssl", 0) == 0;
    }

    // Where the value itself is not told already.
    void JudgeStoppingModules(ModuleList const& list)
    {
        Compatibility const& file = findings.compatibility;
        std::set<std::string> told;
        for (Oddity const& oddity : file.oddities)
            if (oddity.stopsReading)
                told.insert(oddity.key.substr(0, oddity.key.find('.')));
        for (Module const& module : list.modules) {
            std::string const name = list.key + "[" + std::to_string(module.number) + "]";
            if (module.fit == Fit::StopsReading && told.count(name) == 0)
                Add(Fatal, "compatibility-file-wrong-type",
                    "the version compatibility file cannot be read: " +
                        Placed(file.file, module.at) + ": " + name + ": " + module.detail,
                    "mend that object");
        }
    }

    void JudgeNoPlugin(Compatibility const& file)
    {
        ModuleList const& list = file.plugins;
        if (AnyStops(file.oddities) || AnyStops(list))
            return;
        std::string reasons;
        for (Module const& module : list.modules)
            if (!module.detail.empty())
                reasons += (reasons.empty() ? "" : "; ") + std::to_string(module.number) + ". " +
                           (module.name.empty() ? "(no name)" : module.name) + ": " + module.detail;
        std::string misspelt;
        for (Oddity const& oddity : file.oddities)
            if (oddity.meant.rfind(list.key, 0) == 0)
                misspelt += "; " + oddity.key + " is " + oddity.text;
        if (!list.problem.empty())
            Add(Fatal, "no-plugin-listed",
                "the version compatibility file " + file.file + " lists no client plugin: " +
                    list.problem + (reasons.empty() ? "" : " (" + reasons + ")") + misspelt,
                "complete the file, or install it anew");
        else
            Add(Fatal, "no-plugin-fits",
                "no client plugin of " + file.file + " is for version " + findings.program.version +
                    " of the library (" + reasons + ")" + misspelt,
                "install a client plugin for this version, with its entry in that file");
    }

    void JudgePlugin()
    {
        Plugin const& plugin = findings.plugin;
        if (plugin.file.empty())
            return;
        if (!plugin.presence.reason.empty())
            return; // told as an interruption
        if (!plugin.presence.isThere) {
            std::vector<std::string> const unknown = VariablesIn(Wide(plugin.file));
            Add(Fatal, "plugin-file-missing",
                "the chosen client plugin " + plugin.file + " does not exist" +
                    (unknown.empty() ? "" : "; " + IsNoVariable(unknown)),
                "install it there, or put its entry right in " + findings.compatibility.file);
            return;
        }
        JudgeChecks(plugin.fileChecks);
        JudgeChecks(plugin.loadChecks);
    }

    void JudgeChecks(std::vector<Tools::Check> const& checks)
    {
        struct Remedy {
            char const* check;
            char const* text;
        };
        static constexpr Remedy remedies[] = {
            {"file", "install the plugin anew"},
            {"module", "install the plugin anew"},
            {"architecture", "install the plugin that is built for this architecture"},
            {"dependencies", "install what is missing beside the plugin"},
            {"export", "install a plugin that is built for this library"},
            {"runtime", "install a plugin that is built with the library's compiler"},
            {"jsoncpp", "install a plugin that is built with the library's jsoncpp"},
            {"symbols", "install modules that fit together, or the plugin anew"},
            {"loader", "install the tools anew"},
            {"load", "install what the system asks for, or the plugin anew"},
        };
        for (Tools::Check const& check : checks) {
            if (check.result != Tools::Result::Failed)
                continue;
            auto const remedy =
                std::find_if(std::begin(remedies), std::end(remedies),
                             [&check](Remedy const& known) { return check.name == known.check; });
            Add(Fatal, ("plugin-" + check.name).c_str(),
                "the client plugin " + findings.plugin.file + ": " + check.name + ": " +
                    check.detail,
                remedy == std::end(remedies) ? "ask who delivers the plugin" : remedy->text);
        }
    }

    static bool AnyStops(std::vector<Oddity> const& oddities)
    {
        return std::any_of(oddities.begin(), oddities.end(),
                           [](Oddity const& oddity) { return oddity.stopsReading; });
    }

    static bool AnyStops(ModuleList const& list)
    {
        return std::any_of(list.modules.begin(), list.modules.end(),
                           [](Module const& module) { return module.fit == Fit::StopsReading; });
    }

    // Those of wrong types are told by the place in the file.
    void JudgeInterruptions()
    {
        std::vector<Oddity> const& oddities = findings.compatibility.oddities;
        bool const isTold = IsToldBefore() ||
                            std::any_of(oddities.begin(), oddities.end(), [](Oddity const& oddity) {
                                return oddity.stopsReading && !StopsOpenSsl(oddity);
                            });
        if (!isTold && !AnyStops(findings.compatibility.plugins))
            AddInterruptions(false);
    }

    void JudgeInterruptionsAfterPlugin()
    {
        Compatibility const& file = findings.compatibility;
        if (!IsToldBefore() && !AnyStops(file.oddities) && !AnyStops(file.plugins) &&
            !AnyStops(file.openSsl))
            AddInterruptions(true);
    }

    bool IsToldBefore() const
    {
        return IsStopped(findings.config.parseError) ||
               IsStopped(findings.compatibility.parseError) || AnyStops(findings.config.oddities);
    }

    void AddInterruptions(bool areAfterPlugin)
    {
        for (Interruption const& interruption : findings.interruptions)
            if (interruption.isAfterPlugin == areAfterPlugin)
                AddInterruption(interruption);
    }

    void AddInterruption(Interruption const& interruption)
    {
        Add(Fatal, "library-stops",
            "the library ends " + interruption.during + " with an exception: " + interruption.text,
            "see to it that the files and directories named above can be read");
    }

    void JudgeLoad()
    {
        // An exception that ended it is told as an interruption.
        if (!findings.load || findings.load->worked || findings.load->isInterrupted)
            return;
        Add(Fatal, "load-failed",
            "the library could not load the client plugin: " +
                Tools::Presentable(ReasonOf(*findings.load)),
            "ask who delivers the plugin");
    }

    // An empty factory is not logged, and errors of before have nothing to do with it.
    static std::string ReasonOf(RealLoad const& load)
    {
        if (!load.death.empty())
            return load.death;
        std::string const getting = BeginningOf(SSOServices::Messages::FactoryGetting);
        if (!load.lines.empty() && load.lines.back().text.rfind(getting, 0) == 0)
            return "it gives no factory";
        auto const last = std::find_if(load.lines.rbegin(), load.lines.rend(),
                                       [](LogLine const& line) { return line.level == 2; });
        return last == load.lines.rend() ? "the log does not say why" : last->text;
    }

    // A load goes on without it, and the plugin is told all the same.
    void JudgeOpenSsl()
    {
        OpenSsl const& openSsl = findings.openSsl;
        if (IsConfigStopped())
            return;
        JudgeCompatibilityOddities(true);
        JudgeStoppingModules(findings.compatibility.openSsl);
        if (openSsl.file.empty())
            Add(Warning, "openssl-not-chosen", "no OpenSSL module fits; the plugin is told of none",
                "install one, with its entry in the version compatibility file");
        else if (!openSsl.presence.isThere && openSsl.presence.reason.empty())
            Add(Warning, "openssl-missing",
                "the OpenSSL module " + openSsl.file +
                    " does not exist; the plugin is told of it all the same",
                "install it there");
    }

    Findings const& findings;
    Verdict verdict;
};

} // namespace

Problem const* Verdict::First() const
{
    auto const first = std::find_if(problems.begin(), problems.end(), [](Problem const& problem) {
        return problem.isFatal || problem.isCause;
    });
    return canWork ? nullptr : &*first;
}

std::string Told(Problem const& problem)
{
    return Tools::Presentable(problem.text + ". To do: " + problem.remedy);
}

std::string Told(Verdict const& verdict)
{
    Problem const* const first = verdict.First();
    return first == nullptr ? "sign-in can work" : Told(*first);
}

Verdict Judge(Findings const& findings) { return Judgement(findings).Take(); }

} // namespace Halvorix::Doctor
