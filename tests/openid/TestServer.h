#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include <boost/asio/ip/tcp.hpp>

namespace Rig {

/// A server at the loopback address for one test, which says byte by byte what it answers.
class TestServer {
public:
    using Socket = boost::asio::ip::tcp::socket;

    /// One connection, on a thread of its own. What fails because the client has gone is left
    /// out without a word.
    class Connection {
    public:
        Connection(Socket& aSocket, TestServer& aServer) : socket(aSocket), server(aServer) {}

        /// Head and body of a request; empty if the client has gone.
        std::string Request();
        /// False if the client has gone.
        bool Send(std::string const& bytes);
        /// Waits until the client or the test has gone, a minute at most.
        void Hold();

        Socket& socket;

    private:
        template <class Step>
        bool Repeat(Step step);

        TestServer& server;
    };
    using Handler = std::function<void(Connection&)>;

    explicit TestServer(Handler handler);
    ~TestServer();
    TestServer(TestServer const&) = delete;
    TestServer& operator=(TestServer const&) = delete;

    int Port() const;
    /// http://127.0.0.1:PORT with a path behind it.
    std::string Url(std::string const& path = "/") const;
    /// How many clients came.
    int Count() const;

private:
    struct State;
    std::unique_ptr<State> const state;
};

/// A handler that takes one request and answers it so.
TestServer::Handler Answering(std::string const& bytes);

/// A whole answer.
std::string HttpAnswer(std::string const& status, std::string const& body,
                       std::string const& headers = {});

} // namespace Rig
