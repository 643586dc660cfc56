#include "openid/session/Events.h"

#include <gtest/gtest.h>

using namespace Halvorix::OpenId;

namespace {

int Dispatched(EventQueue& events)
{
    int count = 0;
    while (events.Dispatch())
        ++count;
    return count;
}

} // namespace

TEST(Events, AreDispatchedOneByOne)
{
    EventQueue events;
    EXPECT_FALSE(events.HasEvent());
    EXPECT_FALSE(events.Dispatch());
    events.Raise(Event::LoggedIn);
    events.Raise(1234, true);
    EXPECT_TRUE(events.HasEvent());
    EXPECT_EQ(Dispatched(events), 2);
    EXPECT_FALSE(events.HasEvent());
}

TEST(Events, AreDropped)
{
    EventQueue events;
    events.Raise(Event::LoggedIn);
    events.Clear();
    EXPECT_FALSE(events.HasEvent());
}

TEST(Events, DoNotPileUpWhereNobodyDispatches)
{
    EventQueue events;
    for (int i = 0; i < 5000; ++i)
        events.Raise(i, i % 2 == 0);
    EXPECT_EQ(Dispatched(events), 1000);
}
