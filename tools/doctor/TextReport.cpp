#include "doctor/TextReport.h"

#include <algorithm>
#include <iostream>
#include <sstream>

#include "common/System.h"
#include "doctor/Text.h"
#include "doctor/Words.h"
#include "doctor/Wrap.h"

namespace Halvorix::Doctor {

namespace {

std::string Padded(std::string text, std::size_t width)
{
    if (text.size() < width)
        text.resize(width, ' ');
    return text + ' ';
}

std::string At(Position at)
{
    return at.line == 0
               ? std::string()
               : "line " + std::to_string(at.line) + ", column " + std::to_string(at.column);
}

std::string Or(std::string const& text, char const* whenEmpty)
{
    return text.empty() ? whenEmpty : text;
}

bool IsAbout(Verdict const& verdict, Subject subject)
{
    return std::any_of(verdict.problems.begin(), verdict.problems.end(),
                       [subject](Problem const& problem) { return problem.subject == subject; });
}

std::string BriefOf(Program const& program)
{
    return program.isNamed
               ? program.executable
               : "this doctor itself, since no --exe names another: " + program.executable;
}

// The version that was chosen.
std::string BriefOf(Plugin const& plugin, ModuleList const& list)
{
    for (Module const& module : list.modules)
        if (module.fit == Fit::Chosen && !module.version.empty())
            return plugin.file + ", version " + module.version;
    return plugin.file;
}

// What the plugin gave: the last word of the checks that are no formality.
std::string BriefOf(std::vector<Tools::Check> const& checks)
{
    for (Tools::Check const& check : checks)
        if (check.name == "interfaces" && check.result == Tools::Result::Ok)
            return check.detail;
    return {};
}

} // namespace

std::string TextReport::Coloured(Colour colour, std::string const& text) const
{
    if (!terminal.takesColours)
        return Tools::Presentable(text);
    char const* const codes[] = {"32", "1;31", "33", "1"};
    return std::string("\x1b[") + codes[static_cast<int>(colour)] + "m" + Tools::Presentable(text) +
           "\x1b[0m";
}

void TextReport::Write(std::string const& line, std::size_t indent) const
{
    std::cout << Wrapped(line, terminal.width, indent) << '\n';
}

void TextReport::Section(char const* name, bool isWhole, std::string const& brief,
                         std::function<void()> const& writeWhole)
{
    if (!isFirst && (isAfterWhole || isWhole))
        std::cout << '\n';
    isFirst = false;
    isAfterWhole = isWhole;
    if (isWhole) {
        std::cout << Coloured(Colour::Heading, name) << '\n';
        writeWhole();
        return;
    }
    constexpr std::size_t width = 27;
    std::string const padding(width - std::string(name).size(), ' ');
    Write(Coloured(Colour::Heading, name) + padding + Or(Tools::Presentable(brief), "not reached"),
          width);
}

void TextReport::Line(std::string const& name, std::string const& text,
                      std::string const& coloured) const
{
    Write("  " + Padded(name, 24) + Tools::Presentable(text) +
              (text.empty() || coloured.empty() ? "" : "  ") + coloured,
          27);
}

void TextReport::WriteFindings(Findings const& findings, Verdict const& verdict)
{
    auto const section = [&](char const* name, Subject subject, std::string const& brief,
                             std::function<void()> const& writeWhole) {
        Section(name, isVerbose || IsAbout(verdict, subject), brief, writeWhole);
    };
    Program const& program = findings.program;
    if (!isVerbose && !IsAbout(verdict, Subject::Program)) {
        Section("Program", false, BriefOf(program), {});
        Section("Library", false,
                program.libraryFile +
                    (program.fileVersion.empty() ? ", taken for version " : ", version ") +
                    program.version + " " + program.build,
                {});
    } else {
        Section("Program", true, {}, [&] { WriteProgram(program); });
    }
    ClientConfig const& config = findings.config;
    section("Client configuration", Subject::ClientConfig,
            config.state == ConfigState::NoFile ? "none: the defaults apply" : config.file,
            [&] { WriteClientConfig(config); });
    section("Server application", Subject::ServerApp, findings.server.executable,
            [&] { WriteServerApp(findings.server); });
    // Its tables say why a module that is not there was chosen.
    Compatibility const& compatibility = findings.compatibility;
    bool const isModuleLost =
        (!findings.plugin.file.empty() && !findings.plugin.presence.isThere) ||
        (!findings.openSsl.file.empty() && !findings.openSsl.presence.isThere);
    Section("Version compatibility file",
            isVerbose || isModuleLost || IsAbout(verdict, Subject::Compatibility),
            compatibility.file, [&] { WriteCompatibility(compatibility); });
    section("Client plugin", Subject::Plugin,
            BriefOf(findings.plugin, findings.compatibility.plugins),
            [&] { WritePlugin(findings.plugin); });
    char const* const noOpenSsl =
        compatibility.openSsl.isNothingListed && !IsAbout(verdict, Subject::OpenSsl)
            ? "no OpenSSL module is listed; only a plugin that uses one needs it"
            : "none chosen";
    section("OpenSSL module", Subject::OpenSsl,
            findings.openSsl.presence.isThere ? findings.openSsl.file : noOpenSsl,
            [&] { WriteOpenSsl(findings.openSsl, noOpenSsl); });
    std::cout << std::flush;
}

void TextReport::WriteProgram(Program const& program) const
{
    if (!program.isNamed)
        Line("looked at", "this doctor itself: no --exe names another program");
    Line("executable", program.executable,
         program.executableFlaw.empty() ? "" : Coloured(Colour::Bad, program.executableFlaw));
    Line("its directory", program.directory);
    Line("current directory", program.workingDirectory);
    Line("locale", program.locale);
    Line("library", program.libraryFile,
         program.libraryFile.empty()   ? Coloured(Colour::Bad, "not found")
         : program.libraryFlaw.empty() ? ""
                                       : Coloured(Colour::Bad, program.libraryFlaw));
    Line("version", program.version + " " + program.build);
    Line("version of its file", Or(program.fileVersion, "unknown"));
    WriteChecks(program.libraryChecks);
    for (NamedText const& folder : program.folders)
        Line("folder " + folder.name, Or(folder.text, "unknown to the system"));
    for (NamedText const& variable : program.variables)
        Line("%" + variable.name + "%", variable.text,
             variable.text.empty() ? Coloured(Colour::Doubtful, "unresolved, stays as text") : "");
}

void TextReport::WriteSearch(Search const& search) const
{
    if (search.file.empty()) {
        Line("not searched", "its name is blank, since a read ended early");
        return;
    }
    Write("  searched for " + Tools::Presentable(search.file) + " in", 4);
    for (Directory const& directory : search.tried) {
        bool const isHit = directory.finding == Finding::Hit;
        std::string text = Words(directory.finding);
        if (!directory.unknown.empty())
            text += ": " + ListedVariables(directory.unknown) + " stays as text";
        if (!directory.similar.empty())
            text += ", but " + directory.similar + " is";
        Write("    " + Tools::Presentable(Or(directory.path, "(the current directory)")) + "  " +
                  Coloured(isHit ? Colour::Good : Colour::Doubtful, text),
              6);
    }
}

void TextReport::WriteParseError(ParseError const& error) const
{
    if (error.at.line == 0)
        return; // the file is no text at all, as the problem says
    Write("  " + Coloured(Colour::Bad, At(error.at) + ": " + error.message), 4);
    std::cout << "  | " << error.line << '\n';
}

void TextReport::WriteOddities(std::vector<Oddity> const& oddities) const
{
    for (Oddity const& oddity : oddities)
        Write("  " + Coloured(oddity.stopsReading ? Colour::Bad : Colour::Doubtful,
                              At(oddity.at) + ": " + InWords(oddity.key) + " " + oddity.text),
              4);
}

void TextReport::WriteClientConfig(ClientConfig const& config) const
{
    if (config.override.empty())
        WriteSearch(config.search);
    else
        Line("named by the program", config.override);
    if (config.state == ConfigState::NoFile)
        Line("file", "none: the defaults apply");
    else
        Line("file", config.file,
             Coloured(config.state == ConfigState::Read ? Colour::Good : Colour::Bad,
                      Words(config.state)));
    if (config.parseError)
        WriteParseError(*config.parseError);
    if (config.unasked)
        Line("not asked", Tools::NameOfLocation() + " names " + config.unasked->path);
    for (KeyValue const& key : config.keys) {
        std::string origin = Words(key.origin);
        if (key.at.line != 0)
            origin += ", " + At(key.at);
        Write("  " + Padded(key.key, 44) +
                  (key.origin == Origin::Unset ? "" : Tools::Presentable(key.value) + "  ") + "(" +
                  origin + ")",
              4);
    }
    WriteOddities(config.oddities);
}

void TextReport::WriteServerApp(ServerApp const& server) const
{
    WriteSearch(server.search);
    if (server.directory.empty()) {
        Line("directory", "",
             Coloured(Colour::Bad, server.isInWorkingDirectory
                                       ? "none: found in the current directory, which has no path"
                                       : "not found"));
        return;
    }
    Line("directory", server.directory);
    bool const isWhole = server.presence.isThere && server.presence.flaw.empty();
    Line("executable", server.executable,
         Coloured(isWhole ? Colour::Good : Colour::Bad, Words(server.presence)));
}

void TextReport::WriteCompatibility(Compatibility const& compatibility) const
{
    WriteSearch(compatibility.search);
    Line("file", compatibility.file,
         compatibility.file.empty() ? Coloured(Colour::Bad, "not found") : "");
    if (compatibility.parseError)
        WriteParseError(*compatibility.parseError);
    WriteOddities(compatibility.oddities);
    if (compatibility.file.empty() || compatibility.parseError)
        return;
    WriteModules(compatibility.plugins);
    WriteModules(compatibility.openSsl);
}

void TextReport::WriteModules(ModuleList const& list) const
{
    std::cout << "  " << list.key << '\n';
    for (Module const& module : list.modules) {
        bool const isChosen = module.fit == Fit::Chosen;
        bool const isLost = isChosen && !module.presence.isThere;
        std::string verdict = Words(module.fit);
        if (!module.detail.empty())
            verdict += ": " + module.detail;
        if (!module.presence.reason.empty())
            verdict += ", file cannot be looked at: " + module.presence.reason;
        else if (!module.file.empty() && !module.presence.isThere)
            verdict += ", file missing on disk";
        Write("    " + std::to_string(module.number) + ". " + Or(module.name, "(no module)") +
                  "  version " + Or(module.version, "(none)") + "  for " +
                  Or(module.range, "(no range)") + "  " +
                  Coloured(isLost     ? Colour::Bad
                           : isChosen ? Colour::Good
                                      : Colour::Doubtful,
                           verdict),
              7);
        if (!module.path.empty() || !module.expandedPath.empty())
            Write("       " + module.path + " -> " +
                      Tools::Presentable(Or(module.expandedPath, "(nothing)")),
                  9);
    }
    if (!list.problem.empty())
        std::cout << "    " << Coloured(Colour::Doubtful, list.problem) << '\n';
}

void TextReport::WriteChecks(std::vector<Tools::Check> const& checks) const
{
    for (Tools::Check const& check : checks)
        Write("  " +
                  Coloured(check.result == Tools::Result::Ok       ? Colour::Good
                           : check.result == Tools::Result::Failed ? Colour::Bad
                                                                   : Colour::Doubtful,
                           Padded(Tools::Spelled(check.result), 7)) +
                  Padded(check.name, 13) + check.detail,
              24);
}

void TextReport::WritePlugin(Plugin const& plugin) const
{
    if (plugin.file.empty())
        Line("file", "", Coloured(Colour::Bad, "none chosen"));
    else if (!plugin.presence.isThere)
        Line("file", plugin.file, Coloured(Colour::Bad, Words(plugin.presence)));
    WriteChecks(plugin.fileChecks);
}

void TextReport::WriteOpenSsl(OpenSsl const& openSsl, char const* whenNone) const
{
    if (openSsl.file.empty()) {
        Line("file", "", Coloured(Colour::Doubtful, whenNone));
        return;
    }
    bool const isWhole = openSsl.presence.isThere && openSsl.presence.flaw.empty();
    Line("file", openSsl.file,
         Coloured(isWhole ? Colour::Good : Colour::Doubtful, Words(openSsl.presence)));
    Line("chosen by",
         openSsl.isOverride ? "the client configuration" : "the version compatibility file");
}

// A line that names directories has one for each.
void TextReport::WriteLog(RealLoad const& load) const
{
    for (LogMessage const& line : load.lines) {
        std::istringstream lines(line.text);
        std::string before = "  [" + std::string(WordsOfLevel(line.level)) + "] ";
        for (std::string text; std::getline(lines, text); before = "      ")
            Write(before + Tools::Presentable(text), 6);
    }
}

void TextReport::WriteLoad(Findings const& findings, Verdict const& verdict)
{
    std::vector<Tools::Check> const& checks = findings.plugin.loadChecks;
    if (!checks.empty())
        Section("Loading the client plugin", isVerbose || IsAbout(verdict, Subject::Plugin),
                BriefOf(checks), [&] { WriteChecks(checks); });
    if (findings.load)
        Section("The library's log of a load", true, {}, [&] { WriteLog(*findings.load); });
}

void TextReport::WriteVerdict(Verdict const& verdict) const
{
    // What the last line needs is among the first ones; a file of thousands of entries
    // may have a warning for each.
    std::size_t const most = isVerbose ? verdict.problems.size() : 20;
    std::size_t shown = 0;
    for (Problem const& problem : verdict.problems) {
        if (!problem.isFatal && ++shown > most)
            continue;
        bool const isWrong = problem.isFatal || (problem.isCause && !verdict.canWork);
        std::cout << '\n';
        Write(Coloured(isWrong ? Colour::Bad : Colour::Doubtful, isWrong ? "wrong:" : "warning:") +
                  " " + problem.text,
              2);
        Write("Fix: " + problem.remedy, 2);
    }
    if (shown > most)
        Write("\nand " + std::to_string(shown - most) + " more warnings, which --verbose shows", 2);
    std::cout << '\n';
    Write(Coloured(verdict.canWork ? Colour::Good : Colour::Bad, Told(verdict)), 0);
    std::cout << std::flush;
}

} // namespace Halvorix::Doctor
