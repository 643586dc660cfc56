// The listener at the loopback address, asked by real connections.

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <gmock/gmock.h>

#include "openid/protocol/Listener.h"

namespace {

using namespace Halvorix::OpenId;
using namespace std::chrono_literals;
using boost::asio::ip::tcp;
using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;
using Error = boost::system::error_code;

int PortOf(Listener const& listener)
{
    std::string const& uri = listener.RedirectUri();
    return std::stoi(uri.substr(uri.rfind(':') + 1));
}

/// One connection of a browser. Nothing takes longer than ten seconds.
class Peer {
public:
    explicit Peer(int port, char const* address = "127.0.0.1")
    {
        Error failed;
        socket.connect({boost::asio::ip::make_address(address), static_cast<unsigned short>(port)},
                       failed);
        error = failed;
    }

    void Send(std::string const& bytes)
    {
        Error ignored;
        boost::asio::write(socket, boost::asio::buffer(bytes), ignored);
    }

    /// All that comes until the other side closes.
    std::string Receive()
    {
        std::string received;
        boost::asio::async_read(socket, boost::asio::dynamic_buffer(received),
                                [](Error, std::size_t) {});
        io.restart();
        io.run_for(10s);
        return io.stopped() ? received : "nothing within ten seconds";
    }

    /// Until there is something to read.
    void WaitForPage()
    {
        Error ignored;
        socket.wait(tcp::socket::wait_read, ignored);
    }

    std::string Ask(std::string const& bytes)
    {
        Send(bytes);
        return Receive();
    }

    Error error;

private:
    boost::asio::io_context io;
    tcp::socket socket{io};
};

struct ListenerAsked : testing::Test {
    ~ListenerAsked() override { cancelled = true; }

    void Start(std::chrono::milliseconds limit = 60s)
    {
        auto opened = Listener::Open({});
        ASSERT_TRUE(opened) << opened.Why().reason;
        listener = std::move(*opened);
        port = PortOf(*listener);
        answer = std::async(std::launch::async, [this, limit] {
            return listener->Wait("right", limit, &cancelled, {});
        });
    }

    std::string Request(std::string const& target, std::string const& method = "GET") const
    {
        return method + ' ' + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
               "\r\n\r\n";
    }

    std::string RightRequest() const { return Request("/callback?code=c&state=right"); }

    void ExpectRightOne()
    {
        Peer browser(port);
        EXPECT_THAT(browser.Ask(RightRequest()), StartsWith("HTTP/1.1 200 OK\r\n"));
        auto const response = answer.get();
        ASSERT_TRUE(response) << response.Why().reason;
        EXPECT_THAT(*response, Contains(Pair("code", "c")));
    }

    std::unique_ptr<Listener> listener;
    int port = 0;
    std::atomic<bool> cancelled{false};
    std::future<Outcome<Parameters>> answer;
};

TEST_F(ListenerAsked, HasAnAddressAtTheLoopbackAlone)
{
    Start();
    EXPECT_EQ(listener->RedirectUri(), "http://127.0.0.1:" + std::to_string(port) + "/callback");
    EXPECT_TRUE(Peer(port, "127.0.0.2").error);
    ExpectRightOne();
}

TEST_F(ListenerAsked, GivesTheResponseAndAPage)
{
    Start();
    Peer browser(port);
    std::string const page = browser.Ask(RightRequest());
    EXPECT_THAT(page, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(page, HasSubstr("\r\nConnection: close\r\n"));
    EXPECT_THAT(page, HasSubstr("<h1>You are back from signing in</h1>"));
    auto const response = answer.get();
    ASSERT_TRUE(response) << response.Why().reason;
    EXPECT_THAT(*response, testing::ElementsAre(Pair("code", "c"), Pair("state", "right")));
    EXPECT_TRUE(Peer(port).error) << "it closes behind the right one";
}

TEST_F(ListenerAsked, GoesOnAfterOthers)
{
    Start();
    EXPECT_THAT(Peer(port).Ask(Request("/favicon.ico")), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(Peer(port).Ask(Request("/callback?code=c&state=wrong")),
                StartsWith("HTTP/1.1 400 "));
    EXPECT_THAT(Peer(port).Ask(Request("/callback?state=right", "POST")),
                StartsWith("HTTP/1.1 405 "));
    EXPECT_THAT(Peer(port).Ask("GET /callback?state=right HTTP/1.1\r\nHost: evil.example\r\n\r\n"),
                StartsWith("HTTP/1.1 400 "));
    EXPECT_THAT(Peer(port).Ask("GET /callback?state=right HTTP/1.0\r\n\r\n"),
                StartsWith("HTTP/1.1 400 "));
    EXPECT_THAT(Peer(port).Ask("\x16\x03\x01 no http\r\n\r\n"), StartsWith("HTTP/1.1 400 "));
    Peer{port}; // goes away at once
    ExpectRightOne();
}

TEST_F(ListenerAsked, GivesOtherOriginsNothing)
{
    Start();
    std::string const origin = "Origin: https://evil.example\r\n";
    std::string const host = "Host: 127.0.0.1:" + std::to_string(port) + "\r\n";
    for (std::string const& head :
         {"OPTIONS /callback?state=x HTTP/1.1\r\n" + host + origin +
              "Access-Control-Request-Method: GET\r\n\r\n",
          "GET /callback?state=x HTTP/1.1\r\n" + host + origin + "\r\n"}) {
        std::string const page = Peer(port).Ask(head);
        EXPECT_THAT(page, AnyOf(StartsWith("HTTP/1.1 405 "), StartsWith("HTTP/1.1 400 ")));
        EXPECT_THAT(page, Not(HasSubstr("Access-Control")));
    }
    ExpectRightOne();
}

TEST_F(ListenerAsked, RefusesALargeRequest)
{
    Start();
    EXPECT_THAT(Peer(port).Ask("GET /callback?state=right&x=" + std::string(20000, 'x')),
                StartsWith("HTTP/1.1 431 "));
    ExpectRightOne();
}

TEST_F(ListenerAsked, TakesARequestInPieces)
{
    Start();
    Peer browser(port);
    for (char const byte : RightRequest())
        browser.Send(std::string(1, byte));
    EXPECT_THAT(browser.Receive(), StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_TRUE(answer.get());
}

TEST_F(ListenerAsked, AnswersTheFirstOfPipelinedRequests)
{
    Start();
    std::string const page = Peer(port).Ask(Request("/favicon.ico") + RightRequest());
    EXPECT_THAT(page, StartsWith("HTTP/1.1 404 "));
    EXPECT_EQ(page.find("HTTP/1.1", 1), std::string::npos);
    Peer browser(port);
    EXPECT_THAT(browser.Ask(RightRequest() + Request("/style.css")), StartsWith("HTTP/1.1 200 "));
    EXPECT_TRUE(answer.get());
}

TEST_F(ListenerAsked, LetsNoSlowOneKeepTheRightOneWaiting)
{
    Start();
    std::vector<std::unique_ptr<Peer>> slow;
    for (int i = 0; i < 40; ++i) {
        slow.push_back(std::make_unique<Peer>(port));
        slow.back()->Send("GET /callb");
    }
    auto const start = Clock::now();
    ExpectRightOne();
    EXPECT_LT(Clock::now() - start, 4s);
}

TEST_F(ListenerAsked, ServesTheRightOneBehindAFlood)
{
    Start();
    std::vector<std::unique_ptr<Peer>> flood;
    for (int i = 0; i < 300; ++i)
        flood.push_back(std::make_unique<Peer>(port));
    auto const start = Clock::now();
    ExpectRightOne();
    EXPECT_LT(Clock::now() - start, 4s);
}

TEST_F(ListenerAsked, ClosesASlowOneAfterFiveSeconds)
{
    Start();
    Peer slow(port);
    auto const start = Clock::now();
    EXPECT_EQ(slow.Ask("GET /callback?state=right"), "");
    EXPECT_GT(Clock::now() - start, 4s);
    EXPECT_LT(Clock::now() - start, 9s);
    ExpectRightOne();
}

TEST_F(ListenerAsked, AnswersTwoRightOnesAtOnce)
{
    Start();
    Peer one(port), other(port);
    std::string const begin = RightRequest().substr(0, 30), end = RightRequest().substr(30);
    one.Send(begin);
    other.Send(begin);
    one.Send(end);
    other.Send(end);
    auto otherPage = std::async(std::launch::async, [&] { return other.Receive(); });
    EXPECT_THAT(one.Receive(), StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(otherPage.get(), StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_TRUE(answer.get());
}

TEST_F(ListenerAsked, GivesThePageToABrowserThatClosesLate)
{
    Start();
    Peer browser(port);
    browser.Send(RightRequest());
    auto const start = Clock::now();
    EXPECT_TRUE(answer.get());
    EXPECT_LT(Clock::now() - start, 4s);
    EXPECT_THAT(browser.Receive(), HasSubstr("</html>\n"));
}

TEST_F(ListenerAsked, EndsAtOnceForTheHost)
{
    Start();
    auto const start = Clock::now();
    cancelled = true;
    auto const response = answer.get();
    EXPECT_LT(Clock::now() - start, 2s);
    ASSERT_FALSE(response);
    EXPECT_EQ(response.Why().kind, Failure::Kind::Cancelled);
    EXPECT_EQ(response.Why().reason, "the host ended the sign-in");
    EXPECT_TRUE(Peer(port).error);
}

TEST_F(ListenerAsked, EndsAtItsLimit)
{
    Start(300ms);
    auto const response = answer.get();
    ASSERT_FALSE(response);
    EXPECT_EQ(response.Why().kind, Failure::Kind::Cancelled);
    EXPECT_EQ(response.Why().reason, "the browser did not come back in time");
}

TEST(Listener, KeepsABrowserThatComesBeforeAnybodyWaits)
{
    auto opened = Listener::Open({});
    ASSERT_TRUE(opened);
    int const port = PortOf(**opened);
    Peer browser(port);
    browser.Send("GET /callback?state=right HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
                 "\r\n\r\n");
    EXPECT_TRUE((*opened)->Wait("right", 10s, nullptr, {}));
    EXPECT_THAT(browser.Receive(), StartsWith("HTTP/1.1 200 "));
}

TEST(Listener, TakesTheFirstOfItsPortsThatIsFree)
{
    auto one = Listener::Open({}), other = Listener::Open({});
    ASSERT_TRUE(one && other);
    int const first = PortOf(**one), second = PortOf(**other);
    auto const none = Listener::Open({first, second});
    ASSERT_FALSE(none);
    EXPECT_EQ(none.Why().kind, Failure::Kind::Local);
    EXPECT_THAT(none.Why().reason,
                StartsWith("no port of 127.0.0.1 is free for the browser's answer: " +
                           std::to_string(first) + " ("));
    EXPECT_THAT(none.Why().reason, HasSubstr("), " + std::to_string(second) + " ("));
    EXPECT_EQ(none.Why().remedy, "end the program that uses the port, or add one to redirectPorts");
    other->reset();
    auto const third = Listener::Open({first, second, 0});
    ASSERT_TRUE(third) << third.Why().reason;
    EXPECT_EQ(PortOf(**third), second);
}

TEST(Listener, IsFoundAtThePortThatBrowsersLeaveOut)
{
    auto opened = Listener::Open({80});
    if (!opened)
        GTEST_SKIP() << opened.Why().reason;
    EXPECT_EQ((*opened)->RedirectUri(), "http://127.0.0.1:80/callback");
    Peer browser(80);
    browser.Send("GET /callback?state=right HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    EXPECT_TRUE((*opened)->Wait("right", 10s, nullptr, {}));
    EXPECT_THAT(browser.Receive(), StartsWith("HTTP/1.1 200 "));
}

TEST(Listener, CanHaveItsPortAgainForTheNextLogin)
{
    int port = 0;
    for (int i = 0; i < 3; ++i) {
        auto opened = Listener::Open(port ? std::vector<int>{port} : std::vector<int>{});
        ASSERT_TRUE(opened) << opened.Why().reason;
        port = PortOf(**opened);
        std::string const request =
            "GET /callback?state=right HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
            "\r\n\r\n";
        auto browser = std::make_unique<Peer>(port);
        browser->Send(request);
        // A browser closes as soon as it has the page, or after we have.
        auto closing = std::async(std::launch::async, [&] {
            browser->WaitForPage();
            std::this_thread::sleep_for(i == 1 ? 600ms : 0ms);
            browser.reset();
        });
        EXPECT_TRUE((*opened)->Wait("right", 10s, nullptr, {}));
    }
}

} // namespace
