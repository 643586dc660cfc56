// Which server and client is meant, and the provider's addresses.

#include <algorithm>
#include <array>

#include "openid/protocol/Texts.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

struct Address {
    char const* name;
    std::string Metadata::*member;
    bool mayBeOverridden;
};

constexpr std::array<Address, 7> Addresses{{
    {"authorization", &Metadata::authorizationEndpoint, true},
    {"token", &Metadata::tokenEndpoint, false},
    {"userinfo", &Metadata::userinfoEndpoint, true},
    {"jwks", &Metadata::keysUri, false},
    {"revocation", &Metadata::revocationEndpoint, true},
    {"end_session", &Metadata::endSessionEndpoint, true},
    {"device_authorization", &Metadata::deviceAuthorizationEndpoint, true},
}};

Address const* FindAddress(std::string const& name)
{
    auto const found = std::find_if(Addresses.begin(), Addresses.end(),
                                    [&](Address const& address) { return name == address.name; });
    return found == Addresses.end() ? nullptr : &*found;
}

bool MayBeOverridden(std::string const& name)
{
    Address const* const address = FindAddress(name);
    return name == "account" || (address != nullptr && address->mayBeOverridden);
}

} // namespace

ServerConfiguration const& Session::Hidden::Configured(std::int32_t number) const
{
    return configuration->servers.at(serverNames[static_cast<std::size_t>(number)]);
}

ServerConfiguration Session::Hidden::WithHostsClient(std::int32_t number) const
{
    ServerConfiguration configured = Configured(number);
    if (!clientId.empty())
        configured.clientId = clientId;
    if (!scopes.empty())
        configured.scopes = scopes;
    return configured;
}

Target Session::Hidden::Chosen()
{
    std::lock_guard<std::mutex> const guard(mutex);
    Target target;
    if (server < 0)
        return target;
    target.number = server;
    target.name = serverNames[static_cast<std::size_t>(server)];
    target.server = WithHostsClient(server);
    auto& provider = providers[target.Key() + '\n' + target.server.scopes];
    if (!provider)
        provider = std::make_shared<Provider>(
            Client{target.server.issuer, target.server.clientId, target.server.scopes,
                   configuration->networkTimeout},
            [this](HttpRequest const& request) {
                return SendWithin(request, outside.send, proxies);
            },
            RequestBounds::WhyOver);
    target.provider = provider;
    return target;
}

std::string Session::Hidden::Override(std::int32_t number, std::string const& url)
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto const ofServer = urlOverrides.find(number);
    if (ofServer == urlOverrides.end())
        return {};
    auto const found = ofServer->second.find(url);
    return found == ofServer->second.end() ? std::string() : found->second;
}

std::chrono::milliseconds Session::Hidden::NetworkLimit() const
{
    return configuration->networkTimeout;
}

std::int32_t Session::Server() const
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    return hidden->server;
}

bool Session::SelectServer(std::int32_t number)
{
    if (ServerName(number).empty())
        return false;
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    hidden->server = number;
    return true;
}

std::string Session::ServerName(std::int32_t number) const
{
    auto const& names = hidden->serverNames;
    return number >= 0 && static_cast<std::size_t>(number) < names.size()
               ? names[static_cast<std::size_t>(number)]
               : std::string();
}

std::int32_t Session::ServerNumber(std::string const& name) const
{
    auto const& names = hidden->serverNames;
    auto const found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? -1 : static_cast<std::int32_t>(found - names.begin());
}

void Session::UseClient(std::string const& clientId, std::string const& scopes)
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    hidden->clientId = clientId;
    hidden->scopes = scopes.empty() ? std::string() : NormalScope(scopes + " openid");
}

ServerConfiguration Session::ChosenServer() const { return hidden->Chosen().server; }

std::string Session::Url(std::string const& name)
{
    Target const target = hidden->Chosen();
    if (!target)
        return {};
    if (name == "issuer")
        return target.server.issuer;
    std::string overridden = hidden->Override(target.number, name);
    if (!overridden.empty())
        return overridden;
    if (name == "account")
        return target.server.accountUrl;
    Address const* const address = FindAddress(name);
    if (address == nullptr)
        return {};
    auto const metadata = target.provider->Discover();
    if (!metadata) {
        hidden->log->Failed("Cannot learn the provider's addresses", metadata.Why());
        return {};
    }
    return (*metadata).*(address->member);
}

std::map<std::string, std::string> Session::UrlOverrides(std::int32_t server) const
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    auto const found = hidden->urlOverrides.find(server);
    return found == hidden->urlOverrides.end() ? std::map<std::string, std::string>()
                                               : found->second;
}

bool Session::SetUrlOverrides(std::int32_t server, std::map<std::string, std::string> const& urls)
{
    bool const areGood = std::all_of(urls.begin(), urls.end(), [](auto const& url) {
        return MayBeOverridden(url.first) && IsSecureUrl(url.second) && UsesTls(url.second);
    });
    if (!areGood || ServerName(server).empty())
        return false;
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    hidden->urlOverrides[server] = urls;
    return true;
}

bool Session::ClearUrlOverrides(std::int32_t server)
{
    if (ServerName(server).empty())
        return false;
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    hidden->urlOverrides.erase(server);
    return true;
}

} // namespace Halvorix::OpenId
