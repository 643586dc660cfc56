#include "openid/session/Requests.h"

#include <algorithm>

#include "support/SecretText.h"

namespace Halvorix::OpenId {

namespace {

thread_local RequestBounds const* current = nullptr;

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

RequestBounds::RequestBounds(std::atomic<bool> const* cancelled, std::chrono::milliseconds limit)
    : cancelled(cancelled), limit(limit), outer(current)
{
    current = this;
}

RequestBounds::~RequestBounds() { current = outer; }

void RequestBounds::Apply(HttpRequest& request)
{
    if (current == nullptr)
        return;
    if (request.cancelled == nullptr)
        request.cancelled = current->cancelled;
    request.timeout = std::min(request.timeout, current->limit);
}

HttpResponse SendWithin(HttpRequest const& request, Provider::Send const& send,
                        ProxyCredentials const& proxies)
{
    OwnRequest own(request);
    RequestBounds::Apply(own.request);
    own.request.proxyCredentials = proxies.All();
    return send(own.request);
}

} // namespace Halvorix::OpenId
