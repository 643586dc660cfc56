#pragma once

#include <cstdint>
#include <deque>
#include <mutex>

namespace Halvorix::OpenId {

/// What hosts are told; the numbers are told in the plugin's documentation.
enum class Event : std::int32_t {
    LoggedIn = 1,
    LoggedOut = 2,
    TokenAcquired = 3,
    TokenRefreshed = 4,
};

/// Events in their order, at most 1,000: the oldest goes for a new one. Any thread.
class EventQueue {
public:
    void Raise(std::int32_t event, bool first);
    void Raise(Event event) { Raise(static_cast<std::int32_t>(event), false); }
    bool HasEvent() const;
    /// Takes the oldest off; false if there is none.
    bool Dispatch();
    void Clear();

private:
    mutable std::mutex mutex;
    std::deque<std::int32_t> events;
};

} // namespace Halvorix::OpenId
