// Versions and ranges. The lines of an input are two versions, the bounds of a
// range, and the versions that it lists.
//
// Property: all agrees with a plain reading of the rules; comparing in the other
// order gives the opposite; a version's text reads as the version; a bound and a
// listed version hold whatever begins with them.

#include <string>
#include <vector>

#include <json/value.h>

#include "discovery/VersionRange.h"
#include "fuzz/Property.h"
#include "fuzz/VersionReference.h"

using namespace Halvorix::SSOServices;
using namespace Fuzz;

namespace {

std::vector<std::string> SplitLines(std::string const& text)
{
    std::vector<std::string> lines(1);
    for (char const c : text) {
        if (c == '\n')
            lines.emplace_back();
        else
            lines.back() += c;
    }
    return lines;
}

Version Parsed(std::string const& text)
{
    Version version{"left", "over"};
    Same("every text parses", true, ParseVersion(version, text));
    Same("the components", Reference::Parse(text), version);
    Version back;
    ParseVersion(back, VersionToString(version));
    Same("a version's text reads as the version", version, back);
    return version;
}

// Two components exactly 2^63 apart are each below the other, since their
// difference wraps to the one number that is its own opposite.
bool DifferenceWraps(Version const& a, Version const& b)
{
    return Reference::Compare(a, b, -1) == -1 && Reference::Compare(b, a, -1) == -1;
}

void CheckComparison(Version const& a, Version const& b)
{
    for (int depth = -1; depth <= static_cast<int>(a.size()) + 1; ++depth) {
        int const order = CompareVersions(a, b, depth);
        Same("the order", Reference::Compare(a, b, depth), order);
        int const opposite = CompareVersions(b, a, depth);
        Holds(order == -opposite || DifferenceWraps(a, b), "the opposite order", a, b, order,
              opposite);
    }
    Same("a version is level with itself", 0, CompareVersions(a, a, -1));
}

VersionRange RangeOf(std::string const& lowest, std::string const& highest,
                     std::vector<std::string> const& listed)
{
    VersionRange range;
    range.Set(lowest, highest, listed);
    return range;
}

void CheckPrefix(std::string const& prefix, Version const& rest)
{
    Version version = Reference::Parse(prefix);
    if (version.empty())
        return;
    version.insert(version.end(), rest.begin(), rest.end());
    Holds(RangeOf(prefix, "", {}).Contains(version), "a lower bound is a prefix", version);
    Holds(RangeOf("", prefix, {}).Contains(version), "an upper bound is a prefix", version);
    Holds(RangeOf("", "", {prefix}).Contains(version), "a listed version is a prefix", version);
}

void CheckRange(std::vector<std::string> const& texts, Version const& a, Version const& b)
{
    std::vector<std::string> const listed(texts.begin() + 4, texts.end());
    VersionRange const range = RangeOf(texts[2], texts[3], listed);
    Reference::Range const expected = Reference::MakeRange(texts[2], texts[3], listed);
    Same("the lower bound", expected.lowest, range.minVersion);
    Same("the upper bound", expected.highest, range.maxVersion);
    Same("how many are listed", expected.listed.size(), range.versions.size());
    for (std::size_t i = 0; i < range.versions.size(); ++i)
        Same("a listed version", expected.listed[i], range.versions[i]);
    Same("whether the range is empty", Reference::IsEmpty(expected), range.IsEmpty());

    Json::Value json;
    json["minVersion"] = texts[2];
    json["maxVersion"] = texts[3];
    for (std::string const& text : listed)
        json["versions"].append(text);
    VersionRange const read = VersionRange::FromJson(json);
    for (Version const& version : {a, b, Version{"10", "22", "00", "1800"}, Version()}) {
        bool const contains = Reference::Contains(expected, version);
        Same("what a range holds", contains, range.Contains(version));
        Same("what a range from JSON holds", contains, read.Contains(version));
        for (bool const whenEmpty : {false, true})
            Same("what one of the ranges holds",
                 version.empty() || (range.IsEmpty() ? whenEmpty : contains),
                 AnyRangeContains({VersionRange(), range, VersionRange()}, version, whenEmpty));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::vector<std::string> texts = SplitLines(AsText(data, size));
    if (texts.size() < 4)
        texts.resize(4);
    Version const a = Parsed(texts[0]);
    Version const b = Parsed(texts[1]);
    CheckComparison(a, b);
    CheckComparison(b, a);
    CheckPrefix(texts[0], b);
    CheckPrefix(texts[1], a);
    CheckRange(texts, a, b);
    return 0;
}
