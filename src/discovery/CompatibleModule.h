#pragma once

#include <string>
#include <vector>

#include "discovery/Version.h"
#include "discovery/VersionRange.h"

namespace Halvorix::SSOServices {

/// Name of the version compatibility file.
inline constexpr wchar_t const* CompatibilityFileName = L"SSOVersionCompatibility.config";

/// One module object of the version compatibility file.
struct CompatibleModule {
    std::wstring module;
    std::wstring modulePath;
    Version version;
    std::vector<VersionRange> compatibleVersions;
    std::vector<VersionRange> incompatibleVersions; // the file cannot fill it
};

/// What keeps an object of the file from being a record.
enum class ModuleFlaw { None, NoModule, NoPath, PathVanishes, NoRange, EmptyRange };

/// Highest version first; equal versions keep their order.
void SortByVersion(std::vector<CompatibleModule>& list);

/// The first record that serves the version.
bool SelectCompatibleModule(Version const& version, std::vector<CompatibleModule> const& list,
                            CompatibleModule& selected);

} // namespace Halvorix::SSOServices
