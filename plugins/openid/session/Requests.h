#pragma once

#include <atomic>
#include <chrono>

#include "openid/platform/Http.h"
#include "openid/protocol/Provider.h"
#include "openid/session/ProxyCredentials.h"

namespace Halvorix::OpenId {

/// Bounds for the requests of the calling thread, for as long as it lives: a provider's functions
/// make several, of which their caller knows nothing.
class RequestBounds {
public:
    RequestBounds(std::atomic<bool> const* cancelled, std::chrono::milliseconds limit);
    ~RequestBounds();
    RequestBounds(RequestBounds const&) = delete;
    RequestBounds& operator=(RequestBounds const&) = delete;

    /// The calling thread's bounds, in place of wider ones.
    static void Apply(HttpRequest& request);

private:
    std::atomic<bool> const* const cancelled;
    std::chrono::milliseconds const limit;
    RequestBounds const* const outer;
};

/// Sends within the calling thread's bounds, with the host's credentials, and leaves nothing of
/// either in memory.
HttpResponse SendWithin(HttpRequest const& request, Provider::Send const& send,
                        ProxyCredentials const& proxies);

} // namespace Halvorix::OpenId
