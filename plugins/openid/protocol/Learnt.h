#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <utility>

#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// Something that a provider tells and seldom changes. One thread asks, those that come meanwhile
/// wait for the same answer, and no lock is held. Times are those of SinceBoot.
template <class Value>
class Learnt {
public:
    using Ask = std::function<Outcome<Value>()>;

    /// Asked anew after an hour. What was learnt stays good while asking fails, which is then
    /// tried once a minute.
    Outcome<Value> Get(std::chrono::milliseconds now, Ask const& ask)
    {
        {
            std::lock_guard const lock(mutex);
            if (value && (now - learntAt < std::chrono::hours(1) || IsRecent(failedAt, now)))
                return *value;
        }
        Outcome<Value> const answer = AskTogether(now, ask);
        std::lock_guard const lock(mutex);
        return !answer && value ? *value : answer;
    }

    /// Asked anew at once, but at most once a minute.
    Outcome<Value> Renew(std::chrono::milliseconds now, Ask const& ask)
    {
        {
            std::lock_guard const lock(mutex);
            if (value && IsRecent(renewedAt, now))
                return *value;
            renewedAt = now;
        }
        return AskTogether(now, ask);
    }

private:
    using Time = std::optional<std::chrono::milliseconds>;

    static bool IsRecent(Time time, std::chrono::milliseconds now)
    {
        return time && now - *time < std::chrono::minutes(1);
    }

    Outcome<Value> AskTogether(std::chrono::milliseconds now, Ask const& ask)
    {
        std::promise<Outcome<Value>> promise;
        {
            std::unique_lock lock(mutex);
            if (asking.valid()) {
                auto const others = asking;
                lock.unlock();
                return others.get();
            }
            asking = promise.get_future().share();
        }
        try {
            Outcome<Value> answer = ask();
            Remember(answer, now);
            promise.set_value(answer);
            return answer;
        } catch (...) {
            {
                std::lock_guard const lock(mutex);
                asking = {};
            }
            promise.set_exception(std::current_exception());
            throw;
        }
    }

    void Remember(Outcome<Value> const& answer, std::chrono::milliseconds now)
    {
        std::lock_guard const lock(mutex);
        asking = {};
        failedAt = answer ? Time() : now;
        if (!answer)
            return;
        value = *answer;
        learntAt = now;
    }

    std::mutex mutex; ///< Of all that follows.
    std::optional<Value> value;
    std::chrono::milliseconds learntAt{0};
    Time failedAt, renewedAt;
    std::shared_future<Outcome<Value>> asking;
};

} // namespace Halvorix::OpenId
