#include "openid/session/Events.h"

#include <cstddef>

namespace Halvorix::OpenId {

namespace {

constexpr std::size_t Most = 1000;

} // namespace

void EventQueue::Raise(std::int32_t event, bool first)
{
    std::lock_guard<std::mutex> const guard(mutex);
    if (events.size() == Most)
        events.pop_front();
    if (first)
        events.push_front(event);
    else
        events.push_back(event);
}

bool EventQueue::HasEvent() const
{
    std::lock_guard<std::mutex> const guard(mutex);
    return !events.empty();
}

bool EventQueue::Dispatch()
{
    std::lock_guard<std::mutex> const guard(mutex);
    if (events.empty())
        return false;
    events.pop_front();
    return true;
}

void EventQueue::Clear()
{
    std::lock_guard<std::mutex> const guard(mutex);
    events.clear();
}

} // namespace Halvorix::OpenId
