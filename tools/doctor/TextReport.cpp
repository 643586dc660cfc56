#include "TextReport.h"

#include <iostream>
#include <sstream>

#include "Text.h"
#include "Words.h"

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

// One that names directories has a line for each.
void WriteLogLine(LogLine const& line)
{
    std::istringstream lines(line.text);
    std::string before = "  [" + std::string(WordsOfLevel(line.level)) + "] ";
    for (std::string text; std::getline(lines, text); before = "      ")
        std::cout << before << Tools::Presentable(text) << '\n';
}

} // namespace

std::string TextReport::Coloured(Colour colour, std::string const& text) const
{
    if (!isColoured)
        return Tools::Presentable(text);
    char const* const codes[] = {"32", "1;31", "33", "1"};
    return std::string("\x1b[") + codes[static_cast<int>(colour)] + "m" + Tools::Presentable(text) +
           "\x1b[0m";
}

void TextReport::Heading(char const* text) const
{
    std::cout << '\n' << Coloured(Colour::Heading, text) << '\n';
}

void TextReport::Line(std::string const& name, std::string const& text,
                      std::string const& coloured) const
{
    std::cout << "  " << Padded(name, 24) << Tools::Presentable(text)
              << (text.empty() || coloured.empty() ? "" : "  ") << coloured << '\n';
}

void TextReport::WriteFindings(Findings const& findings) const
{
    WriteProgram(findings.program);
    WriteClientConfig(findings.config);
    WriteServerApp(findings.server);
    WriteCompatibility(findings.compatibility);
    WritePlugin(findings.plugin);
    WriteOpenSsl(findings.openSsl);
    std::cout << std::flush;
}

void TextReport::WriteProgram(Program const& program) const
{
    std::cout << Coloured(Colour::Heading, "Library") << '\n';
    Line("version", program.version);
    Line("build", program.build);
    Line("file", program.libraryFile,
         program.libraryFile.empty() ? Coloured(Colour::Bad, "not found") : "");
    Line("file's version", Or(program.fileVersion, "unknown"));
    WriteChecks(program.libraryChecks);
    Heading("Program");
    Line("executable", program.executable);
    Line("its directory", program.directory);
    Line("current directory", program.workingDirectory);
    Heading("Known folders");
    for (NamedText const& folder : program.folders)
        Line(folder.name, Or(folder.text, "unknown to the system"));
    Heading("Path variables");
    for (NamedText const& variable : program.variables)
        Line("%" + variable.name + "%", variable.text,
             variable.text.empty() ? Coloured(Colour::Doubtful, "unresolved, stays as text") : "");
}

void TextReport::WriteSearch(Search const& search) const
{
    if (search.file.empty()) {
        Line("not searched", "its name is blank after a reading that ended early");
        return;
    }
    std::cout << "  searched for " << Tools::Presentable(search.file) << " in\n";
    for (Directory const& directory : search.tried) {
        bool const isHit = directory.finding == Finding::Hit;
        std::string text = Words(directory.finding);
        if (!directory.unknown.empty())
            text += ": " + ListedVariables(directory.unknown) + " stays as text";
        std::cout << "    " << Tools::Presentable(Or(directory.path, "(the current directory)"))
                  << "  " << Coloured(isHit ? Colour::Good : Colour::Doubtful, text) << '\n';
    }
}

void TextReport::WriteParseError(ParseError const& error) const
{
    std::cout << "  " << Coloured(Colour::Bad, At(error.at) + ": " + error.message) << '\n'
              << "  | " << error.line << '\n';
}

void TextReport::WriteOddities(std::vector<Oddity> const& oddities) const
{
    for (Oddity const& oddity : oddities)
        std::cout << "  "
                  << Coloured(oddity.stopsReading ? Colour::Bad : Colour::Doubtful,
                              At(oddity.at) + ": " + oddity.key + ": " + oddity.text)
                  << '\n';
}

void TextReport::WriteClientConfig(ClientConfig const& config) const
{
    Heading("Client configuration");
    if (config.override.empty())
        WriteSearch(config.search);
    else
        Line("named by the program", config.override);
    if (config.state == ConfigState::NoFile)
        Line("file", "none: the defaults hold");
    else
        Line("file", config.file,
             Coloured(config.state == ConfigState::Read ? Colour::Good : Colour::Bad,
                      Words(config.state)));
    if (config.parseError)
        WriteParseError(*config.parseError);
    for (KeyValue const& key : config.keys) {
        std::string origin = Words(key.origin);
        if (key.at.line != 0)
            origin += ", " + At(key.at);
        std::cout << "  " << Padded(key.key, 44)
                  << (key.origin == Origin::Unset ? "" : Tools::Presentable(key.value) + "  ")
                  << "(" << origin << ")\n";
    }
    WriteOddities(config.oddities);
}

void TextReport::WriteServerApp(ServerApp const& server) const
{
    Heading("Server application");
    WriteSearch(server.search);
    if (server.directory.empty()) {
        Line("directory", "",
             Coloured(Colour::Bad, server.isInWorkingDirectory
                                       ? "none: found in the current directory, which has no path"
                                       : "not found"));
        return;
    }
    Line("directory", server.directory);
    Line("executable", server.executable,
         Coloured(server.presence.isThere ? Colour::Good : Colour::Bad, Words(server.presence)));
}

void TextReport::WriteCompatibility(Compatibility const& compatibility) const
{
    Heading("Version compatibility file");
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
        std::cout << "    " << module.number << ". " << Or(module.name, "(no module)")
                  << "  version " << Or(module.version, "(none)") << "  for "
                  << Or(module.range, "(no range)") << "  "
                  << Coloured(isLost     ? Colour::Bad
                              : isChosen ? Colour::Good
                                         : Colour::Doubtful,
                              verdict)
                  << '\n';
        if (!module.path.empty() || !module.expandedPath.empty())
            std::cout << "       " << module.path << " -> "
                      << Tools::Presentable(Or(module.expandedPath, "(nothing)")) << '\n';
    }
    if (!list.problem.empty())
        std::cout << "    " << Coloured(Colour::Doubtful, list.problem) << '\n';
}

void TextReport::WriteChecks(std::vector<Tools::Check> const& checks) const
{
    for (Tools::Check const& check : checks)
        std::cout << "  "
                  << Coloured(check.result == Tools::Result::Ok       ? Colour::Good
                              : check.result == Tools::Result::Failed ? Colour::Bad
                                                                      : Colour::Doubtful,
                              Padded(Tools::Spelled(check.result), 7))
                  << Padded(check.name, 13) << check.detail << '\n';
}

void TextReport::WritePlugin(Plugin const& plugin) const
{
    Heading("Client plugin");
    if (plugin.file.empty())
        Line("file", "", Coloured(Colour::Bad, "none chosen"));
    else if (!plugin.presence.isThere)
        Line("file", plugin.file, Coloured(Colour::Bad, Words(plugin.presence)));
    WriteChecks(plugin.fileChecks);
}

void TextReport::WriteOpenSsl(OpenSsl const& openSsl) const
{
    Heading("OpenSSL module");
    if (openSsl.file.empty()) {
        Line("file", "", Coloured(Colour::Doubtful, "none chosen"));
        return;
    }
    Line("file", openSsl.file,
         Coloured(openSsl.presence.isThere ? Colour::Good : Colour::Doubtful,
                  Words(openSsl.presence)));
    Line("chosen by",
         openSsl.isOverride ? "the client configuration" : "the version compatibility file");
}

void TextReport::WriteLoad(Findings const& findings) const
{
    if (!findings.plugin.loadChecks.empty()) {
        Heading("Client plugin, loaded");
        WriteChecks(findings.plugin.loadChecks);
    }
    if (findings.load) {
        Heading("The library's log of a load");
        for (LogLine const& line : findings.load->lines)
            WriteLogLine(line);
    }
}

void TextReport::WriteVerdict(Verdict const& verdict) const
{
    Problem const* const first = verdict.First();
    bool isAnyBefore = false;
    for (Problem const& problem : verdict.problems) {
        if (&problem == first)
            continue;
        if (!isAnyBefore)
            Heading(first == nullptr ? "Worth knowing" : "What else is not as it should be");
        isAnyBefore = true;
        std::cout << "  "
                  << Coloured(problem.isFatal ? Colour::Bad : Colour::Doubtful,
                              problem.isFatal ? "wrong:   " : "warning: ")
                  << Told(problem) << '\n';
    }
    std::cout << '\n'
              << Coloured(verdict.canWork ? Colour::Good : Colour::Bad, Told(verdict)) << std::endl;
}

} // namespace Halvorix::Doctor
