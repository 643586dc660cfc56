#pragma once

#include <string>
#include <vector>

#include "doctor/Findings.h"

namespace Halvorix::Doctor {

/// What a problem is about: the sections of the report.
enum class Subject { Program, ClientConfig, ServerApp, Compatibility, Plugin, OpenSsl, Load };

/// Something that a support engineer should know.
struct Problem {
    std::string code; ///< never changes, for programs
    Subject subject;
    std::string text;   ///< what is wrong, in one line
    std::string remedy; ///< what to do about it
    bool isFatal;       ///< sign-in cannot work; else a warning
    bool isCause;       ///< a warning that explains what is fatal after it
};

struct Verdict {
    std::vector<Problem> problems; ///< in the order in which the library stumbles
    bool canWork = true;
    bool isLoaded = false;     ///< the plugin was, and its interfaces were asked for
    bool needsProgram = false; ///< the plugin cannot be loaded without it

    /// The first that is fatal, or a cause of what is; null if sign-in can work.
    Problem const* First() const;
};

/// The last line of all: what is wrong first.
std::string Told(Verdict const& verdict);

Verdict Judge(Findings const& findings);

} // namespace Halvorix::Doctor
