#include "doctor/Words.h"

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
    {"there too, but the search has ended already", "found-later"},
    {"not there", "no-file"},
    {"no such directory", "no-directory"},
    {"cannot be looked at", "unreadable"},
};

constexpr Pair StateNames[] = {
    {"read", "read"},
    {"none", "no-file"},
    {"cannot be read: the defaults apply", "not-json"},
    {"the read ended with an exception", "stopped"},
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
    {"fits, but an entry of the same version comes first", "fits-later-in-file"},
    {"fits, but the client configuration names another", "fits-overridden"},
    {"excluded by minVersion", "below-minimum"},
    {"excluded by maxVersion", "above-maximum"},
    {"excluded by versions", "not-listed"},
    {"no path for this kind of process", "no-path-for-process"},
    {"ignored", "ignored"},
    {"ends the read", "stops-reading"},
    {"null, skipped", "null"},
};

constexpr char const* DamageCodes[] = {"not-json", "not-opened",      "not-a-file", "empty",
                                       "utf-16",   "byte-order-mark", "too-deep",   "too-large"};

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
    if (!presence.flaw.empty())
        return presence.flaw;
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
char const* Code(Damage damage) { return DamageCodes[static_cast<std::size_t>(damage)]; }

} // namespace Halvorix::Doctor
