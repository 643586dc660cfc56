#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <utility>

#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// Why there is no more time, or the host ended it; no value while it may go on.
using WhyOver = std::function<std::optional<Failure>()>;

/// Something that a provider tells and seldom changes. One thread asks, those that come meanwhile
/// wait for the same answer, and no lock is held. If the one that asks is cancelled, another of
/// them asks. Times are those of SinceBoot.
template <class Value>
class Learnt {
public:
    using Ask = std::function<Outcome<Value>()>;

    /// @param whyOver why the calling thread is not to wait for others any longer; for ever if
    /// there is none
    explicit Learnt(WhyOver whyOver = nullptr) : whyOver(std::move(whyOver)) {}

    /// Asked anew after an hour. What was learnt stays good while asking fails, which is then
    /// tried once a minute.
    Outcome<Value> Get(std::chrono::milliseconds now, Ask const& ask)
    {
        Outcome<Value> const answer = AskTogether(now, ask, false);
        std::lock_guard const lock(mutex);
        return !answer && value ? *value : answer;
    }

    /// Asked anew at once, but at most once a minute, in which all have the same answer.
    Outcome<Value> Renew(std::chrono::milliseconds now, Ask const& ask)
    {
        return AskTogether(now, ask, true);
    }

private:
    using Time = std::optional<std::chrono::milliseconds>;

    static bool IsRecent(Time time, std::chrono::milliseconds now)
    {
        return time && now - *time < std::chrono::minutes(1);
    }

    /// One thread's own end, which says nothing to the others.
    static bool IsCancelled(Outcome<Value> const& answer)
    {
        return !answer && answer.Why().kind == Failure::Kind::Cancelled;
    }

    /// What needs no question. Under the mutex.
    std::optional<Outcome<Value>> Known(std::chrono::milliseconds now, bool isRenewal) const
    {
        if (isRenewal)
            return IsRecent(renewedAt, now) ? renewed : std::nullopt;
        if (value && (now - learntAt < std::chrono::hours(1) || IsRecent(failedAt, now)))
            return *value;
        return std::nullopt;
    }

    /// No value once it is there.
    std::optional<Failure> WaitFor(std::shared_future<Outcome<Value>> const& answer) const
    {
        while (answer.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready)
            if (auto over = whyOver ? whyOver() : std::nullopt)
                return over;
        return std::nullopt;
    }

    Outcome<Value> AskTogether(std::chrono::milliseconds now, Ask const& ask, bool isRenewal)
    {
        std::promise<Outcome<Value>> promise;
        std::unique_lock lock(mutex);
        for (;;) {
            if (auto const known = Known(now, isRenewal))
                return *known;
            if (!asking.valid())
                break;
            auto const others = asking;
            lock.unlock();
            if (auto const over = WaitFor(others))
                return *over;
            Outcome<Value> answer = others.get();
            if (!IsCancelled(answer))
                return answer;
            lock.lock();
        }
        asking = promise.get_future().share();
        lock.unlock();
        try {
            Outcome<Value> answer = ask();
            Remember(answer, now, isRenewal);
            promise.set_value(answer);
            return answer;
        } catch (...) {
            {
                std::lock_guard const again(mutex);
                asking = {};
            }
            promise.set_exception(std::current_exception());
            throw;
        }
    }

    void Remember(Outcome<Value> const& answer, std::chrono::milliseconds now, bool isRenewal)
    {
        std::lock_guard const lock(mutex);
        asking = {};
        if (IsCancelled(answer))
            return;
        if (isRenewal) {
            renewed = answer;
            renewedAt = now;
        }
        failedAt = answer ? Time() : now;
        if (!answer)
            return;
        value = *answer;
        learntAt = now;
    }

    WhyOver const whyOver;
    std::mutex mutex; ///< Of all that follows.
    std::optional<Value> value;
    std::optional<Outcome<Value>> renewed; ///< The last renewal's.
    std::chrono::milliseconds learntAt{0};
    Time failedAt, renewedAt;
    std::shared_future<Outcome<Value>> asking;
};

} // namespace Halvorix::OpenId
