// What is behind SSOClientPrivate, for callers that are trusted.

#include <plugin/Defaults.h>

#include "openid/interfaces/HostConfiguration.h"
#include "openid/interfaces/HostTexts.h"
#include "openid/interfaces/Interfaces.h"
#include "openid/interfaces/OnSession.h"
#include "openid/interfaces/UrlCodes.h"
#include "openid/platform/Crypto.h"
#include "openid/platform/Files.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

using namespace SSOServices;
using namespace WebServices;

class OpenIdClientPrivate : public OnSession<SSOClientPrivateDefaults> {
public:
    using OnSession::OnSession;

    std::wstring GetLoginInfo(BufferTransformCallback) override
    {
        return Ask([](Session& session) {
            Json::Value const claims = session.Claims();
            return claims.isNull() ? std::wstring() : ToWide(WriteJson(claims));
        });
    }
    std::string GetSessionState() override
    {
        return Ask([](Session& session) { return WriteJson(session.State()); });
    }
    bool RestoreLogin(bool) override
    {
        return Ask([](Session& session) { return session.RestoreLogin(); });
    }
    /// Whether a server is chosen. Does not ask the provider.
    bool Ping(std::map<std::string, std::string>& answers) override
    {
        return Ask([&](Session& session) {
            std::string const server = session.ServerName(session.Server());
            answers["plugin"] = "HxSSOOpenID";
            answers["server"] = server;
            return !server.empty();
        });
    }

    // Servers and their addresses.
    std::wstring GetUrl(std::wstring name) override
    {
        return Ask([&](Session& session) { return ToWide(session.Url(ToUtf8(name))); });
    }
    std::wstring GetUrl(WebServicesUrlCode code) override
    {
        return Ask([&](Session& session) { return ToWide(session.Url(UrlName(code))); });
    }
    std::map<std::wstring, std::wstring> GetUrlOverrides(WebServices::Server server) override
    {
        return Ask([&](Session& session) {
            std::map<std::wstring, std::wstring> overrides;
            for (auto const& [name, url] : session.UrlOverrides(static_cast<std::int32_t>(server)))
                overrides[ToWide(name)] = ToWide(url);
            return overrides;
        });
    }
    bool SetUrlOverrides(WebServices::Server server,
                         std::map<std::wstring, std::wstring> const& overrides) override
    {
        return Ask([&](Session& session) {
            std::map<std::string, std::string> urls;
            for (auto const& [name, url] : overrides)
                urls[ToUtf8(name)] = ToUtf8(url);
            return session.SetUrlOverrides(static_cast<std::int32_t>(server), urls);
        });
    }
    bool ClearUrlOverrides(WebServices::Server server) override
    {
        return Ask([&](Session& session) {
            return session.ClearUrlOverrides(static_cast<std::int32_t>(server));
        });
    }
    std::wstring ServerToServerName(WebServices::Server server) override
    {
        return Ask([&](Session& session) {
            return ToWide(session.ServerName(static_cast<std::int32_t>(server)));
        });
    }
    WebServices::Server ServerNameToServer(std::wstring name) override
    {
        return Ask([&](Session& session) {
            return WebServices::Server{session.ServerNumber(ToUtf8(name))};
        });
    }

    // Files.
    std::wstring GetSettingsPath() override
    {
        return Ask([](Session&) { return ToWide(PathText(SettingsFile())); });
    }
    std::wstring GetLoginStateFile() override
    {
        return Ask([](Session& session) { return StateFile(session, session.Server()); });
    }
    /// A file holds the login of one server, whoever signed in.
    std::wstring GetLoginStateCacheFile(std::wstring, WebServices::Server server, bool) override
    {
        return Ask([&](Session& session) {
            return StateFile(session, static_cast<std::int32_t>(server));
        });
    }
    std::wstring GetLoginStateCacheFile(std::wstring user, WebServices::Server server) override
    {
        return GetLoginStateCacheFile(std::move(user), server, false);
    }
    void LockLoginStateFile() override
    {
        Ask([](Session& session) { session.LockStore(); });
    }
    void UnlockLoginStateFile() override
    {
        Ask([](Session& session) { session.UnlockStore(); });
    }

    // Events.
    /// @param urgent whether the event goes before those that wait
    void RaiseEvent(WebServicesPrivateCore::WebServicesEvent event, bool urgent) override
    {
        Ask([&](Session& session) {
            session.Events().Raise(static_cast<std::int32_t>(event), urgent);
        });
    }
    void ClearEventQueue() override
    {
        Ask([](Session& session) { session.Events().Clear(); });
    }

    // Configurations.
    /// The client's id; a native client has no secret.
    void GetCurrentConfigurationConsumerKey(std::wstring& key, std::wstring& secret) override
    {
        Ask([&](Session& session) { key = ToWide(session.ChosenServer().clientId); });
        secret.clear();
    }
    std::string ToJsonString(WebServicesConfiguration const* configuration) override
    {
        return Ask([&](Session&) {
            return configuration == nullptr ? std::string() : ToJson(*configuration);
        });
    }
    bool FromJsonString(WebServicesConfiguration* configuration, std::string const& text) override
    {
        return Ask(
            [&](Session&) { return configuration != nullptr && FromJson(text, *configuration); });
    }
    bool Equals(WebServicesConfiguration const& left,
                WebServicesConfiguration const& right) override
    {
        return Ask([&](Session&) { return AreEqual(left, right); });
    }

    /// For this user alone, as base64url; empty where the system has no such protection.
    std::wstring Encrypt(std::wstring const& text) override
    {
        return Ask([&](Session& session) {
            Secret const clear(ToUtf8(text));
            std::string reason;
            std::string const guarded = Protect(*clear, reason);
            if (guarded.empty() && !clear->empty())
                Report(session, "Cannot encrypt a text", reason, "sign in to Windows anew");
            return guarded == *clear ? std::wstring() : ToWide(ToBase64Url(guarded));
        });
    }

private:
    static std::wstring StateFile(Session& session, std::int32_t server)
    {
        return ToWide(PathText(session.StoreFile(server)));
    }
};

} // namespace

std::shared_ptr<ISSOClientPrivate> MakeClientPrivate(std::shared_ptr<Session> session)
{
    return std::make_shared<OpenIdClientPrivate>(std::move(session));
}

} // namespace Halvorix::OpenId
