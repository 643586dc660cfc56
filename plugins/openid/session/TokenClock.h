#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

#include "openid/session/TokenStore.h"

namespace Halvorix::OpenId {

/// Until when tokens are good, by the clock that nobody sets. A token's end counts from its
/// receipt; one that another process received, from the first time that it is seen here, with
/// what the wall clock leaves of its lifetime. Any thread.
class TokenClock {
public:
    TokenClock(std::function<std::int64_t()> wallClock,
               std::function<std::chrono::milliseconds()> sinceBoot);

    /// A token that came just now.
    void Received(std::string const& login, StoredToken const& token);
    /// Good for another 60 s, or for the second half of a life under two minutes.
    bool IsGood(std::string const& login, StoredToken const& token);
    void Forget();
    void Forget(std::string const& login);

private:
    struct End {
        Secret text;
        std::chrono::milliseconds at{0};
    };
    /// The newest first, and the one before it: a thread may still look at that one, which must
    /// not be taken for one that was never seen.
    using Ends = std::array<End, 2>;
    using Key = std::tuple<std::string, std::string, std::string>; // login, type, scope

    End const* Find(Ends const& known, StoredToken const& token) const;

    std::function<std::int64_t()> const wallClock;
    std::function<std::chrono::milliseconds()> const sinceBoot;
    std::mutex mutex;
    std::map<Key, Ends> ends;
};

/// Seconds that a token lives; five minutes if it was not told.
std::int64_t LifetimeOf(StoredToken const& token);

} // namespace Halvorix::OpenId
