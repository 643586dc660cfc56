// A listener in a process that has no more handles.

#include <chrono>
#include <ctime>
#include <future>
#include <string>
#include <thread>

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

TEST(Listener, WaitsForHandlesWithoutBeingBusy)
{
    auto opened = Listener::Open({});
    ASSERT_TRUE(opened) << opened.Why().reason;
    std::string const uri = (*opened)->RedirectUri();
    auto const port = static_cast<unsigned short>(std::stoi(uri.substr(uri.rfind(':') + 1)));
    int const browser = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(connect(browser, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    std::string const request =
        "GET /callback?state=right HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
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

} // namespace
