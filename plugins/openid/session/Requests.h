#pragma once

#include <atomic>
#include <chrono>
#include <optional>

#include "openid/platform/Http.h"
#include "openid/protocol/Outcome.h"
#include "openid/protocol/Provider.h"
#include "openid/session/ProxyCredentials.h"

namespace Halvorix::OpenId {

/// Bounds for the requests of the calling thread, for as long as it lives: a provider's functions
/// make several, of which their caller knows nothing.
class RequestBounds {
public:
    using Limit = std::chrono::milliseconds;

    /// @param limit of each request
    /// @param limitOfAll from now on; once it is over, none is sent
    RequestBounds(std::atomic<bool> const* cancelled, Limit limit,
                  std::optional<Limit> limitOfAll = std::nullopt);
    ~RequestBounds();
    RequestBounds(RequestBounds const&) = delete;
    RequestBounds& operator=(RequestBounds const&) = delete;

    /// The calling thread's bounds, in place of wider ones. False if no time is left.
    static bool Apply(HttpRequest& request);
    /// Why the calling thread is not to wait any longer; no value while it may.
    static std::optional<Failure> WhyOver();

private:
    std::atomic<bool> const* const cancelled;
    Limit const limit;
    std::optional<Limit> const deadline; ///< By SinceBoot.
    RequestBounds const* const outer;
};

/// Lets the requests of the calling thread share connections, for as long as it lives.
class SharedConnections {
public:
    SharedConnections();
    ~SharedConnections();
    SharedConnections(SharedConnections const&) = delete;
    SharedConnections& operator=(SharedConnections const&) = delete;

private:
    HttpConnections own;
    HttpConnections* const outer;
};

/// Sends within the calling thread's bounds, with the host's credentials, and leaves nothing of
/// either in memory.
HttpResponse SendWithin(HttpRequest const& request, Provider::Send const& send,
                        ProxyCredentials const& proxies);

} // namespace Halvorix::OpenId
