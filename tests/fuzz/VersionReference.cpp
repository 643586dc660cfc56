#include "fuzz/VersionReference.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <locale>
#include <optional>
#include <utility>

namespace Fuzz::Reference {

namespace {

// What std::stoll reads in base 10, nothing where it throws. The text ends at a
// zero, since it goes there as a terminated one.
std::optional<std::int64_t> Number(std::string const& text)
{
    char const* at = text.c_str();
    while (*at == ' ' || (*at >= '\t' && *at <= '\r'))
        ++at;
    bool const negative = *at == '-';
    if (*at == '-' || *at == '+')
        ++at;
    if (*at < '0' || *at > '9')
        return std::nullopt;
    std::uint64_t const limit =
        static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) + (negative ? 1 : 0);
    std::uint64_t value = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        auto const digit = static_cast<std::uint64_t>(*at - '0');
        if (value > (limit - digit) / 10)
            return std::nullopt;
        value = value * 10 + digit;
    }
    return static_cast<std::int64_t>(negative ? 0 - value : value);
}

std::string FoldedAndTerminated(std::string const& text)
{
    std::string folded = text.c_str();
    for (char& c : folded)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + ('a' - 'A'));
    return folded;
}

int CompareParts(std::string const& x, std::string const& y)
{
    std::optional<std::int64_t> const left = Number(x);
    std::optional<std::int64_t> const right = Number(y);
    if (left && right) {
        // The difference has 64 bits and wraps: its sign is that of the top bit.
        std::uint64_t const difference =
            static_cast<std::uint64_t>(*left) - static_cast<std::uint64_t>(*right);
        if (difference != 0)
            return difference >> 63 == 1 ? -1 : 1;
    }
    // Compares as unsigned bytes.
    int const order = FoldedAndTerminated(x).compare(FoldedAndTerminated(y));
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

// As far as the bound goes.
int CompareToBound(Version const& version, Version const& bound)
{
    return Compare(version, bound, static_cast<int>(bound.size()));
}

} // namespace

Version Parse(std::string const& text)
{
    std::locale const locale;
    Version version;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] != '.')
            continue;
        std::size_t from = begin;
        std::size_t to = i;
        while (from < to && std::isspace(text[from], locale))
            ++from;
        while (from < to && std::isspace(text[to - 1], locale))
            --to;
        if (from < to)
            version.push_back(text.substr(from, to - from));
        begin = i + 1;
    }
    return version;
}

int Compare(Version const& a, Version const& b, int depth)
{
    std::size_t positions = std::max(a.size(), b.size());
    if (depth > 0)
        positions = std::min(positions, static_cast<std::size_t>(depth));
    for (std::size_t i = 0; i < positions; ++i) {
        int const order =
            CompareParts(i < a.size() ? a[i] : std::string(), i < b.size() ? b[i] : std::string());
        if (order != 0)
            return order;
    }
    return 0;
}

Range MakeRange(std::string const& lowest, std::string const& highest,
                std::vector<std::string> const& listed)
{
    Range range{Parse(lowest), Parse(highest), {}};
    for (std::string const& text : listed) {
        Version const version = Parse(text);
        if (!version.empty())
            range.listed.push_back(version);
    }
    if (!range.lowest.empty() && !range.highest.empty() &&
        Compare(range.lowest, range.highest, -1) == 1)
        std::swap(range.lowest, range.highest);
    return range;
}

bool IsEmpty(Range const& range)
{
    return range.lowest.empty() && range.highest.empty() && range.listed.empty();
}

bool Contains(Range const& range, Version const& version)
{
    if (version.empty())
        return true;
    bool const aboveLowest = range.lowest.empty() || CompareToBound(version, range.lowest) >= 0;
    bool const belowHighest = range.highest.empty() || CompareToBound(version, range.highest) <= 0;
    bool const bounded = !range.lowest.empty() || !range.highest.empty();
    if (bounded && aboveLowest && belowHighest)
        return true;
    for (Version const& listed : range.listed)
        if (Compare(listed, version, static_cast<int>(listed.size())) == 0)
            return true;
    return false;
}

} // namespace Fuzz::Reference
