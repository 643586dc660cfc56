#include "openid/TestServer.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>

#include "openid/platform/ListeningSocket.h"

namespace Rig {

namespace asio = boost::asio;
using Tcp = asio::ip::tcp;

namespace {

/// By the plugin's own socket, which is what makes the system's network usable.
Tcp::acceptor Listening(asio::io_context& context)
{
    auto const socket = Halvorix::OpenId::NewListeningSocket();
    Tcp::acceptor acceptor(context, Tcp::v4(),
                           static_cast<Tcp::acceptor::native_handle_type>(socket));
    acceptor.bind(Tcp::endpoint(asio::ip::address_v4::loopback(), 0));
    acceptor.listen();
    return acceptor;
}

} // namespace

struct TestServer::State {
    asio::io_context context;
    Tcp::acceptor acceptor = Listening(context);
    int const port = acceptor.local_endpoint().port();
    Handler handler;
    std::mutex mutex; // of what follows
    std::condition_variable changed;
    bool isEnding = false;
    int count = 0;
    std::list<std::thread> connections;
    std::thread accepting;
};

namespace {

std::size_t LengthIn(std::string const& head)
{
    constexpr char const* name = "Content-Length: ";
    std::size_t const at = head.find(name);
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + std::strlen(name)));
}

} // namespace

std::string TestServer::Connection::Request()
{
    boost::system::error_code gone;
    std::string request;
    std::size_t const head =
        asio::read_until(socket, asio::dynamic_buffer(request), "\r\n\r\n", gone);
    if (gone)
        return {};
    std::size_t const whole = head + LengthIn(request.substr(0, head));
    if (request.size() < whole)
        asio::read(socket, asio::dynamic_buffer(request),
                   asio::transfer_exactly(whole - request.size()), gone);
    return request;
}

bool TestServer::Connection::Send(std::string const& bytes)
{
    boost::system::error_code gone;
    asio::write(socket, asio::buffer(bytes), gone);
    return !gone;
}

void TestServer::Connection::Hold()
{
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    boost::system::error_code gone;
    socket.non_blocking(true, gone);
    std::unique_lock lock(server.state->mutex);
    while (!server.state->isEnding && std::chrono::steady_clock::now() < deadline) {
        char byte;
        socket.read_some(asio::buffer(&byte, 1), gone);
        if (gone && gone != asio::error::would_block)
            return;
        server.state->changed.wait_for(lock, std::chrono::milliseconds(20));
    }
}

TestServer::TestServer(Handler handler) : state(std::make_unique<State>())
{
    state->handler = std::move(handler);
    state->accepting = std::thread([this] {
        for (;;) {
            auto const socket = std::make_shared<Socket>(state->context);
            boost::system::error_code failed;
            state->acceptor.accept(*socket, failed);
            std::lock_guard const guard(state->mutex);
            if (state->isEnding)
                return;
            if (failed)
                continue;
            ++state->count;
            state->connections.emplace_back([this, socket] {
                Connection connection(*socket, *this);
                state->handler(connection);
            });
        }
    });
}

TestServer::~TestServer()
{
    {
        std::lock_guard const guard(state->mutex);
        state->isEnding = true;
        state->changed.notify_all();
    }
    // Accepting ends with one more client.
    boost::system::error_code ignored;
    asio::io_context context;
    Socket last(context);
    last.connect(
        Tcp::endpoint(asio::ip::address_v4::loopback(), static_cast<unsigned short>(state->port)),
        ignored);
    state->accepting.join();
    for (std::thread& connection : state->connections)
        connection.join();
}

int TestServer::Port() const { return state->port; }

std::string TestServer::Url(std::string const& path) const
{
    return "http://127.0.0.1:" + std::to_string(state->port) + path;
}

int TestServer::Count() const
{
    std::lock_guard const guard(state->mutex);
    return state->count;
}

TestServer::Handler Answering(std::string const& bytes)
{
    return [bytes](TestServer::Connection& connection) {
        connection.Request();
        connection.Send(bytes);
    };
}

std::string HttpAnswer(std::string const& status, std::string const& body,
                       std::string const& headers)
{
    return "HTTP/1.1 " + status + "\r\n" + headers +
           "Content-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           body;
}

} // namespace Rig
