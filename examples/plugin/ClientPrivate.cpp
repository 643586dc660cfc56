// What is behind SSOClientPrivate, for callers that are trusted.

#include <algorithm>
#include <condition_variable>

#include "Interfaces.h"
#include "State.h"
#include "Texts.h"

namespace Sample {

namespace {

using Config = WebServicesConfiguration;

struct ConfigText {
    char const* key;
    int (Config::*get)(wchar_t*, int) const;
    void (Config::*set)(wchar_t const*);
    std::wstring Of(Config const& configuration) const
    {
        std::wstring text(static_cast<std::size_t>((configuration.*get)(nullptr, 0)), L'\0');
        (configuration.*get)(text.data(), static_cast<int>(text.size()) + 1);
        return text;
    }
};

// Not constexpr: to Visual Studio the address of an imported function is no constant.
ConfigText const configTexts[] = {
    {"consumerKey", &Config::GetConsumerKey, &Config::SetConsumerKey},
    {"consumerSecret", &Config::GetConsumerSecret, &Config::SetConsumerSecret},
    {"serialNumber", &Config::GetSerialNumber, &Config::SetSerialNumber},
    {"productLineCode", &Config::GetProductLineCode, &Config::SetProductLineCode},
    {"upiRelease", &Config::GetUPIRelease, &Config::SetUPIRelease},
    {"upiMaster", &Config::GetUPIMaster, &Config::SetUPIMaster},
    {"upiBuild", &Config::GetUPIBuild, &Config::SetUPIBuild},
    {"featureName", &Config::GetFeatureName, &Config::SetFeatureName},
    {"featureVersion", &Config::GetFeatureVersion, &Config::SetFeatureVersion},
    {"oauth2ConsumerKey", &Config::GetOAuth2ConsumerKey, &Config::SetOAuth2ConsumerKey},
    {"oauth2ConsumerSecret", &Config::GetOAuth2ConsumerSecret, &Config::SetOAuth2ConsumerSecret},
    {"oauth2Scope", &Config::GetOAuth2AccessTokenScope, &Config::SetOAuth2AccessTokenScope},
};

class ClientPrivate : public OnSession<ISSOClientPrivate> {
public:
    using OnSession::OnSession;

    std::wstring GetLoginInfo(BufferTransformCallback) override
    {
        auto const state = Lock();
        return state->user ? ToWide(WriteJson(AccountToJson(*state->user))) : L"";
    }

    // Servers and URLs. Overrides serve the server that they are set for.
    std::wstring GetUrl(std::wstring name) override { return Lock()->Url(name); }
    std::wstring GetUrl(WebServicesUrlCode code) override { return Lock()->Url(code); }
    std::map<std::wstring, std::wstring> GetUrlOverrides(Server server) override
    {
        auto const state = Lock();
        auto const found = state->urlOverrides.find(server);
        return found == state->urlOverrides.end() ? std::map<std::wstring, std::wstring>()
                                                  : found->second;
    }
    bool SetUrlOverrides(Server server,
                         std::map<std::wstring, std::wstring> const& overrides) override
    {
        if (ServerName(server).empty())
            return false;
        Lock()->urlOverrides[server] = overrides;
        return true;
    }
    bool ClearUrlOverrides(Server server) override
    {
        return Lock()->urlOverrides.erase(server) != 0;
    }
    std::wstring ServerToServerName(Server server) override { return ServerName(server); }
    Server ServerNameToServer(std::wstring name) override
    {
        auto number = 0;
        while (!ServerName(Server{number}).empty() && ServerName(Server{number}) != name)
            ++number;
        return ServerName(Server{number}).empty() ? Server{-1} : Server{number};
    }

    /// Hexadecimal digits, which hide nothing: a real plugin encrypts here.
    std::wstring Encrypt(std::wstring const& text) override
    {
        std::wstring digits;
        for (char const c : ToUtf8(text)) {
            auto const byte = static_cast<unsigned char>(c);
            digits += L"0123456789abcdef"[byte / 16];
            digits += L"0123456789abcdef"[byte % 16];
        }
        return digits;
    }

    // Paths.
    std::wstring GetSettingsPath() override { return PathOf(L""); }
    std::wstring GetLoginStateFile() override { return PathOf(L"login.state"); }
    std::wstring GetLoginStateCacheFile(std::wstring userId, Server server, bool) override
    {
        return PathOf(userId + L"-" + ServerName(server) + L".cache");
    }
    std::wstring GetLoginStateCacheFile(std::wstring userId, Server server) override
    {
        return GetLoginStateCacheFile(userId, server, false);
    }
    void LockLoginStateFile() override
    {
        std::unique_lock<std::mutex> lock(fileMutex);
        fileUnlocked.wait(lock, [this] { return !fileLocked; });
        fileLocked = true;
    }
    void UnlockLoginStateFile() override
    {
        std::lock_guard<std::mutex> const lock(fileMutex);
        fileLocked = false;
        fileUnlocked.notify_one();
    }

    StdUtil::RetrySchedule GetActiveOAuth2TokenRefreshRetrySchedule() override
    {
        return Lock()->retrySchedule;
    }
    bool SetOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule const& schedule) override
    {
        Lock()->retrySchedule = schedule;
        return true;
    }

    bool RestoreLogin(bool) override { return Lock()->Restore(); }
    /// @param urgent whether the event goes before those that wait
    void RaiseEvent(WebServicesPrivateCore::WebServicesEvent event, bool urgent) override
    {
        auto const state = Lock();
        auto const place = urgent ? state->events.begin() : state->events.end();
        state->events.insert(place, static_cast<std::int32_t>(event));
    }
    void ClearEventQueue() override { Lock()->events.clear(); }

    // Configurations as JSON. A key that is missing leaves its text alone.
    void GetCurrentConfigurationConsumerKey(std::wstring& key, std::wstring& secret) override
    {
        auto const state = Lock();
        key = configTexts[0].Of(state->configurations.back());
        secret = configTexts[1].Of(state->configurations.back());
    }
    std::string ToJsonString(Config const* configuration) override
    {
        if (configuration == nullptr)
            return {};
        Json::Value json;
        json["server"] = static_cast<int>(configuration->GetServer());
        for (ConfigText const& text : configTexts)
            json[text.key] = ToUtf8(text.Of(*configuration));
        return WriteJson(json);
    }
    bool FromJsonString(Config* configuration, std::string const& text) override
    {
        Json::Value const json = ReadJson(text.c_str());
        if (configuration == nullptr || !json.isObject())
            return false;
        if (json["server"].isInt())
            configuration->SetServer(Server{json["server"].asInt()});
        for (ConfigText const& field : configTexts)
            if (json[field.key].isString())
                (configuration->*field.set)(ToWide(json[field.key].asString()).c_str());
        return true;
    }
    bool Equals(Config const& left, Config const& right) override
    {
        return ToJsonString(&left) == ToJsonString(&right);
    }

    // The server process, which is imagined.
    bool Ping(std::map<std::string, std::string>& answers) override
    {
        auto const state = Lock();
        answers["plugin"] = "sample";
        answers["server"] = state->processId == 0 ? "stopped"
                            : state->frozen       ? "frozen"
                                                  : "running";
        return true;
    }
    bool FreezeSSOServerProcess(BufferTransformCallback) override
    {
        auto const state = Lock();
        state->frozen = state->processId != 0;
        return state->frozen;
    }
    std::chrono::seconds GetKillFrozenServerTimeout() override
    {
        return Lock()->killFrozenServerTimeout;
    }
    bool SetKillFrozenServerTimeout(std::chrono::seconds timeout) override
    {
        if (timeout < std::chrono::seconds::zero())
            return false;
        Lock()->killFrozenServerTimeout = timeout;
        return true;
    }
    std::string GetSessionState() override
    {
        auto const state = Lock();
        Json::Value json;
        json["user"] = state->user ? AccountToJson(*state->user) : Json::Value();
        json["oauth2Enabled"] = state->oauth2Enabled;
        json["tokensIssued"] = state->issued;
        json["eventsWaiting"] = Json::UInt64(state->events.size());
        return WriteJson(json);
    }

private:
    // A lock of its own: who waits for the file keeps nobody else waiting.
    std::mutex fileMutex;
    std::condition_variable fileUnlocked;
    bool fileLocked = false;
};

} // namespace

std::shared_ptr<ISSOClientPrivate> MakeClientPrivate(std::shared_ptr<Session> session)
{
    return std::make_shared<ClientPrivate>(std::move(session));
}

} // namespace Sample
