// What is behind WebServicesManager.

#include <algorithm>
#include <functional>

#include "Interfaces.h"
#include "State.h"
#include "Texts.h"

namespace Sample {

namespace {

class Client : public OnSession<ISSOClient> {
public:
    using OnSession::OnSession;

    // Configuration. Earlier ones stay where they are: a host may hold a
    // reference to one.
    WebServicesConfiguration const& GetConfiguration() override
    {
        return Lock()->configurations.back();
    }
    bool SetConfiguration(WebServicesConfiguration const& configuration) override
    {
        auto const state = Lock();
        state->configurations.push_back(configuration);
        state->server = configuration.GetServer();
        return true;
    }

    // Cache: filled by a login, if it is enabled by then.
    int GetCachePath(wchar_t* to, int size) override { return CopyText(PathOf(L""), to, size); }
    bool IsCacheEnabled(CacheType type) override { return Lock()->enabledCaches.count(type) != 0; }
    void EnableCache(CacheType type, bool enable) override
    {
        auto const state = Lock();
        if (enable) {
            state->enabledCaches.insert(type);
        } else {
            state->enabledCaches.erase(type);
            state->filledCaches.erase(type);
        }
    }
    bool IsCacheAvailable(CacheType type) override { return Lock()->filledCaches.count(type) != 0; }
    void InvalidateCache(CacheType type) override { Lock()->filledCaches.erase(type); }

    // Entitlement: whoever is signed in has it.
    ServiceEntitlement GetServiceEntitlement(wchar_t const*, wchar_t*& text) override
    {
        bool const entitled = IsLoggedIn();
        text = NewText(std::wstring(entitled ? L"entitled" : L"not entitled"));
        return static_cast<ServiceEntitlement>(entitled);
    }
    ServiceEntitlement GetServiceEntitlement(wchar_t const*) override
    {
        return static_cast<ServiceEntitlement>(IsLoggedIn());
    }
    bool GetServiceEntitlementEx(wchar_t*& text) override
    {
        return GetServiceEntitlementEx(nullptr, text);
    }
    bool GetServiceEntitlementEx(wchar_t const* service, wchar_t*& text) override
    {
        return GetServiceEntitlement(service, text) != ServiceEntitlement();
    }

    // The user.
    int GetLoginStateFile(wchar_t* to, int size) override
    {
        return CopyText(PathOf(L"login.state"), to, size);
    }
    int GetUserNameW(wchar_t* to, int size) override
    {
        auto const state = Lock();
        Account const* const user = state->user;
        return CopyText(user ? user->firstName + L" " + user->lastName : L"", to, size);
    }
    int GetLoginUserName(wchar_t* to, int size) override
    {
        return OfUser(&Account::loginName, to, size);
    }
    int GetUserId(wchar_t* to, int size) override { return OfUser(&Account::id, to, size); }
    int GetUserEmail(wchar_t* to, int size) override { return OfUser(&Account::email, to, size); }
    int GetUserFirstName(wchar_t* to, int size) override
    {
        return OfUser(&Account::firstName, to, size);
    }
    int GetUserLastName(wchar_t* to, int size) override
    {
        return OfUser(&Account::lastName, to, size);
    }
    bool GetUserInfo(wchar_t*& info) override
    {
        auto const state = Lock();
        if (state->user == nullptr)
            return false;
        info = NewText(ToWide(WriteJson(AccountToJson(*state->user))));
        return true;
    }
    bool IsLoggedIn() override { return Lock()->user != nullptr; }
    unsigned int GetLoginExpiryDate() override { return Lock()->loginExpiryDate; }
    bool IsLoginExpired() override { return Lock()->IsLoginExpired(); }
    bool IsLoginValid() override { return Lock()->IsLoginValid(); }
    bool IsSSOEnabledForAllUsers() override { return false; }
    int GetLdapDomainKey(wchar_t* to, int size) override
    {
        return CopyText(std::wstring(L"sample"), to, size);
    }
    /// In bytes: used, then all.
    bool GetCloudStorageQuota(long long& used, long long& all) override
    {
        bool const loggedIn = IsLoggedIn();
        used = loggedIn ? 256LL << 20 : 0;
        all = loggedIn ? 1024LL << 20 : 0;
        return loggedIn;
    }

    // Login and logout. The buffer receives the page to be shown to the user.
    bool InitiateLogin(wchar_t const* loginName, wchar_t* to, int size, LoginErrorEx& error,
                       int& value) override
    {
        bool const done = Initiate(loginName, to, size, value);
        error = done ? LoginErrorEx() : error;
        return done;
    }
    bool InitiateLogin(wchar_t const* loginName, int, wchar_t* to, int size, LoginError& error,
                       int& value) override
    {
        bool const done = Initiate(loginName, to, size, value);
        error = done ? LoginError() : error;
        return done;
    }
    bool InitiateLogin(wchar_t* to, int size, LoginError& error, int& value) override
    {
        return InitiateLogin(nullptr, 0, to, size, error, value);
    }
    bool InitiateLogin(wchar_t* to, int size) override
    {
        int value = 0;
        return Initiate(nullptr, to, size, value);
    }
    bool CompleteLogin(char const* jarJson) override
    {
        Json::Value const jar = ReadJson(jarJson);
        auto const state = Lock();
        return state->SignIn(FindAccountByCookie(jar));
    }
    bool CompleteLogin() override
    {
        auto const state = Lock();
        return state->SignIn(state->pending);
    }
    bool RestoreLogin() override { return Lock()->Restore(); }
    bool Logout() override { return Lock()->SignOut(); }
    bool InitiateLogout(wchar_t* to, int size, char*& jarJson, BufferTransformCallback) override
    {
        auto const state = Lock();
        if (state->user == nullptr)
            return false;
        CopyText(state->Url(L"logout"), to, size);
        jarJson = NewText(WriteJson(state->cookies));
        return true;
    }
    bool CompleteLogout() override { return Logout(); }

    // The token that is not OAuth2's.
    bool IsTokenAvailable() override { return Lock()->accessToken.IsAvailable(); }
    int GetAccessToken(wchar_t* to, int size, bool) override
    {
        auto const state = Lock();
        return CopyToken(state->GetAccessToken(false), to, size);
    }
    int GetAccessToken(wchar_t* to, int size) override { return GetAccessToken(to, size, false); }
    unsigned int GetTokenExpiryDate() override { return Lock()->accessToken.expiryDate; }
    bool IsTokenExpired() override { return Lock()->accessToken.IsExpired(); }
    bool RefreshToken(bool) override { return Lock()->GetAccessToken(true) != nullptr; }
    int GetLoginCookie(unsigned char*& cookie) override
    {
        auto const state = Lock();
        if (state->user == nullptr)
            return 0;
        std::string const bytes = "sample-user=" + ToUtf8(state->user->id);
        cookie = new unsigned char[bytes.size()];
        std::copy(bytes.begin(), bytes.end(), cookie);
        return static_cast<int>(bytes.size());
    }
    // The signature is a mere checksum. RequestParam is the service's to define;
    // its parameters would go under the signature as well.
    wchar_t* SignRequest(wchar_t const* url, RequestParam const*, int, HttpMethod, ParsingMode,
                         wchar_t const*, wchar_t const*, BufferTransformCallback) override
    {
        return Sign(Given(url), L"signature");
    }
    wchar_t* SignUrlForBrowser(wchar_t const* url, bool, BufferTransformCallback) override
    {
        return Sign(Given(url), L"ticket");
    }

    // Servers.
    Server GetServer() override { return Lock()->server; }
    bool SetServer(Server server) override
    {
        if (ServerName(server).empty())
            return false;
        Lock()->server = server;
        return true;
    }
    int GetUrl(WebServicesUrlCode code, wchar_t* to, int size) override
    {
        return CopyText(Lock()->Url(code), to, size);
    }

    // Proxy.
    bool GetProxyAuthenticationDialogText(wchar_t* title, int titleSize, wchar_t* text,
                                          int textSize) override
    {
        auto const state = Lock();
        CopyText(state->proxyTitle, title, titleSize);
        CopyText(state->proxyText, text, textSize);
        return !state->proxyTitle.empty() || !state->proxyText.empty();
    }
    void SetProxyAuthenticationDialogText(wchar_t const* title, wchar_t const* text) override
    {
        auto const state = Lock();
        state->proxyTitle = Given(title);
        state->proxyText = Given(text);
    }
    bool HasProxyAuthentication(wchar_t const* host, int port) override
    {
        return Lock()->proxies.count({Given(host), port}) != 0;
    }
    bool GetProxyAuthentication(wchar_t const* host, int port, wchar_t* toUser, int userSize,
                                wchar_t* toPassword, int passwordSize,
                                BufferTransformCallback) override
    {
        auto const state = Lock();
        auto const found = state->proxies.find({Given(host), port});
        if (found == state->proxies.end())
            return false;
        CopyText(found->second.first, toUser, userSize);
        CopyText(found->second.second, toPassword, passwordSize);
        return true;
    }
    bool SetProxyAuthentication(wchar_t const* host, int port, wchar_t const* user,
                                wchar_t const* password, BufferTransformCallback) override
    {
        Lock()->proxies[{Given(host), port}] = {Given(user), Given(password)};
        return true;
    }
    bool HasProxyInfo() override { return !Lock()->proxies.empty(); }
    bool ClearProxyInfo() override
    {
        Lock()->proxies.clear();
        return true;
    }

    // OAuth2, for the spec that is given or for the one that is set.
    bool IsOAuth2Enabled() override { return Lock()->oauth2Enabled; }
    bool EnableOAuth2(char const* specJson) override
    {
        Json::Value const spec = ReadSpec(specJson);
        auto const state = Lock();
        if (spec.isNull())
            return false;
        state->spec = spec;
        return state->EnableOAuth2(true);
    }
    bool EnableOAuth2(bool enable) override { return Lock()->EnableOAuth2(enable); }
    bool DisableOAuth2() override { return Lock()->EnableOAuth2(false); }
    bool GetOAuth2AccessToken(char const* specJson, char*& tokenJson, BufferTransformCallback,
                              bool) override
    {
        Json::Value document;
        document["OAuth2TokenSpec"] = ReadSpec(specJson);
        auto const state = Lock();
        Token const* const token = state->GetOAuth2Token(document["OAuth2TokenSpec"], false);
        if (token == nullptr)
            return false;
        document["OAuth2AccessToken"] = ToUtf8(token->text);
        tokenJson = NewText(WriteJson(document));
        return true;
    }
    int GetOAuth2AccessToken(wchar_t* to, int size, BufferTransformCallback, bool) override
    {
        auto const state = Lock();
        return CopyToken(state->GetOAuth2Token(state->spec, false), to, size);
    }
    bool RefreshOAuth2Token(char const* specJson, bool) override
    {
        return Lock()->GetOAuth2Token(ReadSpec(specJson), true) != nullptr;
    }
    bool RefreshOAuth2Token(bool) override
    {
        auto const state = Lock();
        return state->GetOAuth2Token(state->spec, true) != nullptr;
    }
    bool IsOAuth2TokenExpired(char const* specJson) override
    {
        return Stored(specJson).IsExpired();
    }
    bool IsOAuth2TokenExpired() override { return Stored().IsExpired(); }
    unsigned int GetOAuth2TokenExpiryDate(char const* specJson) override
    {
        return Stored(specJson).expiryDate;
    }
    unsigned int GetOAuth2TokenExpiryDate() override { return Stored().expiryDate; }
    bool IsOAuth2TokenAvailable(char const* specJson) override
    {
        return Stored(specJson).IsAvailable();
    }
    bool IsOAuth2TokenAvailable() override { return Stored().IsAvailable(); }

    // Events. To dispatch one is to take it off: nobody can be called with it.
    void AddObserver(IWebServicesObserver* observer) override
    {
        Lock()->observers.insert(observer);
    }
    void RemoveObserver(IWebServicesObserver* observer) override
    {
        Lock()->observers.erase(observer);
    }
    bool HasEvent() override { return !Lock()->events.empty(); }
    bool DispatchEvent() override
    {
        auto const state = Lock();
        if (state->events.empty())
            return false;
        state->events.pop_front();
        return true;
    }

private:
    int OfUser(std::wstring Account::*field, wchar_t* to, int size)
    {
        auto const state = Lock();
        return CopyText(state->user ? state->user->*field : L"", to, size);
    }

    static int CopyToken(Token const* token, wchar_t* to, int size)
    {
        return CopyText(token ? token->text : L"", to, size);
    }

    bool Initiate(wchar_t const* loginName, wchar_t* to, int size, int& value)
    {
        auto const state = Lock();
        state->pending = FindAccount(loginName);
        value = state->pending ? 200 : 404;
        if (state->pending == nullptr)
            return false;
        CopyText(state->Url(L"login") + L"?user=" + state->pending->loginName, to, size);
        return true;
    }

    wchar_t* Sign(std::wstring const& url, std::wstring const& name)
    {
        auto const state = Lock();
        Token const* const token = state->GetAccessToken(false);
        if (token == nullptr)
            return nullptr;
        std::size_t const signature = std::hash<std::wstring>()(url + token->text);
        wchar_t const* const joint = url.find(L'?') == std::wstring::npos ? L"?" : L"&";
        return NewText(url + joint + name + L"=" + std::to_wstring(signature));
    }

    Token Stored(char const* specJson) { return Lock()->StoredOAuth2Token(ReadSpec(specJson)); }
    Token Stored()
    {
        auto const state = Lock();
        return state->StoredOAuth2Token(state->spec);
    }
};

} // namespace

std::shared_ptr<ISSOClient> MakeClient(std::shared_ptr<Session> session)
{
    return std::make_shared<Client>(std::move(session));
}

} // namespace Sample
