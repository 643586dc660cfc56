#include "openid/TestServer.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>

#include "openid/platform/ListeningSocket.h"

namespace Rig {

namespace asio = boost::asio;
using Tcp = asio::ip::tcp;

namespace {

/// By the plugin's own socket, which is what makes the system's network usable.
Tcp::acceptor Listening(asio::io_context& context)
{
    auto const socket = Halvorix::OpenId::NewListeningSocket(false);
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

/// Runs a step until it is done or the client or the test has gone. Never in a call that waits: on
/// Wine, now and then one does not notice that its client was killed.
template <class Step>
bool TestServer::Connection::Repeat(Step step)
{
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    boost::system::error_code gone;
    socket.non_blocking(true, gone);
    bool isDone = false;
    while (!isDone && !gone) {
        isDone = step(gone);
        if (gone != asio::error::would_block)
            continue;
        gone.clear();
        std::unique_lock lock(server.state->mutex);
        if (server.state->isEnding || std::chrono::steady_clock::now() >= deadline)
            return false;
        server.state->changed.wait_for(lock, std::chrono::milliseconds(2));
    }
    socket.non_blocking(false, gone);
    return isDone;
}

std::string TestServer::Connection::Request()
{
    std::string request;
    bool const isWhole = Repeat([&](boost::system::error_code& gone) {
        char piece[4096];
        request.append(piece, socket.read_some(asio::buffer(piece), gone));
        std::size_t const head = request.find("\r\n\r\n");
        return head != std::string::npos &&
               request.size() >= head + 4 + LengthIn(request.substr(0, head + 2));
    });
    return isWhole ? request : std::string();
}

bool TestServer::Connection::Send(std::string const& bytes)
{
    std::size_t sent = 0;
    return Repeat([&](boost::system::error_code& gone) {
        sent += socket.write_some(asio::buffer(bytes) + sent, gone);
        return sent == bytes.size();
    });
}

void TestServer::Connection::Hold()
{
    Repeat([&](boost::system::error_code& gone) {
        char byte;
        socket.read_some(asio::buffer(&byte, 1), gone);
        return false;
    });
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
