// Connections that requests share.

#include <atomic>
#include <chrono>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "framework/Variable.h"
#include "openid/TestServer.h"
#include "openid/platform/Http.h"

using namespace Halvorix::OpenId;
using Rig::TestServer;

namespace {

/// After it the connection stays.
constexpr char const* Answer = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nhere";

/// Answers as long as somebody asks.
void AnswerAll(TestServer::Connection& connection)
{
    while (!connection.Request().empty() && connection.Send(Answer)) {
    }
}

int StatusOf(TestServer const& server, HttpConnections* connections, std::string method = "GET")
{
    HttpRequest request;
    request.method = std::move(method);
    request.url = server.Url();
    request.timeout = std::chrono::seconds(10);
    request.connections = connections;
    return SendHttp(request).status;
}

} // namespace

TEST(HttpConnections, AreSharedByWhatIsOnlyRead)
{
    TestServer const server(&AnswerAll);
    HttpConnections connections;
    EXPECT_EQ(StatusOf(server, &connections, "POST"), 200);
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(server.Count(), 1);
}

TEST(HttpConnections, AreNotTakenForWhatMayBeSentOnlyOnce)
{
    TestServer const server(&AnswerAll);
    HttpConnections connections;
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(StatusOf(server, &connections, "POST"), 200);
    EXPECT_EQ(server.Count(), 2);
}

TEST(HttpConnections, AreNotSharedUnlessSomebodyKeepsThem)
{
    TestServer const server(&AnswerAll);
    EXPECT_EQ(StatusOf(server, nullptr), 200);
    EXPECT_EQ(StatusOf(server, nullptr), 200);
    EXPECT_EQ(server.Count(), 2);
}

TEST(HttpConnections, ThatAServerHasClosedAreMadeAgain)
{
    TestServer const server(Rig::Answering(Answer));
    HttpConnections connections;
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(server.Count(), 2);
}

TEST(HttpConnections, EndWithARequestThatFailed)
{
    TestServer const server(&AnswerAll);
    HttpConnections connections;
    EXPECT_EQ(StatusOf(server, &connections), 200);
    HttpRequest refused;
    refused.method = "POST";
    refused.url = server.Url();
    refused.maxBody = 1;
    refused.connections = &connections;
    EXPECT_EQ(SendHttp(refused).failure, HttpFailure::TooLarge);
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(server.Count(), 3);
}

TEST(HttpConnections, EndWithARequestThatWasCancelled)
{
    TestServer const server(&AnswerAll);
    HttpConnections connections;
    EXPECT_EQ(StatusOf(server, &connections), 200);
    std::atomic<bool> const cancelled{true};
    HttpRequest request;
    request.url = server.Url();
    request.cancelled = &cancelled;
    request.connections = &connections;
    EXPECT_EQ(SendHttp(request).failure, HttpFailure::Cancelled);
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(server.Count(), 2);
}

TEST(HttpConnections, AreNotSharedBehindAProxy)
{
    TestServer const server(&AnswerAll);
    HttpConnections connections;
    Rig::SetVariable("https_proxy", "http://127.0.0.1:1");
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(StatusOf(server, &connections), 200);
    Rig::SetVariable("https_proxy", "");
    EXPECT_EQ(server.Count(), 2);
}

TEST(HttpConnections, LeadToOneServer)
{
    TestServer const server(&AnswerAll);
    TestServer const another(&AnswerAll);
    HttpConnections connections;
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(StatusOf(another, &connections), 200);
    EXPECT_EQ(StatusOf(server, &connections), 200);
    EXPECT_EQ(server.Count(), 1);
    EXPECT_EQ(another.Count(), 1);
}
