#pragma once

#include <chrono>
#include <optional>

#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// When a provider is asked whether somebody has signed in on another device (RFC 8628,
/// section 3.5). Times are those of SinceBoot.
class DevicePolling {
public:
    using Time = std::chrono::milliseconds;

    /// @param begin when the codes came
    DevicePolling(Time interval, Time begin);

    /// When to ask next.
    Time Next() const { return next; }
    /// Whether the provider permits to ask now, however long its troubles make the pause.
    bool MayAsk(Time now) const { return now >= permitted; }
    /// After an answer without tokens.
    /// @return why there is no use in asking again; no value if there is
    std::optional<Failure> Answered(Failure const& answer, Time now);
    /// Why it came to nothing, once there is no time left.
    Failure OutOfTime() const;

private:
    Time interval; ///< The provider's.
    Time permitted, next;
    int failures = 0;               ///< In a row.
    std::optional<Failure> trouble; ///< The last of them.
};

} // namespace Halvorix::OpenId
