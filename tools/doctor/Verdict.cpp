#include "Verdict.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "../common/System.h"
#include "FileFlaw.h"
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

std::string DirectoriesOf(Search const& search)
{
    std::vector<std::string> paths;
    for (Directory const& directory : search.tried)
        paths.push_back(directory.path.empty() ? "the current directory" : directory.path);
    return Listed(paths, ", ");
}

std::vector<std::string> UnknownOf(Search const& search)
{
    std::vector<std::string> unknown;
    for (Directory const& directory : search.tried)
        unknown.insert(unknown.end(), directory.unknown.begin(), directory.unknown.end());
    return unknown;
}

std::string HaveNoValue(std::vector<std::string> const& unknown)
{
    return ListedVariables(unknown) + (unknown.size() == 1 ? " has" : " have") + " no value";
}

std::string Joined(std::string const& directory, std::string const& name)
{
    return directory.empty() ? name : directory + "/" + name;
}

std::string NameOf(std::string const& file) { return file.substr(file.rfind('/') + 1); }

/// What may have led to something missing, and what to do then.
struct Hint {
    std::string text;
    std::string remedy;
};

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
        verdict.isLoaded = !findings.plugin.loadChecks.empty();
        return std::move(verdict);
    }

private:
    void Add(Weight weight, char const* code, Subject subject, std::string const& text,
             std::string const& remedy)
    {
        verdict.problems.push_back({code, subject, Tools::Presentable(text),
                                    Tools::Presentable(remedy), weight == Fatal, weight == Cause});
        verdict.canWork = verdict.canWork && weight != Fatal;
    }

    void JudgeProgram()
    {
        Program const& program = findings.program;
        if (!program.executableFlaw.empty())
            Add(Fatal, "executable-not-a-program", Subject::Program,
                program.executable + " " + program.executableFlaw,
                "name the program's executable with --exe");
        else if (program.executableMachine != program.ownMachine)
            Add(Fatal, "executable-of-other-architecture", Subject::Program,
                program.executable + " is for " + program.executableMachine +
                    ", and this doctor for " + program.ownMachine,
                "run the doctor of the package for " + program.executableMachine);
        if (program.libraryFile.empty())
            JudgeMissingLibrary();
        else if (!program.libraryFlaw.empty())
            Add(Fatal, "library-damaged", Subject::Program,
                program.libraryFile + " " + program.libraryFlaw, "install the library again");
        else if (program.libraryMachine != program.ownMachine)
            Add(Fatal, "library-of-other-architecture", Subject::Program,
                program.libraryFile + " is for " + program.libraryMachine +
                    ", and this doctor for " + program.ownMachine,
                "install the library that is built for the program");
        else if (!program.fileVersion.empty() && program.fileVersion != program.ownFileVersion)
            Add(Warning, "library-of-other-version", Subject::Program,
                program.libraryFile + " is version " + program.fileVersion +
                    ", and this doctor is for version " + program.ownFileVersion,
                "run the doctor of that version");
        for (Tools::Check const& check : program.libraryChecks)
            JudgeLibraryCheck(check);
    }

    void JudgeLibraryCheck(Tools::Check const& check)
    {
        Program const& program = findings.program;
        if (check.name == "program")
            Add(Fatal, "program-dependencies", Subject::Program,
                "the program " + program.executable + " does not start: " + check.detail,
                "install what is missing where the program's loader looks, or the program again");
        else
            Add(Fatal, ("library-" + check.name).c_str(), Subject::Program,
                "the library " + program.libraryFile + ": " + check.name + ": " + check.detail,
                check.name == "dependencies" ? "install what is missing beside the library"
                                             : "install the library again");
    }

    void JudgeMissingLibrary()
    {
        Program const& program = findings.program;
        std::string remedy = "install it beside the program, or name its file with --library";
        if (!program.isNamed)
            remedy = "name the program with --exe";
        else if (program.executableFlaw.empty() && !program.libraryRemedy.empty())
            remedy = program.libraryRemedy;
        Add(Fatal, "library-missing", Subject::Program,
            program.libraryName + " is not where " + program.executable + " would load it from" +
                (program.libraryHint.empty() ? "" : ": " + program.libraryHint),
            remedy);
    }

    void JudgeClientConfig()
    {
        ClientConfig const& config = findings.config;
        if (config.state == ConfigState::NoFile && !config.override.empty())
            Add(Cause, "client-config-override-missing", Subject::ClientConfig,
                "the client configuration " + config.override +
                    ", which the program names, does not exist, and no other is looked for",
                "put the file there, or have the program name the right one");
        if (config.state == ConfigState::NoFile)
            JudgeSimilar(config.search, "client-config-other-name", Subject::ClientConfig,
                         "the client configuration");
        if (config.parseError)
            AddDamage(*config.parseError, "client-config", Subject::ClientConfig,
                      "the client configuration", config.file,
                      ", or remove the file if the defaults are wanted");
        JudgeUnaskedLocation();
        JudgeOddities("client-config", Subject::ClientConfig, config.file, config.oddities);
        if (config.isInWorkingDirectory)
            Add(Warning, "client-config-in-working-directory", Subject::ClientConfig,
                "the client configuration was found in the current directory only",
                "put the file beside the program");
    }

    // A file that was meant, under a name that nobody looks for.
    void JudgeSimilar(Search const& search, char const* code, Subject subject,
                      std::string const& what)
    {
        for (Directory const& directory : search.tried) {
            if (directory.similar.empty())
                continue;
            Add(IsServerAppLost() ? Cause : Warning, code, subject,
                what + " " + Joined(directory.path, directory.similar) +
                    " is not read: " + DifferenceOf(directory.similar, search.file),
                "rename it to " + search.file);
            return;
        }
    }

    // That is what the client configuration leads to.
    bool IsServerAppLost() const
    {
        return findings.server.directory.empty() || findings.compatibility.file.empty();
    }

    void AddDamage(ParseError const& error, std::string const& code, Subject subject,
                   std::string const& what, std::string const& file, std::string const& otherwise)
    {
        struct Kind {
            Damage damage;
            char const* remedy;
        };
        static constexpr Kind kinds[] = {
            {Damage::NotJson, "correct that line"},
            {Damage::NotOpened, "allow the program's user to read it"},
            {Damage::NoFile, "put the file in its place"},
            {Damage::Empty, "write its content into it"},
            {Damage::Utf16, "save the file as UTF-8"},
            {Damage::ByteOrderMark, "save the file as UTF-8 without a byte order mark"},
            {Damage::TooDeep, "put the right file there"},
        };
        Kind const& kind =
            *std::find_if(std::begin(kinds), std::end(kinds),
                          [&error](Kind const& known) { return known.damage == error.damage; });
        std::string const place = Placed(file, error.at);
        // No default follows an exception, and without the other file there is no plugin.
        bool const isFatal = subject == Subject::Compatibility || error.StopsReading();
        Add(isFatal ? Fatal : Cause, (code + "-" + Code(error.damage)).c_str(), subject,
            error.damage == Damage::NotJson
                ? what + " is not valid JSON: " + place + ": " + error.message
            : error.damage == Damage::TooDeep
                ? what + " cannot be read: " + place + ": " + error.message
                : what + " " + file + " " + error.message,
            kind.remedy + (error.StopsReading() || error.damage == Damage::NoFile ? std::string()
                                                                                  : otherwise));
    }

    void JudgeUnaskedLocation()
    {
        ClientConfig const& config = findings.config;
        if (!config.unasked)
            return;
        bool const isThere = config.state != ConfigState::NoFile;
        Add(config.unasked->holdsServerApp && IsServerAppLost() ? Cause : Warning,
            "location-not-asked", Subject::ClientConfig,
            Tools::NameOfLocation() + (" names " + config.unasked->path) +
                (config.unasked->holdsServerApp ? ", where the server application is"
                                                : ", where the server application is not") +
                "; the library asks for it only after it has read a client configuration, and " +
                (isThere ? "that one cannot be read" : "there is none"),
            isThere ? "correct the client configuration"
                    : "put a client configuration beside the program; {} suffices");
    }

    void JudgeOddities(std::string const& code, Subject subject, std::string const& file,
                       std::vector<Oddity> const& oddities)
    {
        std::string const what = subject == Subject::ClientConfig
                                     ? "the client configuration"
                                     : "the version compatibility file";
        for (Oddity const& oddity : oddities)
            Add(oddity.stopsReading ? Fatal : Warning, (code + "-" + oddity.code).c_str(), subject,
                what + (oddity.stopsReading ? " cannot be read: " : ": ") +
                    Placed(file, oddity.at) + ": " + InWords(oddity.key) + " " + oddity.text,
                oddity.remedy);
    }

    bool IsConfigStopped() const { return findings.config.state == ConfigState::Stopped; }

    void JudgeServerApp()
    {
        ServerApp const& server = findings.server;
        if (IsConfigStopped() || server.search.file.empty())
            return; // said already; nothing of it was searched for
        if (server.isInWorkingDirectory) {
            bool const isElsewhereToo = std::any_of(
                server.search.tried.begin(), server.search.tried.end(),
                [](Directory const& directory) { return directory.finding == Finding::LaterHit; });
            Add(Fatal, "server-application-in-working-directory", Subject::ServerApp,
                "the server application " + server.search.file +
                    " was found in the current directory " +
                    (isElsewhereToo ? "before all others" : "only") +
                    ", so that the library has no path for it",
                "name its directory in ssoServer.searchPaths of the client configuration, in place "
                "of the empty entry");
        } else if (server.directory.empty()) {
            AddMissingServerApp(server);
        } else if (!server.presence.isThere) {
            Add(Fatal, "server-executable-missing", Subject::ServerApp,
                "the server application was found in " + server.directory +
                    ", but its executable " + server.executable + " " + Words(server.presence),
                "correct ssoServer.exeName of the client configuration, or install the server "
                "application again");
        } else if (!server.presence.flaw.empty()) {
            Add(Fatal, "server-executable-not-a-file", Subject::ServerApp,
                "the server application's executable " + server.executable + " " +
                    server.presence.flaw,
                "correct ssoServer.exeName of the client configuration, or install the server "
                "application again");
        }
    }

    void AddMissingServerApp(ServerApp const& server)
    {
        // The library ends there with an exception, which is told.
        if (std::any_of(server.search.tried.begin(), server.search.tried.end(),
                        [](Directory const& directory) {
                            return directory.finding == Finding::Unreadable;
                        }))
            return;
        std::vector<std::string> const unknown = UnknownOf(server.search);
        std::vector<Hint> hints;
        AddSimilar(server.search, hints);
        AddHints(findings.config.oddities,
                 {"ssoServer", "ssoServer.searchPaths", "ssoServer.appName", "ssoServer.exeName"},
                 hints);
        if (!unknown.empty())
            hints.push_back({HaveNoValue(unknown),
                             "correct the directories in ssoServer.searchPaths of the client "
                             "configuration"});
        AddMissing(unknown.empty() ? "server-application-missing"
                                   : "search-path-with-unknown-variable",
                   Subject::ServerApp,
                   "the server application " + server.search.file +
                       " is in none of the directories searched: " + DirectoriesOf(server.search),
                   "install it, or name its directory in ssoServer.searchPaths of the client "
                   "configuration",
                   hints);
    }

    static void AddSimilar(Search const& search, std::vector<Hint>& hints)
    {
        for (Directory const& directory : search.tried)
            if (!directory.similar.empty())
                hints.push_back({Joined(directory.path, directory.similar) + " is there, but " +
                                     DifferenceOf(directory.similar, search.file),
                                 "rename it to " + search.file});
    }

    // Those of these keys, and of what was meant for one of them.
    static void AddHints(std::vector<Oddity> const& oddities, std::vector<std::string> const& keys,
                         std::vector<Hint>& hints)
    {
        for (Oddity const& oddity : oddities)
            for (std::string const& key : keys)
                if (oddity.meant == key || oddity.key == key)
                    hints.push_back({InWords(oddity.key) + " " + oddity.text, oddity.remedy});
    }

    // The hint that comes first has the remedy: it is nearer than that of what is missing.
    void AddMissing(char const* code, Subject subject, std::string const& text,
                    std::string const& remedy, std::vector<Hint> const& hints)
    {
        std::vector<std::string> texts;
        texts.reserve(hints.size());
        for (Hint const& hint : hints)
            texts.push_back(hint.text);
        Add(Fatal, code, subject, text + (texts.empty() ? "" : "; " + Listed(texts, "; ")),
            hints.empty() ? remedy : hints.front().remedy);
    }

    void JudgeCompatibility()
    {
        Compatibility const& file = findings.compatibility;
        if (IsConfigStopped() || file.search.file.empty())
            return;
        if (file.file.empty()) {
            // Without the server application there is no place for it.
            if (!findings.server.directory.empty())
                AddMissingCompatibility(file);
            return;
        }
        if (file.parseError) {
            AddDamage(*file.parseError, "compatibility-file", Subject::Compatibility,
                      "the version compatibility file", file.file, ", or install the file again");
            return;
        }
        JudgeCompatibilityOddities(false);
        JudgeStoppingModules(file.plugins);
        if (file.isInWorkingDirectory)
            Add(Warning, "compatibility-file-in-working-directory", Subject::Compatibility,
                "the version compatibility file was found in the current directory only",
                "put the file beside the server application");
        if (findings.plugin.file.empty())
            JudgeNoPlugin(file);
    }

    void AddMissingCompatibility(Compatibility const& file)
    {
        std::vector<Hint> hints;
        AddSimilar(file.search, hints);
        for (Directory const& directory : file.search.tried)
            if (NameOf(directory.path) == file.search.file)
                hints.push_back(
                    {"ssoServer.VersionCompatibilityConfigfilePath names the file, not its folder",
                     "remove the file's name from that path"});
        AddHints(findings.config.oddities, {"ssoServer.VersionCompatibilityConfigfilePath"}, hints);
        std::vector<std::string> const unknown = UnknownOf(file.search);
        if (!unknown.empty())
            hints.push_back({HaveNoValue(unknown), "install it beside the server application"});
        AddMissing("compatibility-file-missing", Subject::Compatibility,
                   "the version compatibility file " + file.search.file +
                       " is in none of the directories searched: " + DirectoriesOf(file.search),
                   "install it beside the server application", hints);
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
        JudgeOddities("compatibility-file", Subject::Compatibility, file.file, oddities);
    }

    static bool StopsOpenSsl(Oddity const& oddity)
    {
        return oddity.stopsReading && oddity.key.rfind("openssl", 0) == 0;
    }

    // Where the value itself is not told already.
    void JudgeStoppingModules(ModuleList const& list)
    {
        Compatibility const& file = findings.compatibility;
        std::set<std::string> told; // the entries
        for (Oddity const& oddity : file.oddities)
            if (oddity.stopsReading)
                told.insert(oddity.key.substr(0, oddity.key.find('.')));
        for (Module const& module : list.modules) {
            std::string const key = list.key + "[" + std::to_string(module.number - 1) + "]";
            if (module.fit == Fit::StopsReading && told.count(key) == 0)
                Add(Fatal, "compatibility-file-wrong-type", Subject::Compatibility,
                    "the version compatibility file cannot be read: " +
                        Placed(file.file, module.at) + ": " + InWords(key) + ": " + module.detail,
                    "correct that entry");
        }
    }

    void JudgeNoPlugin(Compatibility const& file)
    {
        ModuleList const& list = file.plugins;
        if (AnyStops(file.oddities) || AnyStops(list))
            return;
        std::vector<std::string> entries;
        for (Module const& module : list.modules)
            if (!module.detail.empty())
                entries.push_back(std::to_string(module.number) + ". " +
                                  (module.name.empty() ? "(no name)" : module.name) + ": " +
                                  module.detail);
        std::string const reasons = entries.empty() ? "" : " (" + Listed(entries, "; ") + ")";
        std::vector<Hint> hints;
        for (Oddity const& oddity : file.oddities)
            if (oddity.meant.rfind(list.key, 0) == 0 ||
                (oddity.key.rfind(list.key, 0) == 0 &&
                 (oddity.code == "repeated-key" ||
                  (oddity.code == "not-quoted" &&
                   oddity.key.find(".compatibleSsoServicesVersion.") != std::string::npos))))
                hints.push_back({InWords(oddity.key) + " " + oddity.text, oddity.remedy});
        if (!list.problem.empty())
            AddMissing("no-plugin-listed", Subject::Compatibility,
                       "the version compatibility file " + file.file +
                           " lists no client plugin: " + list.problem + reasons,
                       "complete the file, or install it again", hints);
        else
            AddMissing("no-plugin-fits", Subject::Compatibility,
                       "no client plugin in " + file.file + " is for version " +
                           findings.program.version + " of the library" + reasons,
                       "install a client plugin for this version, with its entry in that file",
                       hints);
    }

    void JudgePlugin()
    {
        Plugin const& plugin = findings.plugin;
        if (plugin.file.empty())
            return;
        if (plugin.presence.isOutOfReach) {
            Add(Fatal, "plugin-out-of-reach", Subject::Plugin,
                "the client plugin " + plugin.file +
                    " is there, but the library does not find a path with characters beyond U+FFFF",
                "install it in a folder without such characters");
            return;
        }
        if (!plugin.presence.reason.empty())
            return; // told as an interruption
        if (!plugin.presence.isThere) {
            AddMissingPlugin(plugin);
            return;
        }
        JudgeChecks(plugin.fileChecks);
        JudgeChecks(plugin.loadChecks);
    }

    void AddMissingPlugin(Plugin const& plugin)
    {
        std::vector<Hint> hints;
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
        std::vector<std::string> const unknown = VariablesIn(Wide(plugin.file));
        std::string const entry =
            "install it there, or correct its entry in " + findings.compatibility.file;
        if (!unknown.empty())
            hints.push_back({HaveNoValue(unknown), entry});
        AddMissing("plugin-file-missing", Subject::Plugin,
                   "the chosen client plugin " + plugin.file + " does not exist", entry, hints);
    }

    void JudgeChecks(std::vector<Tools::Check> const& checks)
    {
        struct Remedy {
            char const* check;
            char const* text;
        };
        static constexpr Remedy remedies[] = {
            {"file", "install the plugin again, so that the program's user can read it"},
            {"module", "install the plugin again"},
            {"architecture", "install the plugin that is built for this architecture"},
            {"dependencies", "install what is missing beside the plugin"},
            {"export", "install a plugin that is built for this library"},
            {"runtime", "install a plugin that is built with the library's compiler"},
            {"jsoncpp", "install a plugin that is built with the library's jsoncpp"},
            {"symbols", "install modules that fit together, or the plugin again"},
            {"loader", "install the tools again"},
            {"load", "install what the system asks for, or the plugin again"},
        };
        for (Tools::Check const& check : checks) {
            if (check.result != Tools::Result::Failed)
                continue;
            auto const remedy =
                std::find_if(std::begin(remedies), std::end(remedies),
                             [&check](Remedy const& known) { return check.name == known.check; });
            Add(Fatal, ("plugin-" + check.name).c_str(), Subject::Plugin,
                "the client plugin " + findings.plugin.file + ": " + check.name + ": " +
                    check.detail,
                remedy == std::end(remedies) ? "ask the plugin's vendor" : remedy->text);
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

    static bool IsStopped(std::optional<ParseError> const& error)
    {
        return error && error->StopsReading();
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

    // One reason stops several questions.
    void AddInterruptions(bool areAfterPlugin)
    {
        for (Interruption const& interruption : findings.interruptions) {
            // A plugin that is out of reach is told of as such.
            if (interruption.isAfterPlugin != areAfterPlugin ||
                (findings.plugin.presence.isOutOfReach &&
                 interruption.text == findings.plugin.presence.reason) ||
                std::find(toldInterruptions.begin(), toldInterruptions.end(), interruption.text) !=
                    toldInterruptions.end())
                continue;
            toldInterruptions.push_back(interruption.text);
            Add(Fatal, "library-stops", areAfterPlugin ? Subject::Load : Subject::Program,
                "the library ends " + interruption.during +
                    " with an exception: " + interruption.text,
                "allow the program's user to read the files and folders that it looks for");
        }
    }

    void JudgeLoad()
    {
        // An exception that ended it is told as an interruption.
        if (!findings.load || findings.load->worked || findings.load->isInterrupted)
            return;
        Add(Fatal, "load-failed", Subject::Load,
            "the library could not load the client plugin: " + ReasonOf(*findings.load),
            "ask the plugin's vendor");
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
        if (IsConfigStopped() || findings.compatibility.search.file.empty())
            return;
        JudgeCompatibilityOddities(true);
        JudgeStoppingModules(findings.compatibility.openSsl);
        std::string const told = "; the plugin is told of it all the same";
        bool const isRead =
            !findings.compatibility.file.empty() && !findings.compatibility.parseError;
        if (openSsl.file.empty() && !isRead)
            return; // as said of that file
        if (openSsl.file.empty())
            Add(Warning, "openssl-not-chosen", Subject::OpenSsl,
                "no OpenSSL module fits; the plugin is told of none",
                "install one, with its entry in the version compatibility file");
        else if (!openSsl.presence.isThere && openSsl.presence.reason.empty())
            Add(Warning, "openssl-missing", Subject::OpenSsl,
                "the OpenSSL module " + openSsl.file + " does not exist" +
                    (openSsl.presence.similar.empty()
                         ? ""
                         : "; " + openSsl.presence.similar + " is there, but " +
                               DifferenceOf(openSsl.presence.similar, NameOf(openSsl.file))) +
                    told,
                "install it there");
        else if (!openSsl.presence.flaw.empty())
            Add(Warning, "openssl-not-a-file", Subject::OpenSsl,
                "the OpenSSL module " + openSsl.file + " " + openSsl.presence.flaw + told,
                "install it there");
    }

    Findings const& findings;
    Verdict verdict;
    std::vector<std::string> toldInterruptions; ///< their texts
};

} // namespace

Problem const* Verdict::First() const
{
    auto const first = std::find_if(problems.begin(), problems.end(), [](Problem const& problem) {
        return problem.isFatal || problem.isCause;
    });
    return canWork ? nullptr : &*first;
}

std::string Told(Verdict const& verdict)
{
    if (Problem const* const first = verdict.First())
        return first->text;
    return verdict.isLoaded ? "sign-in can work"
                            : "nothing wrong found; the plugin was not loaded (--load loads it)";
}

Verdict Judge(Findings const& findings) { return Judgement(findings).Take(); }

} // namespace Halvorix::Doctor
