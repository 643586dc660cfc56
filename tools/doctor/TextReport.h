#pragma once

#include <string>

#include "Findings.h"
#include "Verdict.h"

namespace Halvorix::Doctor {

/// The findings for a person, written as they come, so that none is lost if a
/// plugin ends the process.
class TextReport {
public:
    explicit TextReport(bool withColours) : isColoured(withColours) {}

    /// All but what comes of running the plugin.
    void WriteFindings(Findings const& findings) const;
    void WriteLoad(Findings const& findings) const;
    /// Warnings, further problems, and the last line.
    void WriteVerdict(Verdict const& verdict) const;

private:
    enum class Colour { Good, Bad, Doubtful, Heading };

    std::string Coloured(Colour colour, std::string const& text) const;
    void Heading(char const* text) const;
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
    void WriteOpenSsl(OpenSsl const& openSsl) const;

    bool isColoured;
};

} // namespace Halvorix::Doctor
