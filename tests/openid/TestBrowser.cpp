#include "openid/TestBrowser.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

namespace Rig {

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

bool IsWhole(std::string const& answer)
{
    auto const end = answer.find("\r\n\r\n");
    if (end == std::string::npos)
        return false;
    std::string const name = "content-length: ";
    auto const start = std::search(
        answer.begin(), answer.end(), name.begin(), name.end(), [](char left, char right) {
            return std::tolower(static_cast<unsigned char>(left)) == right;
        });
    return start != answer.end() &&
           answer.size() - end - 4 >= std::strtoul(&*start + name.size(), nullptr, 10);
}

} // namespace

std::string Get(std::string const& url)
{
    std::string const scheme = "http://127.0.0.1:";
    auto const slash = url.find('/', scheme.size());
    std::string const port = url.substr(scheme.size(), slash - scheme.size());
    asio::io_context context;
    tcp::socket socket(context);
    boost::system::error_code gone;
    socket.connect({asio::ip::address_v4::loopback(),
                    static_cast<unsigned short>(std::strtoul(port.c_str(), nullptr, 10))},
                   gone);
    std::string const request = "GET " + url.substr(slash) +
                                " HTTP/1.1\r\nHost: 127.0.0.1:" + port +
                                "\r\nConnection: close\r\n\r\n";
    std::string answer;
    if (!gone)
        asio::write(socket, asio::buffer(request), gone);
    // As far as the answer goes: a listener waits for its browser to close.
    auto const isWhole = [&answer](boost::system::error_code error, std::size_t) -> std::size_t {
        return error || IsWhole(answer) ? 0 : 1024;
    };
    if (!gone)
        asio::read(socket, asio::dynamic_buffer(answer), isWhole, gone);
    return answer;
}

TestBrowser::~TestBrowser()
{
    for (std::thread& thread : threads)
        thread.join();
}

bool TestBrowser::Open(std::string const& url)
{
    std::lock_guard<std::mutex> const guard(mutex);
    opened.push_back(url);
    threads.emplace_back([this, url] {
        std::string answer = Get(provider.Redirect(url));
        std::lock_guard<std::mutex> const lock(mutex);
        page = std::move(answer);
    });
    return true;
}

std::vector<std::string> TestBrowser::Opened() const
{
    std::lock_guard<std::mutex> const guard(mutex);
    return opened;
}

std::string TestBrowser::Page() const
{
    std::lock_guard<std::mutex> const guard(mutex);
    return page;
}

} // namespace Rig
