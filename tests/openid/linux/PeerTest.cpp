// Who is at the other end of a connection to the listener.

#include <gmock/gmock.h>

#include <fcntl.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <future>

#include "openid/Child.h"
#include "openid/SessionWorld.h"
#include "openid/protocol/Listener.h"

namespace Halvorix::OpenId {

namespace {

using namespace std::chrono_literals;
using Rig::Child;
using Rig::SessionWorld;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr uid_t Nobody = 65534;
constexpr int NotPossible = 77;

int PortIn(std::string const& uri) { return std::stoi(uri.substr(uri.rfind(':') + 1)); }

std::string RightRequest(int port)
{
    return "GET /callback?code=c&state=right HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
           "\r\n\r\n";
}

/// A connection to a port of this machine; -1 if there is none.
int ConnectedTo(int port)
{
    int const connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(port));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(connection, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0 ? connection
                                                                                   : -1;
}

/// The same by a socket for IPv6, as programs for both have it.
int ConnectedBy6To(int port)
{
    int const connection = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in6 to{};
    to.sin6_family = AF_INET6;
    to.sin6_port = htons(static_cast<std::uint16_t>(port));
    to.sin6_addr.s6_addr[10] = to.sin6_addr.s6_addr[11] = 0xFF;
    to.sin6_addr.s6_addr[12] = 127;
    to.sin6_addr.s6_addr[15] = 1;
    return ::connect(connection, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0 ? connection
                                                                                   : -1;
}

/// All that comes until the other side closes.
std::string Ask(int connection, std::string const& request)
{
    std::string answer;
    if (::send(connection, request.data(), request.size(), MSG_NOSIGNAL) < 0)
        return answer;
    char piece[1024];
    for (ssize_t size; (size = ::read(connection, piece, sizeof piece)) > 0;)
        answer.append(piece, static_cast<std::size_t>(size));
    return answer;
}

/// The other end of a connection.
class Accepted {
public:
    Accepted()
    {
        sockaddr_in at{};
        at.sin_family = AF_INET;
        at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof at;
        ::bind(listening, reinterpret_cast<sockaddr*>(&at), sizeof at);
        ::listen(listening, 250);
        ::getsockname(listening, reinterpret_cast<sockaddr*>(&at), &size);
        port = ntohs(at.sin_port);
    }
    ~Accepted()
    {
        ::close(connection);
        ::close(listening);
    }
    Accepted(Accepted const&) = delete;
    Accepted& operator=(Accepted const&) = delete;

    Peer Other()
    {
        connection = ::accept(listening, nullptr, nullptr);
        return PeerOf(connection);
    }

    int port = 0;

private:
    int const listening = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int connection = -1;
};

struct ListenerOfAUser : testing::Test {
    void Start()
    {
        auto opened = Listener::Open({});
        ASSERT_TRUE(opened) << opened.Why().reason;
        listener = std::move(*opened);
        port = PortIn(listener->RedirectUri());
        answer = std::async(std::launch::async, [this] {
            return listener->Wait("right", 60s, nullptr, [this](Peer const& peer) {
                ++told;
                reason = peer.reason;
            });
        });
    }

    std::unique_ptr<Listener> listener;
    int port = 0;
    std::atomic<int> told{0};
    std::string reason;
    std::future<Outcome<Parameters>> answer;
};

} // namespace

/// As another user: 0 if the connection is closed without an answer.
CHILD_PROGRAM(AsksAsNobody)
{
    if (::setuid(Nobody) != 0)
        return NotPossible;
    int const connection = ConnectedTo(std::stoi(arguments[0]));
    if (connection < 0)
        return 2;
    return Ask(connection, arguments[1]).empty() ? 0 : 1;
}

TEST_F(ListenerOfAUser, AnswersNoConnectionOfOthersAndGoesOn)
{
    Start();
    for (int i = 0; i < 2; ++i) {
        Child another("AsksAsNobody", {std::to_string(port), RightRequest(port)});
        int const status = another.Wait();
        EXPECT_THAT(status, testing::AnyOf(0, NotPossible)) << "it was answered";
        if (status == NotPossible) {
            EXPECT_THAT(Ask(ConnectedTo(port), RightRequest(port)), StartsWith("HTTP/1.1 200"));
            answer.wait();
            GTEST_SKIP() << "only root can become another user";
        }
    }
    EXPECT_EQ(answer.wait_for(0s), std::future_status::timeout);

    EXPECT_THAT(Ask(ConnectedTo(port), RightRequest(port)), StartsWith("HTTP/1.1 200 OK\r\n"));
    auto const response = answer.get();

    ASSERT_TRUE(response) << response.Why().reason;
    EXPECT_EQ(told, 1);
    EXPECT_EQ(reason, "it is of the user with the number 65534");
}

TEST_F(ListenerOfAUser, TakesABrowserThatSpeaksIPv6Too)
{
    int const six = ::socket(AF_INET6, SOCK_STREAM, 0);
    ::close(six);
    if (six < 0)
        GTEST_SKIP() << "the system has no IPv6";
    Start();

    EXPECT_THAT(Ask(ConnectedBy6To(port), RightRequest(port)), StartsWith("HTTP/1.1 200 OK\r\n"));

    EXPECT_TRUE(answer.get());
    EXPECT_EQ(told, 0) << reason;
}

// Where the listener itself has IPv6, on a machine without the other.
TEST(Peer, IsFoundAmongThoseOfIPv6)
{
    int const listening = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in6 at{};
    at.sin6_family = AF_INET6;
    at.sin6_addr.s6_addr[15] = 1;
    socklen_t size = sizeof at;
    if (::bind(listening, reinterpret_cast<sockaddr*>(&at), sizeof at) != 0)
        GTEST_SKIP() << "the system has no IPv6";
    ::listen(listening, 5);
    ::getsockname(listening, reinterpret_cast<sockaddr*>(&at), &size);
    int const browser = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::connect(browser, reinterpret_cast<sockaddr*>(&at), sizeof at), 0);
    int const connection = ::accept(listening, nullptr, nullptr);

    Peer const peer = PeerOf(connection);

    EXPECT_EQ(peer.user, Peer::User::This) << peer.reason;
    for (int const descriptor : {connection, browser, listening})
        ::close(descriptor);
}

TEST(Peer, IsThisUserOrNotKnown)
{
    Accepted known;
    int const browser = ConnectedTo(known.port);
    Peer peer = known.Other();
    EXPECT_EQ(peer.user, Peer::User::This) << peer.reason;
    ::close(browser);

    Accepted ended;
    ::close(ConnectedTo(ended.port));
    peer = ended.Other();
    EXPECT_EQ(peer.user, Peer::User::Other);
    EXPECT_THAT(peer.reason, HasSubstr("it has ended"));

    peer = PeerOf(-1);
    EXPECT_EQ(peer.user, Peer::User::Other);
    EXPECT_EQ(peer.reason, "it has ended");
}

// Many connections, so that the table does not come in one piece.
TEST(Peer, IsFoundAmongMany)
{
    Accepted crowd;
    std::vector<int> others;
    for (int i = 0; i < 200; ++i)
        others.push_back(ConnectedTo(crowd.port));
    Accepted last;
    int const browser = ConnectedTo(last.port);
    Peer const peer = last.Other();
    EXPECT_EQ(peer.user, Peer::User::This) << peer.reason;
    ::close(browser);
    for (int const other : others)
        ::close(other);
}

/// In a world of its own, whose /proc is empty.
CHILD_PROGRAM(LooksWithoutTables)
{
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", "/proc", "tmpfs", 0, nullptr) != 0)
        return NotPossible;
    Accepted pair;
    int const browser = ConnectedTo(pair.port);
    Peer const peer = pair.Other();
    ::close(browser);
    return peer.user == Peer::User::Untold &&
                   peer.reason == "/proc/net/tcp: No such file or directory"
               ? 0
               : 1;
}

TEST(Peer, IsUntoldWhereTheSystemHasNoTable)
{
    Child child("LooksWithoutTables", {});
    int const status = child.Wait();
    if (status == NotPossible)
        GTEST_SKIP() << "no process may have a /proc of its own here";
    EXPECT_EQ(status, 0);
}

TEST(SessionLogin, IsNotFinishedByAnotherUser)
{
    SessionWorld world;
    auto const session = world.NewSession();
    auto const login = session->BeginLogin("");
    ASSERT_TRUE(login);
    std::string const back = world.provider.Redirect(*login->url);
    std::size_t const slash = back.find('/', std::string("http://").size());
    int const port = PortIn(back.substr(0, slash));
    std::thread host([&] { EXPECT_TRUE(session->FinishLogin(*login)) << world.LogText(); });

    Child another("AsksAsNobody", {std::to_string(port), "GET " + back.substr(slash) +
                                                             " HTTP/1.1\r\nHost: 127.0.0.1:" +
                                                             std::to_string(port) + "\r\n\r\n"});
    int const status = another.Wait();
    world.browser.Open(*login->url);
    host.join();

    if (status == NotPossible)
        GTEST_SKIP() << "only root can become another user";
    EXPECT_EQ(status, 0) << "it was answered";
    EXPECT_EQ(world.LinesWith(
                  "Error A connection was closed without an answer, and the sign-in goes on: it "
                  "is of the user with the number 65534. Fix: run the browser on this "
                  "machine and as the host's user; "),
              1)
        << world.LogText();
    EXPECT_TRUE(session->IsLoggedIn());
}

} // namespace Halvorix::OpenId
