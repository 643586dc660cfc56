#pragma once

#include <functional>
#include <string>

#include "common/Terminal.h"
#include "doctor/Findings.h"
#include "doctor/Verdict.h"

namespace Halvorix::Doctor {

/// The findings for a person: a line for each section, and all of it for those with a
/// problem, or where all is asked for.
class TextReport {
public:
    TextReport(Tools::Terminal terminal, bool isVerbose) : terminal(terminal), isVerbose(isVerbose)
    {
    }

    /// All but what comes of running the plugin, with the verdict so far.
    void WriteFindings(Findings const& findings, Verdict const& verdict);
    void WriteLoad(Findings const& findings, Verdict const& verdict);
    /// The problems with their remedies, and the last line.
    void WriteVerdict(Verdict const& verdict) const;

private:
    enum class Colour { Good, Bad, Doubtful, Heading };

    std::string Coloured(Colour colour, std::string const& text) const;
    /// A line of the report, broken between words where the terminal ends.
    void Write(std::string const& line, std::size_t indent) const;
    void Section(char const* name, bool isWhole, std::string const& brief,
                 std::function<void()> const& writeWhole);
    /// The text is made one line; what is coloured stands behind it.
    void Line(std::string const& name, std::string const& text,
              std::string const& coloured = {}) const;
    void WriteProgram(Program const& program) const;
    void WriteSearch(Search const& search) const;
    void WriteClientConfig(ClientConfig const& config) const;
    void WriteServerApp(ServerApp const& server) const;
    void WriteCompatibility(Compatibility const& compatibility) const;
    void WriteModules(ModuleList const& list) const;
    void WriteParseError(ParseError const& error) const;
    void WriteOddities(std::vector<Oddity> const& oddities) const;
    void WriteChecks(std::vector<Tools::Check> const& checks) const;
    void WritePlugin(Plugin const& plugin) const;
    void WriteOpenSsl(OpenSsl const& openSsl, char const* whenNone) const;
    void WriteLog(RealLoad const& load) const;

    Tools::Terminal terminal;
    bool isVerbose;
    bool isAfterWhole = false; ///< the section before was written whole
    bool isFirst = true;
};

} // namespace Halvorix::Doctor
