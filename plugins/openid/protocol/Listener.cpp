#include "openid/protocol/Listener.h"

#include <algorithm>
#include <array>
#include <list>
#include <optional>
#include <utility>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>

#include "openid/platform/ListeningSocket.h"
#include "openid/protocol/CallbackRequest.h"
#include "support/SecretText.h"

namespace Halvorix::OpenId {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using Clock = std::chrono::steady_clock;
using Error = boost::system::error_code;

constexpr std::chrono::seconds SlowestRequest{5};
/// A browser that has the page closes first, which leaves its port in use for a while, not ours.
constexpr std::chrono::milliseconds Courtesy{250};
constexpr std::chrono::milliseconds SlowestFarewell{500};
constexpr std::chrono::milliseconds Tick{100};
/// More at once come from nobody who wants to sign in; the oldest goes for a new one.
constexpr std::size_t MostConnections = 64;

struct Connection {
    explicit Connection(tcp::socket peer) : socket(std::move(peer))
    {
        head.reserve(LargestRequest + chunk.size()); // growth would leave copies
    }
    ~Connection()
    {
        // The code is still in there.
        SSOServices::Wipe(head);
        SSOServices::Wipe(chunk.data(), chunk.size());
    }

    tcp::socket socket;
    std::string head, answer;
    std::array<char, 4096> chunk;
    Clock::time_point deadline = Clock::now() + SlowestRequest;
    bool isAnswered = false, isShut = false;
};

Failure LocalFailure(std::string reason, std::string remedy)
{
    Failure failure;
    failure.kind = Failure::Kind::Local;
    failure.reason = std::move(reason);
    failure.remedy = std::move(remedy);
    return failure;
}

class LoopbackListener : public Listener {
public:
    /// @param port 0 for one of the system's choice
    Error OpenAt(int port)
    {
        auto const number = static_cast<unsigned short>(port);
        Error const error = Listen({asio::ip::address_v4::loopback(), number});
        // A machine without IPv4 has no such address, or no socket for it.
        if (error != boost::system::errc::address_not_available &&
            error != asio::error::no_descriptors)
            return error;
        Error const instead = Listen({asio::ip::address_v6::loopback(), number});
        return instead ? error : instead;
    }

    ~LoopbackListener() override { SSOServices::Wipe(expected.state); }

    std::string const& RedirectUri() const override { return redirectUri; }

    Outcome<Parameters> Wait(std::string const& state, std::chrono::milliseconds limit,
                             std::atomic<bool> const* cancelled,
                             std::function<void(Peer const&)> const& tell) override
    {
        expected.state = state;
        tellOfPeer = tell;
        auto const isCancelled = [cancelled] { return cancelled && *cancelled; };
        RunUntil(Clock::now() + limit, [&] { return response || isCancelled(); });
        Error ignored;
        acceptor.close(ignored);
        // So that the browser has its page; a second tab may wait for one, too.
        if (response)
            RunUntil(Clock::now() + Courtesy + SlowestFarewell,
                     [&] { return connections.empty() || isCancelled(); });
        connections.clear();
        if (response)
            return *std::move(response);
        Failure failure;
        failure.kind = Failure::Kind::Cancelled;
        failure.reason =
            isCancelled() ? "the host ended the sign-in" : "the browser did not come back in time";
        failure.remedy = "sign in again";
        return failure;
    }

private:
    using Shared = std::shared_ptr<Connection>;

    Error Listen(tcp::endpoint const& address)
    {
        Error error;
        bool const isIpv6 = address.protocol() == tcp::v6();
        auto const handle = NewListeningSocket(isIpv6);
        if (handle < 0)
            return asio::error::no_descriptors;
        acceptor.assign(address.protocol(), static_cast<tcp::acceptor::native_handle_type>(handle),
                        error);
        if (!error)
            acceptor.bind(address, error);
        if (!error)
            acceptor.listen(asio::socket_base::max_listen_connections, error);
        std::string const name = isIpv6 ? "[::1]" : "127.0.0.1";
        unsigned const port = error ? 0 : acceptor.local_endpoint(error).port();
        redirectUri = "http://" + name + ':' + std::to_string(port) + CallbackPath;
        // A browser leaves out the port that http has by itself.
        expected.host = port == 80 ? name : name + ':' + std::to_string(port);
        if (error) {
            Error ignored;
            acceptor.close(ignored);
        }
        return error;
    }

    template <class IsDone>
    void RunUntil(Clock::time_point end, IsDone isDone)
    {
        // No timers: on Windows they would bring a thread.
        for (auto now = Clock::now(); !isDone() && now < end; now = Clock::now()) {
            if (!isAccepting && acceptor.is_open() && now >= acceptAgain)
                Accept();
            io.run_one_until(std::min(now + Tick, end));
            EndSlowOnes(Clock::now());
        }
    }

    void Accept()
    {
        isAccepting = true;
        acceptor.async_accept([this](Error error, tcp::socket socket) {
            isAccepting = false;
            if (error) { // too many open files, say
                acceptAgain = Clock::now() + Tick;
                return;
            }
            KeepFromChildren(static_cast<std::intptr_t>(socket.native_handle()));
            if (connections.size() >= MostConnections)
                Drop(connections.front());
            connections.push_back(std::make_shared<Connection>(std::move(socket)));
            Read(connections.back());
            Accept();
        });
    }

    /// Whether a connection may be this user's browser. Another user may have read the address of
    /// the sign-in, and with it the state.
    bool IsWelcome(tcp::socket& socket)
    {
        Peer const peer = PeerOf(static_cast<std::intptr_t>(socket.native_handle()));
        if (peer.user != Peer::User::This && tellOfPeer)
            std::exchange(tellOfPeer, nullptr)(peer);
        return peer.user != Peer::User::Other;
    }

    void Read(Shared const& connection)
    {
        connection->socket.async_read_some(
            asio::buffer(connection->chunk), [this, connection](Error error, std::size_t size) {
                // Not before something comes: the system takes a while to tell.
                if (error || (connection->head.empty() && !IsWelcome(connection->socket)))
                    return Drop(connection);
                connection->head.append(connection->chunk.data(), size);
                std::size_t const end = connection->head.find("\r\n\r\n");
                if (end != std::string::npos)
                    Answer(connection, end + 4);
                else if (connection->head.size() > LargestRequest)
                    Answer(connection, connection->head.size());
                else
                    Read(connection);
            });
    }

    void Answer(Shared const& connection, std::size_t size)
    {
        CallbackAnswer answer =
            ReadCallback(std::string_view(connection->head).substr(0, size), expected);
        if (answer.response && !response)
            response = std::move(answer.response);
        connection->answer = WriteAnswer(answer);
        asio::async_write(connection->socket, asio::buffer(connection->answer),
                          [this, connection](Error error, std::size_t) {
                              if (error)
                                  return Drop(connection);
                              connection->isAnswered = true;
                              connection->deadline = Clock::now() + Courtesy;
                              ReadRest(connection);
                          });
    }

    /// Until the browser closes: what it sent and nobody read would take the page from it.
    void ReadRest(Shared const& connection)
    {
        connection->socket.async_read_some(asio::buffer(connection->chunk),
                                           [this, connection](Error error, std::size_t) {
                                               if (error)
                                                   return Drop(connection);
                                               ReadRest(connection);
                                           });
    }

    void Drop(Shared connection)
    {
        Error ignored;
        connection->socket.close(ignored);
        connections.remove(connection);
    }

    void EndSlow(Shared connection, Clock::time_point now)
    {
        if (!connection->isAnswered || connection->isShut)
            return Drop(connection);
        Error ignored;
        connection->socket.shutdown(tcp::socket::shutdown_send, ignored);
        connection->isShut = true;
        connection->deadline = now + SlowestFarewell;
    }

    void EndSlowOnes(Clock::time_point now)
    {
        auto const present = connections;
        for (Shared const& connection : present)
            if (connection->deadline <= now)
                EndSlow(connection, now);
    }

    asio::io_context io{1};
    asio::executor_work_guard<asio::io_context::executor_type> const work = make_work_guard(io);
    tcp::acceptor acceptor{io};
    bool isAccepting = false;
    Clock::time_point acceptAgain;
    std::list<Shared> connections;
    std::function<void(Peer const&)> tellOfPeer; // empty once it has been called
    ExpectedCallback expected;
    std::string redirectUri;
    std::optional<Parameters> response;
};

} // namespace

Outcome<std::unique_ptr<Listener>> Listener::Open(std::vector<int> const& ports)
{
    std::string tried;
    for (int const port : ports.empty() ? std::vector<int>{0} : ports) {
        auto listener = std::make_unique<LoopbackListener>();
        Error const error = listener->OpenAt(port);
        if (!error)
            return std::unique_ptr<Listener>(std::move(listener));
        tried += (tried.empty() ? "" : ", ") + std::to_string(port) + " (" +
                 OneLine(error.message()) + ')';
    }
    return LocalFailure("no port of 127.0.0.1 is free for the browser's answer: " + tried,
                        ports.empty()
                            ? "end programs that have many connections open"
                            : "end the program that uses the port, or add one to redirectPorts");
}

} // namespace Halvorix::OpenId
