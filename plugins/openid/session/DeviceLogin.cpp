// Signing in on another device (RFC 8628): its user opens an address there and enters a code, while
// the provider is polled for the tokens.

#include <algorithm>
#include <utility>

#include "openid/session/AtEnd.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

using std::chrono::milliseconds;

/// How often is looked whether the host has ended it.
constexpr milliseconds Tick{100};

} // namespace

Outcome<BegunLogin> Session::Hidden::PrepareDevice(PendingLogin& login)
{
    RequestBounds const bounds(&login.cancelled, NetworkLimit());
    Provider& provider = *login.target.provider;
    auto metadata = provider.Discover();
    if (!metadata)
        return metadata.Why();
    auto const device = provider.AuthorizeDevice(login.target.server.scopes);
    if (!device)
        return device.Why();
    BegunLogin begun;
    begun.url = device->verificationUri;
    begun.userCode = device->userCode;
    begun.urlWithCode = device->verificationUriComplete;
    std::lock_guard<std::mutex> const guard(mutex);
    if (login.cancelled)
        return WasCancelled();
    milliseconds const now = outside.sinceBoot();
    login.deadline = std::min<milliseconds>(login.deadline, now + device->lifetime);
    login.metadata = std::move(*metadata);
    login.device = PendingDevice{device->deviceCode, {device->interval, now}};
    return begun;
}

Outcome<TokenAnswer> Session::Hidden::PollForTokens(PendingLogin& login)
{
    RequestBounds const bounds(&login.cancelled, NetworkLimit());
    DevicePolling& polling = login.device->polling;
    for (;;) {
        milliseconds const next = std::min(polling.Next(), login.deadline);
        while (!login.cancelled && outside.sinceBoot() < next)
            outside.sleep(Tick);
        if (login.cancelled)
            return WasCancelled();
        // Once more at the end, after a pause that the network's troubles had made long.
        milliseconds const now = outside.sinceBoot();
        bool const isLast = now >= login.deadline;
        if (isLast && !polling.MayAsk(now))
            return polling.OutOfTime();
        auto answer = login.target.provider->PollDevice(*login.device->code);
        if (answer)
            return answer;
        auto const end = polling.Answered(answer.Why(), outside.sinceBoot());
        if (end)
            return *end;
        if (isLast)
            return polling.OutOfTime();
    }
}

std::optional<BegunLogin> Session::BeginDeviceLogin()
{
    return hidden->Begin([this](PendingLogin& login) { return hidden->PrepareDevice(login); });
}

bool Session::LoginOnDevice()
{
    auto const begun = BeginDeviceLogin();
    if (!begun)
        return false;
    AtEnd const ending([&] { CancelLogin(*begun); });
    hidden->log->Info("Sign in on another device: open " + *begun->url + " there, and enter " +
                      begun->userCode);
    return FinishLogin(*begun);
}

} // namespace Halvorix::OpenId
