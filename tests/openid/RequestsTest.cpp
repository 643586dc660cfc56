#include "openid/session/Requests.h"

#include <gmock/gmock.h>

#include <thread>

using namespace Halvorix::OpenId;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

/// Sends within the thread's bounds.
struct Sender {
    ProxyCredentials proxies;
    int sent = 0;
    HttpRequest last;

    HttpResponse Send()
    {
        return SendWithin(
            HttpRequest(),
            [this](HttpRequest const& request) {
                ++sent;
                last = request;
                return HttpResponse();
            },
            proxies);
    }
};

} // namespace

TEST(RequestBounds, ApplyToEachRequestOfTheirLife)
{
    Sender sender;
    std::atomic<bool> flag{false};
    {
        RequestBounds const bounds(&flag, seconds(7));
        sender.Send();
        EXPECT_EQ(sender.last.timeout, seconds(7));
        EXPECT_EQ(sender.last.cancelled, &flag);
    }
    sender.Send();
    EXPECT_EQ(sender.last.timeout, HttpRequest().timeout);
    EXPECT_EQ(sender.last.cancelled, nullptr);
}

TEST(RequestBounds, ShareOneTimeLimit)
{
    Sender sender;
    RequestBounds const bounds(nullptr, seconds(20), seconds(10));
    std::this_thread::sleep_for(milliseconds(20));
    sender.Send();
    EXPECT_GT(sender.last.timeout, milliseconds(0));
    EXPECT_LE(sender.last.timeout, milliseconds(10'000 - 19));
}

TEST(RequestBounds, SendNothingOnceTheirTimeIsOver)
{
    Sender sender;
    RequestBounds const bounds(nullptr, seconds(20), milliseconds(0));
    HttpResponse const response = sender.Send();
    EXPECT_EQ(sender.sent, 0);
    EXPECT_EQ(response.failure, HttpFailure::Timeout);
    EXPECT_EQ(response.reason, "the requests before it took all the time");
}

TEST(SharedConnections, AreThoseOfTheirThreadAndLife)
{
    Sender sender;
    sender.Send();
    EXPECT_EQ(sender.last.connections, nullptr);
    {
        SharedConnections const outer;
        sender.Send();
        HttpConnections* const shared = sender.last.connections;
        EXPECT_NE(shared, nullptr);
        {
            SharedConnections const inner;
            sender.Send();
            EXPECT_NE(sender.last.connections, nullptr);
            EXPECT_NE(sender.last.connections, shared);
        }
        sender.Send();
        EXPECT_EQ(sender.last.connections, shared);
        std::thread([&] { sender.Send(); }).join();
        EXPECT_EQ(sender.last.connections, nullptr);
    }
    sender.Send();
    EXPECT_EQ(sender.last.connections, nullptr);
}
