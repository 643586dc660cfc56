#include "discovery/CompatibleModule.h"

#include <algorithm>

namespace Halvorix::SSOServices {

namespace {

bool Serves(CompatibleModule const& module, Version const& version)
{
    if (version.empty())
        return true;
    if (module.compatibleVersions.empty() && module.incompatibleVersions.empty())
        return true;
    return AnyRangeContains(module.compatibleVersions, version, true) &&
           !AnyRangeContains(module.incompatibleVersions, version, false);
}

} // namespace

void SortByVersion(std::vector<CompatibleModule>& list)
{
    std::stable_sort(list.begin(), list.end(),
                     [](CompatibleModule const& a, CompatibleModule const& b) {
                         return CompareVersions(a.version, b.version, -1) == 1;
                     });
}

bool SelectCompatibleModule(Version const& version, std::vector<CompatibleModule> const& list,
                            CompatibleModule& selected)
{
    auto const found =
        std::find_if(list.begin(), list.end(), [&version](CompatibleModule const& module) {
            return Serves(module, version);
        });
    if (found == list.end())
        return false;
    selected = *found;
    return true;
}

} // namespace Halvorix::SSOServices
