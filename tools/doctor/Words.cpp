#include "Words.h"

#include <cstddef>

namespace Halvorix::Doctor {

namespace {

struct Pair {
    char const* words;
    char const* code;
};

// In the order of the enumerations.

constexpr Pair FindingNames[] = {
    {"found", "found"},
    {"there too, but the search has ended before", "found-later"},
    {"not there", "no-file"},
    {"no such directory", "no-directory"},
    {"cannot be looked at", "unreadable"},
};

constexpr Pair StateNames[] = {
    {"read", "read"},
    {"none", "no-file"},
    {"no JSON: the defaults hold", "not-json"},
    {"reading ended with an exception", "stopped"},
};

constexpr Pair OriginNames[] = {
    {"file", "file"},
    {"default", "default"},
    {"registry", "registry"},
    {"not set", "unset"},
};

constexpr Pair FitNames[] = {
    {"chosen", "chosen"},
    {"fits, but its version is lower", "fits-lower-version"},
    {"fits, but the same version stands before it", "fits-later-in-file"},
    {"fits, but the client configuration names another", "fits-overridden"},
    {"excluded by minVersion", "below-minimum"},
    {"excluded by maxVersion", "above-maximum"},
    {"excluded by versions", "not-listed"},
    {"no path for this kind of process", "no-path-for-process"},
    {"ignored", "ignored"},
    {"ends the reading", "stops-reading"},
    {"null, passed over", "null"},
};

template <class Enumeration, std::size_t Count>
constexpr Pair const& Of(Pair const (&pairs)[Count], Enumeration value)
{
    return pairs[static_cast<std::size_t>(value)];
}

} // namespace

char const* Words(Finding finding) { return Of(FindingNames, finding).words; }
char const* Words(ConfigState state) { return Of(StateNames, state).words; }
char const* Words(Origin origin) { return Of(OriginNames, origin).words; }
char const* Words(Fit fit) { return Of(FitNames, fit).words; }

std::string Words(Presence const& presence)
{
    if (!presence.reason.empty())
        return "cannot be looked at: " + presence.reason;
    return presence.isThere ? "is there" : "does not exist";
}

char const* WordsOfLevel(int level)
{
    return level == 2 ? "error" : level == 4 ? "warning" : "info";
}

char const* Code(Finding finding) { return Of(FindingNames, finding).code; }
char const* Code(ConfigState state) { return Of(StateNames, state).code; }
char const* Code(Origin origin) { return Of(OriginNames, origin).code; }
char const* Code(Fit fit) { return Of(FitNames, fit).code; }

} // namespace Halvorix::Doctor
