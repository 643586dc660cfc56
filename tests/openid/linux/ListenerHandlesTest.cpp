// A listener in a process that has no more handles, or that starts others.

#include <atomic>
#include <chrono>
#include <ctime>
#include <future>
#include <string>
#include <thread>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "openid/protocol/Listener.h"

namespace {

using namespace Halvorix::OpenId;
using namespace std::chrono_literals;

/// No handle beyond those that are open, while it lives.
class NoMoreHandles {
public:
    NoMoreHandles()
    {
        getrlimit(RLIMIT_NOFILE, &before);
        rlimit none = before;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoMoreHandles() { setrlimit(RLIMIT_NOFILE, &before); }

private:
    rlimit before{};
};

int PortOf(std::string const& uri) { return std::stoi(uri.substr(uri.rfind(':') + 1)); }

/// -1 if it cannot be.
int ConnectedTo(std::string const& uri)
{
    int const browser = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(PortOf(uri)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connect(browser, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 ? browser
                                                                                        : -1;
}

TEST(Listener, WaitsForHandlesWithoutBeingBusy)
{
    auto opened = Listener::Open({});
    ASSERT_TRUE(opened) << opened.Why().reason;
    std::string const uri = (*opened)->RedirectUri();
    int const browser = ConnectedTo(uri);
    ASSERT_GE(browser, 0);
    std::string const request =
        "GET /callback?state=right HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(PortOf(uri)) +
        "\r\n\r\n";
    ASSERT_EQ(write(browser, request.data(), request.size()), static_cast<ssize_t>(request.size()));

    std::future<Outcome<Parameters>> answer;
    {
        NoMoreHandles const none;
        answer = std::async(std::launch::async,
                            [&] { return (*opened)->Wait("right", 30s, nullptr, {}); });
        std::clock_t const start = std::clock();
        EXPECT_EQ(answer.wait_for(1s), std::future_status::timeout);
        EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 0.1);
    }
    auto const response = answer.get();
    EXPECT_TRUE(response) << response.Why().reason;
    close(browser);
}

/// The descriptor of this process whose other end has that port; -1 if there is none.
int ConnectedWith(in_port_t port)
{
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        sockaddr_in other{};
        socklen_t size = sizeof other;
        if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&other), &size) == 0 &&
            other.sin_family == AF_INET && other.sin_port == port)
            return descriptor;
    }
    return -1;
}

TEST(Listener, KeepsItsConnectionsFromChildren)
{
    auto opened = Listener::Open({});
    ASSERT_TRUE(opened) << opened.Why().reason;
    std::string const uri = (*opened)->RedirectUri();
    int const browser = ConnectedTo(uri);
    sockaddr_in own{};
    socklen_t size = sizeof own;
    ASSERT_EQ(getsockname(browser, reinterpret_cast<sockaddr*>(&own), &size), 0);
    std::atomic<bool> isEnough{false};
    auto answer = std::async(std::launch::async,
                             [&] { return (*opened)->Wait("right", 30s, &isEnough, {}); });

    int flags = -1;
    // The flag comes a moment after the connection.
    for (auto const start = std::chrono::steady_clock::now();
         flags != FD_CLOEXEC && std::chrono::steady_clock::now() - start < 3s;
         std::this_thread::sleep_for(2ms))
        flags = fcntl(ConnectedWith(own.sin_port), F_GETFD);

    EXPECT_EQ(flags, FD_CLOEXEC);
    isEnough = true;
    answer.wait();
    close(browser);
}

} // namespace
