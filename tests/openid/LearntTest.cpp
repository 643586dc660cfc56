// What is asked seldom, and by one thread for all.

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "openid/protocol/Learnt.h"

namespace {

using namespace Halvorix::OpenId;
using namespace std::chrono_literals;

/// Counts questions; answers with their number, or fails.
struct Asked {
    Learnt<int>::Ask Ask()
    {
        return [this]() -> Outcome<int> {
            ++count;
            if (isDown)
                return Failure{Failure::Kind::Network, "away", "wait", "", 0};
            return count;
        };
    }

    int count = 0;
    bool isDown = false;
};

TEST(Learnt, IsAskedOnceAnHour)
{
    Asked asked;
    Learnt<int> learnt;
    EXPECT_EQ(*learnt.Get(5min, asked.Ask()), 1);
    EXPECT_EQ(*learnt.Get(64min, asked.Ask()), 1);
    EXPECT_EQ(*learnt.Get(65min, asked.Ask()), 2);
    EXPECT_EQ(*learnt.Get(66min, asked.Ask()), 2);
}

TEST(Learnt, StaysGoodWhileTheNetworkIsAway)
{
    Asked asked;
    Learnt<int> learnt;
    EXPECT_EQ(*learnt.Get(0min, asked.Ask()), 1);
    asked.isDown = true;
    EXPECT_EQ(*learnt.Get(60min, asked.Ask()), 1);
    EXPECT_EQ(asked.count, 2);
    // Nobody shall wait for a network that is away at each question.
    EXPECT_EQ(*learnt.Get(60min + 59s, asked.Ask()), 1);
    EXPECT_EQ(asked.count, 2);
    EXPECT_EQ(*learnt.Get(61min, asked.Ask()), 1);
    EXPECT_EQ(asked.count, 3);
    asked.isDown = false;
    EXPECT_EQ(*learnt.Get(62min, asked.Ask()), 4);
}

TEST(Learnt, RemembersNoFailure)
{
    Asked asked;
    asked.isDown = true;
    Learnt<int> learnt;
    EXPECT_EQ(learnt.Get(0min, asked.Ask()).Why().reason, "away");
    asked.isDown = false;
    EXPECT_EQ(*learnt.Get(0min, asked.Ask()), 2);
}

TEST(Learnt, IsRenewedOnceAMinute)
{
    Asked asked;
    Learnt<int> learnt;
    EXPECT_EQ(*learnt.Get(10min, asked.Ask()), 1);
    EXPECT_EQ(*learnt.Renew(10min, asked.Ask()), 2);
    EXPECT_EQ(*learnt.Renew(10min + 59s, asked.Ask()), 2);
    EXPECT_EQ(*learnt.Renew(11min, asked.Ask()), 3);
    EXPECT_EQ(*learnt.Get(70min, asked.Ask()), 3);
}

TEST(Learnt, TellsThatItCouldNotBeRenewed)
{
    Asked asked;
    Learnt<int> learnt;
    EXPECT_EQ(*learnt.Get(0min, asked.Ask()), 1);
    asked.isDown = true;
    EXPECT_EQ(learnt.Renew(1min, asked.Ask()).Why().reason, "away");
    EXPECT_EQ(*learnt.Get(2min, asked.Ask()), 1);
}

TEST(Learnt, IsAskedByOneThreadForAll)
{
    std::atomic<int> count{0};
    std::promise<void> release;
    auto const released = release.get_future().share();
    Learnt<int> learnt;
    auto const ask = [&]() -> Outcome<int> {
        ++count;
        released.wait();
        return 7;
    };
    std::vector<std::future<Outcome<int>>> answers;
    for (int i = 0; i < 8; ++i)
        answers.push_back(std::async(std::launch::async, [&] { return learnt.Get(0min, ask); }));
    while (count == 0)
        std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(100ms);
    release.set_value();
    for (auto& answer : answers)
        EXPECT_EQ(*answer.get(), 7);
    EXPECT_EQ(count, 1);
}

TEST(Learnt, HandsAnExceptionToAllAndAsksAgain)
{
    Learnt<int> learnt;
    EXPECT_THROW(learnt.Get(0min, []() -> Outcome<int> { throw std::runtime_error("no"); }),
                 std::runtime_error);
    EXPECT_EQ(*learnt.Get(0min, []() -> Outcome<int> { return 1; }), 1);
}

} // namespace
