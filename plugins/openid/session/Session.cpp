#include "openid/session/Session.h"

#include <algorithm>
#include <utility>

#include "openid/protocol/Texts.h"
#include "openid/session/SessionHidden.h"

namespace Halvorix::OpenId {

namespace {

constexpr std::chrono::milliseconds LimitForHostsLock{10'000};

/// In alphabetical order, but for "production", which is what a host gets that chooses none.
std::vector<std::string> InOrder(Outcome<PluginConfiguration> const& configuration)
{
    std::vector<std::string> names;
    if (configuration)
        for (auto const& server : configuration->servers)
            names.push_back(server.first);
    auto const first = std::find(names.begin(), names.end(), "production");
    if (first != names.end())
        std::rotate(names.begin(), first, first + 1);
    return names;
}

} // namespace

Session::Hidden::Hidden(Outcome<PluginConfiguration> read, std::shared_ptr<LogFile> logFile,
                        Outside world)
    : configuration(std::move(read)), log(std::move(logFile)), outside(std::move(world)),
      serverNames(InOrder(configuration)),
      store(configuration ? configuration->store : std::filesystem::path()),
      clock(outside.wallClock, outside.sinceBoot), server(serverNames.empty() ? -1 : 0)
{
}

Session::Session(Outcome<PluginConfiguration> configuration, std::shared_ptr<LogFile> log,
                 Outside outside)
    : hidden(std::make_unique<Hidden>(std::move(configuration), std::move(log), std::move(outside)))
{
}

Session::~Session() = default;

bool Session::IsLoggedIn()
{
    Target const target = hidden->Chosen();
    return target && hidden->Current(target);
}

Json::Value Session::Claims()
{
    Target const target = hidden->Chosen();
    auto login = target ? hidden->Current(target) : std::nullopt;
    if (!login)
        return Json::Value();
    login->claims.removeMember("nonce"); // of the sign-in, not of the user
    return login->claims;
}

std::int64_t Session::LoginExpiryDate()
{
    Target const target = hidden->Chosen();
    auto const login = target ? hidden->Current(target) : std::nullopt;
    if (!login || !login->refreshToken->empty())
        return 0;
    std::int64_t end = 0;
    for (StoredToken const& token : login->tokens)
        end = std::max(end, token.receivedAt + LifetimeOf(token));
    return end;
}

Json::Value Session::State()
{
    Target const target = hidden->Chosen();
    auto const login = target ? hidden->Current(target) : std::nullopt;
    Json::Value state(Json::objectValue);
    state["server"] = target.name;
    state["issuer"] = target.server.issuer;
    state["clientId"] = target.server.clientId;
    state["loggedIn"] = login.has_value();
    state["loginInProgress"] = IsLoginInProgress();
    if (login) {
        state["subject"] = login->subject;
        state["signedInAt"] = static_cast<Json::Int64>(login->signedInAt);
        state["scopes"] = login->scopes;
        state["refreshable"] = !login->refreshToken->empty();
        state["stored"] = !hidden->IsUnsaved(target);
    }
    return state;
}

bool Session::OAuth2Enabled() const
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    return hidden->isOAuth2Enabled;
}

void Session::EnableOAuth2(bool enable)
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    hidden->isOAuth2Enabled = enable;
}

TokenSpec Session::DefaultSpec() const
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    return hidden->defaultSpec;
}

void Session::SetDefaultSpec(TokenSpec const& spec)
{
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    hidden->defaultSpec = {spec.type, NormalScope(spec.scope)};
}

std::filesystem::path Session::StoreFolder() const { return hidden->store.Folder(); }

std::filesystem::path Session::StoreFile(std::int32_t server) const
{
    if (ServerName(server).empty())
        return {};
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    ServerConfiguration const asked = hidden->WithHostsClient(server);
    return hidden->store.FileOf(asked.issuer, asked.clientId);
}

void Session::LockStore()
{
    Target const target = hidden->Chosen();
    if (!target)
        return;
    std::pair<std::string, std::string> const login{target.server.issuer, target.server.clientId};
    auto const held = hidden->store.HoldForHost(login.first, login.second, LimitForHostsLock);
    if (!held) {
        hidden->log->Failed("Cannot lock the login for the host", held.Why());
        return;
    }
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    hidden->heldForHost.push_back(login);
}

void Session::UnlockStore()
{
    std::pair<std::string, std::string> login;
    {
        std::lock_guard<std::mutex> const guard(hidden->mutex);
        if (hidden->heldForHost.empty())
            return;
        // Another server may be chosen by now: the one that was locked last.
        login = std::move(hidden->heldForHost.back());
        hidden->heldForHost.pop_back();
    }
    hidden->store.ReleaseForHost(login.first, login.second);
}

void Session::ForgetMemory()
{
    hidden->clock.Forget();
    std::lock_guard<std::mutex> const guard(hidden->mutex);
    for (auto& account : hidden->accounts)
        account.second->failures.clear();
}

void Session::SetProxyCredential(ProxyCredential credential)
{
    hidden->proxies.Set(std::move(credential));
}

std::optional<ProxyCredential> Session::FindProxyCredential(std::string const& host, int port) const
{
    return hidden->proxies.Find(host, port);
}

bool Session::HasProxyCredentials() const { return hidden->proxies.AreThere(); }

void Session::ClearProxyCredentials() { hidden->proxies.Clear(); }

EventQueue& Session::Events() { return hidden->events; }

LogFile& Session::Log() { return *hidden->log; }

} // namespace Halvorix::OpenId
