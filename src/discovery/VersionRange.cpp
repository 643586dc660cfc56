#include "discovery/VersionRange.h"

#include <algorithm>
#include <utility>

#include <json/value.h>

namespace Halvorix::SSOServices {

namespace {

// As far as the bound goes, so that a short one acts as a prefix.
int CompareToBound(Version const& version, Version const& bound)
{
    return CompareVersions(version, bound, static_cast<int>(bound.size()));
}

} // namespace

void VersionRange::Set(std::string minText, std::string maxText,
                       std::vector<std::string> const& texts)
{
    if (!minText.empty())
        ParseVersion(minVersion, std::move(minText));
    if (!maxText.empty())
        ParseVersion(maxVersion, std::move(maxText));
    versions.clear();
    for (std::string const& text : texts) {
        Version version;
        ParseVersion(version, text);
        if (!version.empty())
            versions.push_back(std::move(version));
    }
    if (!minVersion.empty() && !maxVersion.empty() &&
        CompareVersions(minVersion, maxVersion, -1) == 1)
        std::swap(minVersion, maxVersion);
}

VersionRange VersionRange::FromJson(Json::Value const& value)
{
    VersionRange range;
    if (value.empty())
        return range;
    std::string minText = value["minVersion"].asString();
    std::string maxText = value["maxVersion"].asString();
    Json::Value const& list = value["versions"];
    std::vector<std::string> texts;
    for (Json::ArrayIndex i = 0; i < list.size(); ++i)
        texts.push_back(list[i].asString());
    range.Set(std::move(minText), std::move(maxText), texts);
    return range;
}

bool VersionRange::IsEmpty() const
{
    return minVersion.empty() && maxVersion.empty() && versions.empty();
}

bool VersionRange::Contains(Version const& version) const
{
    if (version.empty())
        return true;
    if (IsEmpty())
        return false;
    bool const isBounded = !minVersion.empty() || !maxVersion.empty();
    bool const reachesMin = minVersion.empty() || CompareToBound(version, minVersion) >= 0;
    bool const staysWithinMax = maxVersion.empty() || CompareToBound(version, maxVersion) <= 0;
    if (isBounded && reachesMin && staysWithinMax)
        return true;
    return std::any_of(versions.begin(), versions.end(), [&version](Version const& listed) {
        return CompareToBound(version, listed) == 0;
    });
}

bool AnyRangeContains(std::vector<VersionRange> const& ranges, Version const& version,
                      bool whenEmpty)
{
    if (version.empty())
        return true;
    bool result = whenEmpty;
    for (VersionRange const& range : ranges) {
        if (range.IsEmpty())
            continue;
        result = range.Contains(version);
        if (result)
            break;
    }
    return result;
}

} // namespace Halvorix::SSOServices
