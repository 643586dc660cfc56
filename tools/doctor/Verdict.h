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
};

struct Verdict {
    std::vector<Problem> problems; ///< in the order in which the library stumbles
    bool canWork = true;

    /// The first one; null if sign-in can work. A warning is the first thing that is
    /// wrong too, where something fatal comes after it.
    Problem const* First() const { return canWork ? nullptr : &problems.front(); }
};

/// What is wrong and what to do about it, in one line.
std::string Told(Problem const& problem);

/// The last line of all.
std::string Told(Verdict const& verdict);

Verdict Judge(Findings const& findings);

} // namespace Halvorix::Doctor
