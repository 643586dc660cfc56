#pragma once

#include <string>
#include <vector>

#include "Findings.h"

namespace Halvorix::Doctor {

/// Something that a support engineer should know.
struct Problem {
    std::string code;   ///< never changes, for programs
    std::string text;   ///< what is wrong
    std::string remedy; ///< what to do about it
    bool isFatal;       ///< sign-in cannot work; else a warning
    bool isCause;       ///< a warning that explains what is fatal after it
};

struct Verdict {
    std::vector<Problem> problems; ///< in the order in which the library stumbles
    bool canWork = true;

    /// The first that is fatal, or a cause of what is; null if sign-in can work.
    Problem const* First() const;
};

/// What is wrong and what to do about it, in one line.
std::string Told(Problem const& problem);

/// The last line of all.
std::string Told(Verdict const& verdict);

Verdict Judge(Findings const& findings);

} // namespace Halvorix::Doctor
