// When a provider is polled whether somebody has signed in on another device.

#include "openid/protocol/DeviceGrant.h"

#include <gmock/gmock.h>

using namespace Halvorix::OpenId;
using std::chrono::seconds;
using Time = DevicePolling::Time;

namespace {

constexpr Time Begin = seconds(1000);

Failure Refused(char const* code, int status = 400)
{
    Failure failure;
    failure.kind = Failure::Kind::Refused;
    failure.code = code;
    failure.status = status;
    failure.reason = "the token endpoint answered";
    failure.remedy = "ask the provider's administrator";
    return failure;
}

Failure Of(Failure::Kind kind, int status = 0)
{
    Failure failure = Refused("", status);
    failure.kind = kind;
    return failure;
}

/// How long after this answer, which comes in no time, the next question is due.
seconds PauseAfter(DevicePolling& polling, Failure const& answer)
{
    Time const now = polling.Next();
    auto const end = polling.Answered(answer, now);
    EXPECT_FALSE(end) << (end ? end->reason : std::string());
    return std::chrono::duration_cast<seconds>(polling.Next() - now);
}

} // namespace

TEST(DevicePolling, AsksAtTheProvidersPace)
{
    DevicePolling polling(seconds(7), Begin);
    EXPECT_EQ(polling.Next(), Begin + seconds(7));
    EXPECT_EQ(PauseAfter(polling, Refused("authorization_pending")), seconds(7));
    EXPECT_EQ(PauseAfter(polling, Refused("authorization_pending", 403)), seconds(7));
    // From the answer, however late that came.
    EXPECT_FALSE(polling.Answered(Refused("authorization_pending"), Begin + seconds(500)));
    EXPECT_EQ(polling.Next(), Begin + seconds(507));
}

TEST(DevicePolling, SlowsDownForGood)
{
    DevicePolling polling(seconds(5), Begin);
    EXPECT_EQ(PauseAfter(polling, Refused("slow_down")), seconds(10));
    EXPECT_EQ(PauseAfter(polling, Refused("authorization_pending")), seconds(10));
    Failure busy = Refused("slow_down", 429);
    busy.kind = Failure::Kind::Network;
    EXPECT_EQ(PauseAfter(polling, busy), seconds(15));
    EXPECT_EQ(PauseAfter(polling, Refused("authorization_pending")), seconds(15));
    for (int i = 0; i < 100; ++i)
        PauseAfter(polling, Refused("slow_down"));
    EXPECT_EQ(PauseAfter(polling, Refused("slow_down")), seconds(300));
}

TEST(DevicePolling, BacksOffWhileNobodyAnswers)
{
    DevicePolling polling(seconds(5), Begin);
    EXPECT_EQ(PauseAfter(polling, Of(Failure::Kind::Network)), seconds(10));
    EXPECT_EQ(PauseAfter(polling, Of(Failure::Kind::Provider, 502)), seconds(20));
    EXPECT_EQ(PauseAfter(polling, Of(Failure::Kind::Network, 503)), seconds(40));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(PauseAfter(polling, Of(Failure::Kind::Network)), seconds(60));
    EXPECT_EQ(PauseAfter(polling, Refused("authorization_pending")), seconds(5));
    EXPECT_EQ(PauseAfter(polling, Of(Failure::Kind::Network)), seconds(10));

    DevicePolling slow(seconds(120), Begin);
    EXPECT_EQ(PauseAfter(slow, Of(Failure::Kind::Network)), seconds(120));
}

TEST(DevicePolling, EndsWithAnAnswerThatIsFinal)
{
    struct Row {
        Failure answer;
        char const* reason;
        char const* remedy;
    };
    for (Row const& row :
         {Row{Refused("expired_token"), "the code ended before anybody signed in with it",
              "sign in again"},
          Row{Refused("access_denied"), "the token endpoint answered",
              "sign in again, and agree at the provider"},
          Row{Refused("access_denied", 403), "the token endpoint answered",
              "sign in again, and agree at the provider"},
          Row{Refused("invalid_grant"), "the token endpoint answered",
              "ask the provider's administrator"},
          Row{Refused("Authorization_Pending"), "the token endpoint answered",
              "ask the provider's administrator"},
          Row{Refused(""), "the token endpoint answered", "ask the provider's administrator"},
          Row{Of(Failure::Kind::Provider, 200), "the token endpoint answered",
              "ask the provider's administrator"},
          Row{Of(Failure::Kind::Provider, 302), "the token endpoint answered",
              "ask the provider's administrator"},
          Row{Of(Failure::Kind::Cancelled), "the token endpoint answered",
              "ask the provider's administrator"}}) {
        DevicePolling polling(seconds(5), Begin);
        auto const end = polling.Answered(row.answer, Begin);
        ASSERT_TRUE(end) << row.answer.code;
        EXPECT_EQ(end->reason, row.reason) << row.answer.code;
        EXPECT_EQ(end->remedy, row.remedy) << row.answer.code;
    }
}

TEST(DevicePolling, TellsWhatKeptItFromAnAnswer)
{
    DevicePolling polling(seconds(5), Begin);
    EXPECT_EQ(polling.OutOfTime().reason, "nobody signed in on the other device in time");
    EXPECT_EQ(polling.OutOfTime().kind, Failure::Kind::Cancelled);
    Failure away = Of(Failure::Kind::Network);
    away.reason = "the token endpoint could not be reached";
    PauseAfter(polling, away);
    EXPECT_EQ(polling.OutOfTime().reason, away.reason);
    PauseAfter(polling, Refused("authorization_pending"));
    EXPECT_EQ(polling.OutOfTime().reason, "nobody signed in on the other device in time");
}
