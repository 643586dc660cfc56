#pragma once

#include <string>
#include <vector>

namespace Halvorix::SSOServices {

/// The components of a version, trimmed, none empty, in their own spelling.
/// Empty: there is no version.
using Version = std::vector<std::string>;

/// Splits at each "."; no character is tested. Always true.
bool ParseVersion(Version& out, std::string text);

/// The components joined by ".".
std::string VersionToString(Version const& version);

/// -1, 0 or 1. Component by component, as numbers first and then as text
/// without regard to case, so that 00 is above 0; a missing component is below
/// every other. A depth above 0 limits the number of components compared.
int CompareVersions(Version const& a, Version const& b, int depth);

} // namespace Halvorix::SSOServices
