#pragma once

#include <string>
#include <vector>

#include "discovery/Version.h"

namespace Json {
class Value;
}

namespace Halvorix::SSOServices {

/// Versions between two inclusive bounds, and single versions beside them. A
/// bound and a single version are compared only as far as they go, so a short
/// one acts as a prefix.
struct VersionRange {
    Version minVersion;
    Version maxVersion;
    std::vector<Version> versions;

    /// Bounds in the wrong order are swapped.
    void Set(std::string minText, std::string maxText, std::vector<std::string> const& texts);

    /// Reads the members minVersion, maxVersion and versions. Wrong types let
    /// the JSON library's exception pass.
    static VersionRange FromJson(Json::Value const& value);

    bool IsEmpty() const;

    /// True for the empty version; otherwise false for the empty range.
    bool Contains(Version const& version) const;
};

/// Whether one of the ranges holds the version; `whenEmpty` if none of them has
/// any content. True for the empty version.
bool AnyRangeContains(std::vector<VersionRange> const& ranges, Version const& version,
                      bool whenEmpty);

} // namespace Halvorix::SSOServices
