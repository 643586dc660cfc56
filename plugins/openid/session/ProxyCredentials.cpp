#include "openid/session/ProxyCredentials.h"

#include <algorithm>
#include <utility>

#include "openid/platform/Crypto.h"
#include "openid/platform/HttpParts.h"

namespace Halvorix::OpenId {

void ProxyCredentials::Set(ProxyCredential credential)
{
    std::string reason;
    Secret const clear(std::move(credential.password));
    // A password that cannot be protected is not kept: the proxy then says what it lacks.
    Kept kept{credential.host, credential.port, credential.user, Secret(Protect(*clear, reason))};
    std::lock_guard<std::mutex> const guard(mutex);
    auto const same = std::find_if(all.begin(), all.end(), [&](Kept const& other) {
        return other.host == kept.host && other.port == kept.port;
    });
    if (same != all.end())
        *same = std::move(kept);
    else
        all.push_back(std::move(kept));
}

ProxyCredential ProxyCredentials::InClear(Kept const& kept)
{
    return {kept.host, kept.port, kept.user,
            kept.password->empty() ? std::string() : Unprotect(*kept.password).bytes};
}

std::optional<ProxyCredential> ProxyCredentials::Find(std::string const& host, int port) const
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto const fit = [&](Kept const& kept) { return ProxyFit(kept.host, kept.port, host, port); };
    auto const best =
        std::max_element(all.begin(), all.end(),
                         [&](Kept const& one, Kept const& other) { return fit(one) < fit(other); });
    if (best == all.end() || fit(*best) == 0)
        return std::nullopt;
    return InClear(*best);
}

std::vector<ProxyCredential> ProxyCredentials::All() const
{
    std::lock_guard<std::mutex> const guard(mutex);
    std::vector<ProxyCredential> clear;
    clear.reserve(all.size());
    for (Kept const& kept : all)
        clear.push_back(InClear(kept));
    return clear;
}

bool ProxyCredentials::AreThere() const
{
    std::lock_guard<std::mutex> const guard(mutex);
    return !all.empty();
}

void ProxyCredentials::Clear()
{
    std::lock_guard<std::mutex> const guard(mutex);
    all.clear();
}

} // namespace Halvorix::OpenId
