#include "openid/protocol/DeviceGrant.h"

#include <algorithm>

namespace Halvorix::OpenId {

namespace {

using std::chrono::seconds;

constexpr seconds SlowedDownBy{5};
constexpr seconds LongestPace{300};
/// Longer pauses would keep a user waiting whose network is back.
constexpr seconds LongestBackOff{60};
constexpr int MostDoublings = 6;

/// What another try may mend: no answer at all, or a server in trouble.
bool IsPassing(Failure const& answer)
{
    return answer.kind == Failure::Kind::Network || answer.status >= 500;
}

Failure Ended(Failure::Kind kind, char const* reason)
{
    Failure failure;
    failure.kind = kind;
    failure.reason = reason;
    failure.remedy = "sign in again";
    return failure;
}

Failure Final(Failure answer)
{
    if (answer.code == "expired_token")
        return Ended(Failure::Kind::Refused, "the code ended before anybody signed in with it");
    if (answer.code == "access_denied")
        answer.remedy = "sign in again, and agree at the provider";
    return answer;
}

} // namespace

DevicePolling::DevicePolling(Time interval, Time begin)
    : interval(interval), permitted(begin + interval), next(permitted)
{
}

std::optional<Failure> DevicePolling::Answered(Failure const& answer, Time now)
{
    // By the code first: some send it with a status of their own.
    bool const isSlowDown = answer.code == "slow_down";
    bool const isAnswer = isSlowDown || answer.code == "authorization_pending";
    if (!isAnswer && !IsPassing(answer))
        return Final(answer);
    trouble = isAnswer ? std::nullopt : std::optional<Failure>(answer);
    failures = isAnswer ? 0 : std::min(failures + 1, MostDoublings);
    if (isSlowDown)
        interval = std::min<Time>(interval + SlowedDownBy, LongestPace);
    Time const backOff = std::min<Time>(interval * (1 << failures), LongestBackOff);
    permitted = now + interval;
    next = now + std::max(interval, backOff);
    return std::nullopt;
}

Failure DevicePolling::OutOfTime() const
{
    return trouble
               ? *trouble
               : Ended(Failure::Kind::Cancelled, "nobody signed in on the other device in time");
}

} // namespace Halvorix::OpenId
