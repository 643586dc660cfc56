#include "discovery/Version.h"

#include <algorithm>
#include <cstddef>
#include <exception>

#include <boost/algorithm/string/join.hpp>

#include "platform/AsciiCase.h"
#include "support/SplitAndTrim.h"

namespace Halvorix::SSOServices {

namespace {

int Sign(long long value) { return value > 0 ? 1 : value < 0 ? -1 : 0; }

// 0 if one of the texts is not a number, or too large.
long long NumericDifference(std::string const& x, std::string const& y)
{
    try {
        auto const left = static_cast<unsigned long long>(std::stoll(x));
        auto const right = static_cast<unsigned long long>(std::stoll(y));
        return static_cast<long long>(left - right); // wraps at 64 bits
    } catch (std::exception const&) {
        return 0;
    }
}

int CompareComponents(std::string const& x, std::string const& y)
{
    // As most pairs are: both their numbers and their letters are the same.
    if (x == y)
        return 0;
    if (long long const difference = NumericDifference(x, y))
        return Sign(difference);
    // By bytes: the systems' runtimes disagree on what is not ASCII.
    return Platform::CompareIgnoringAsciiCase(x.c_str(), y.c_str());
}

} // namespace

bool ParseVersion(Version& out, std::string text)
{
    out = SplitAndTrim(text, '.');
    return true;
}

std::string VersionToString(Version const& version) { return boost::algorithm::join(version, "."); }

int CompareVersions(Version const& a, Version const& b, int depth)
{
    std::string const missing;
    std::size_t const count = std::max(a.size(), b.size());
    for (std::size_t i = 0; i < count; ++i) {
        std::string const& x = i < a.size() ? a[i] : missing;
        std::string const& y = i < b.size() ? b[i] : missing;
        if (int const result = CompareComponents(x, y))
            return result;
        if (depth > 0 && i + 1 >= static_cast<std::size_t>(depth))
            return 0;
    }
    return 0;
}

} // namespace Halvorix::SSOServices
