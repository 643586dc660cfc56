#include "openid/session/Requests.h"

#include <algorithm>

#include "openid/platform/System.h"
#include "support/SecretText.h"

namespace Halvorix::OpenId {

namespace {

thread_local RequestBounds const* current = nullptr;
thread_local HttpConnections* connections = nullptr;

/// A copy of a request, wiped at its end.
struct OwnRequest {
    HttpRequest request;

    explicit OwnRequest(HttpRequest const& original) : request(original) {}
    ~OwnRequest()
    {
        SSOServices::Wipe(request.body);
        for (auto& header : request.headers)
            SSOServices::Wipe(header.second);
        for (ProxyCredential& credential : request.proxyCredentials)
            SSOServices::Wipe(credential.password);
    }
    OwnRequest(OwnRequest const&) = delete;
    OwnRequest& operator=(OwnRequest const&) = delete;
};

} // namespace

RequestBounds::RequestBounds(std::atomic<bool> const* cancelled, Limit limit,
                             std::optional<Limit> limitOfAll)
    : cancelled(cancelled), limit(limit),
      deadline(limitOfAll ? std::optional<Limit>(SinceBoot() + *limitOfAll) : std::nullopt),
      outer(current)
{
    current = this;
}

RequestBounds::~RequestBounds() { current = outer; }

bool RequestBounds::Apply(HttpRequest& request)
{
    if (current == nullptr)
        return true;
    if (request.cancelled == nullptr)
        request.cancelled = current->cancelled;
    request.timeout = std::min(request.timeout, current->limit);
    if (current->deadline)
        request.timeout = std::min(request.timeout, *current->deadline - SinceBoot());
    return request.timeout > Limit(0);
}

SharedConnections::SharedConnections() : outer(connections) { connections = &own; }

SharedConnections::~SharedConnections() { connections = outer; }

std::optional<Failure> RequestBounds::WhyOver()
{
    if (current == nullptr)
        return std::nullopt;
    Failure failure;
    if (current->cancelled != nullptr && *current->cancelled) {
        failure.kind = Failure::Kind::Cancelled;
        failure.reason = "the host ended it";
        failure.remedy = "sign in again when it is wanted";
        return failure;
    }
    if (current->deadline && SinceBoot() >= *current->deadline) {
        failure.kind = Failure::Kind::Network;
        failure.reason = "the provider did not answer in time";
        failure.remedy = "try again later, and check the network connection";
        return failure;
    }
    return std::nullopt;
}

HttpResponse SendWithin(HttpRequest const& request, Provider::Send const& send,
                        ProxyCredentials const& proxies)
{
    OwnRequest own(request);
    if (!RequestBounds::Apply(own.request)) {
        HttpResponse late;
        late.failure = HttpFailure::Timeout;
        late.reason = "the requests before it took all the time";
        return late;
    }
    own.request.connections = connections;
    own.request.proxyCredentials = proxies.All();
    return send(own.request);
}

} // namespace Halvorix::OpenId
