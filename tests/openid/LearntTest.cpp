// What is asked seldom, and by one thread for all.

#include <atomic>
#include <chrono>
#include <future>
#include <optional>
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
    // Else the second one that asks for new keys would take the old ones for them.
    EXPECT_EQ(learnt.Renew(1min + 59s, asked.Ask()).Why().reason, "away");
    EXPECT_EQ(asked.count, 2);
    EXPECT_EQ(*learnt.Get(2min, asked.Ask()), 1);
}

TEST(Learnt, IsRenewedForAllThatAskMeanwhile)
{
    Learnt<int> learnt;
    EXPECT_EQ(*learnt.Get(0min, []() -> Outcome<int> { return 1; }), 1);
    std::promise<void> asked, release;
    auto first = std::async(std::launch::async, [&] {
        return learnt.Renew(1min, [&]() -> Outcome<int> {
            asked.set_value();
            release.get_future().wait();
            return 2;
        });
    });
    asked.get_future().wait();
    auto second = std::async(
        std::launch::async, [&] { return learnt.Renew(1min, []() -> Outcome<int> { return 3; }); });
    EXPECT_EQ(second.wait_for(100ms), std::future_status::timeout) << "it did not wait";
    release.set_value();
    EXPECT_EQ(*first.get(), 2);
    EXPECT_EQ(*second.get(), 2);
}

TEST(Learnt, IsAskedByTheNextWhenTheFirstIsCancelled)
{
    Learnt<int> learnt;
    std::promise<void> asked, release;
    auto first = std::async(std::launch::async, [&] {
        return learnt.Get(0min, [&]() -> Outcome<int> {
            asked.set_value();
            release.get_future().wait();
            return Failure{Failure::Kind::Cancelled, "cancelled", "", "", 0};
        });
    });
    asked.get_future().wait();
    std::vector<std::future<Outcome<int>>> others;
    std::atomic<int> count{0};
    for (int i = 0; i < 4; ++i)
        others.push_back(std::async(std::launch::async, [&] {
            return learnt.Get(0min, [&]() -> Outcome<int> { return ++count; });
        }));
    EXPECT_EQ(others.back().wait_for(100ms), std::future_status::timeout) << "it did not wait";
    release.set_value();
    // Unless another was so quick that there is a value by now.
    auto const own = first.get();
    EXPECT_TRUE(own ? *own == 1 : own.Why().reason == "cancelled");
    for (auto& other : others)
        EXPECT_EQ(*other.get(), 1);
}

TEST(Learnt, IsNotWaitedForByOneThatMayWaitNoLonger)
{
    std::atomic<bool> isOver{false};
    Learnt<int> learnt([&]() -> std::optional<Failure> {
        if (!isOver)
            return std::nullopt;
        return Failure{Failure::Kind::Cancelled, "over", "", "", 0};
    });
    std::promise<void> asked, release;
    auto first = std::async(std::launch::async, [&] {
        return learnt.Get(0min, [&]() -> Outcome<int> {
            asked.set_value();
            release.get_future().wait();
            return 1;
        });
    });
    asked.get_future().wait();
    auto second = std::async(std::launch::async,
                             [&] { return learnt.Get(0min, []() -> Outcome<int> { return 2; }); });
    EXPECT_EQ(second.wait_for(200ms), std::future_status::timeout) << "it did not wait";
    isOver = true;
    EXPECT_EQ(second.wait_for(5s), std::future_status::ready) << "it waited on";
    release.set_value();
    auto const answer = second.get();
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.Why().reason, "over");
    EXPECT_EQ(*first.get(), 1);
    EXPECT_EQ(*learnt.Get(0min, []() -> Outcome<int> { return 3; }), 1);
}

TEST(Learnt, IsNotTriedLessOftenBecauseOfOneThatWasCancelled)
{
    Learnt<int> learnt;
    auto const cancelled = []() -> Outcome<int> {
        return Failure{Failure::Kind::Cancelled, "cancelled", "", "", 0};
    };
    EXPECT_EQ(*learnt.Get(0min, []() -> Outcome<int> { return 1; }), 1);
    EXPECT_FALSE(learnt.Renew(2min, cancelled));
    EXPECT_EQ(*learnt.Renew(2min, []() -> Outcome<int> { return 2; }), 2);
    EXPECT_EQ(*learnt.Get(70min, cancelled), 2);
    EXPECT_EQ(*learnt.Get(70min, []() -> Outcome<int> { return 3; }), 3);
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
