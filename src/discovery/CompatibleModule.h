#pragma once

#include <string>
#include <vector>

#include "Version.h"
#include "VersionRange.h"

namespace Halvorix::SSOServices {

/// One module object of the version compatibility file.
struct CompatibleModule {
    std::wstring module;
    std::wstring modulePath;
    Version version;
    std::vector<VersionRange> compatibleVersions;
    std::vector<VersionRange> incompatibleVersions; // the file cannot fill it
};

/// Highest version first; equal versions keep their order.
void SortByVersion(std::vector<CompatibleModule>& list);

/// The first record that serves the version.
bool SelectCompatibleModule(Version const& version, std::vector<CompatibleModule> const& list,
                            CompatibleModule& selected);

} // namespace Halvorix::SSOServices
