#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Halvorix::OpenId {

/// What became of a request, apart from the status that a server gave.
enum class HttpFailure {
    None,        ///< A server answered, whatever its status.
    Name,        ///< The host's name could not be looked up.
    Connection,  ///< Refused, reset, or ended before the answer was whole; or it is not HTTP.
    Certificate, ///< The server's certificate or the TLS handshake was refused.
    Proxy,       ///< The proxy wants credentials, or refused them.
    Timeout,     ///< No whole answer within the time limit.
    TooLarge,    ///< More than the limit of a body.
    Cancelled,   ///< The caller's flag was raised.
    Other,
};

/// Credentials for a proxy. An empty host or the port 0 fits any; on Windows every port fits, since
/// the system does not tell which one it uses.
struct ProxyCredential {
    std::string host;
    int port = 0;
    std::string user, password;
};

/// Connections that requests of one thread use one after another, closed at its end and after a
/// request that failed; on Linux, where each new one reads all authorities. Only a GET takes one
/// that is there already: what a server has closed meanwhile is asked once more, and a code or a
/// refresh token is sent once. Behind a proxy each request has its own.
class HttpConnections {
public:
    HttpConnections();
    ~HttpConnections();
    HttpConnections(HttpConnections const&) = delete;
    HttpConnections& operator=(HttpConnections const&) = delete;

    struct Kept;
    std::unique_ptr<Kept> const kept; ///< For SendHttp; may be null.
};

struct HttpRequest {
    std::string method = "GET";
    std::string url; ///< https, or http at a loopback address; nothing else is sent.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;                          ///< With its Content-Type among the headers.
    std::chrono::milliseconds timeout{30'000}; ///< For all of it.
    std::size_t maxBody = 1 << 20;             ///< Of the answer, in bytes.
    std::vector<ProxyCredential> proxyCredentials;
    std::atomic<bool> const* cancelled = nullptr; ///< Asked ten times a second.
    HttpConnections* connections = nullptr;       ///< None: the request has its own.
};

struct HttpResponse {
    HttpFailure failure = HttpFailure::None;
    std::string reason; ///< The system's words on a failure; no secret, no URL's query.
    int status = 0;
    std::vector<std::pair<std::string, std::string>> headers; ///< Names in small letters.
    std::string body;

    /// The first header of this name (small letters), empty if there is none.
    std::string Header(std::string const& name) const;
};

/// Sends a request through the system's proxy and waits for the whole answer. TLS is verified
/// by the system's store of authorities; no redirect is followed, no cookie kept. Throws
/// nothing but std::bad_alloc. Any thread.
HttpResponse SendHttp(HttpRequest const& request);

} // namespace Halvorix::OpenId
