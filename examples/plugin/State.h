#pragma once

#include <chrono>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <WebServicesConfiguration.h>
#include <json/value.h>

#include "Interfaces.h"

namespace Sample {

struct Account {
    std::wstring id, loginName, password, firstName, lastName, email;
};

/// Null if there is none of that name; the first for null and the empty name.
Account const* FindAccount(wchar_t const* loginName);
/// Null if no cookie of the jar names one.
Account const* FindAccountByCookie(Json::Value const& jar);
Json::Value AccountToJson(Account const& account);

struct Token {
    std::wstring text; ///< Empty: never issued.
    unsigned int expiryDate = 0;
    bool IsExpired() const;
    bool IsAvailable() const { return !text.empty() && !IsExpired(); }
};

/// Which token a host means: a spec document, checked. Null if it is none.
Json::Value ReadSpec(char const* json);

enum class Event : std::int32_t { LoggedIn = 1, LoggedOut, TokenAcquired, TokenRefreshed };

/// Everything that the plugin knows. Reached through Session::Lock alone.
struct State {
    State();

    // The user.
    Account const* user = nullptr;    ///< Who is signed in.
    Account const* pending = nullptr; ///< Who was named by InitiateLogin.
    Account const* known;             ///< Whom RestoreLogin signs in.
    unsigned int loginExpiryDate = 0;
    Json::Value cookies; ///< The document of a cookie jar.
    bool SignIn(Account const* account);
    bool SignOut();
    bool Restore();
    bool IsLoginExpired() const { return user != nullptr && !IsLoginValid(); }
    bool IsLoginValid() const;

    // Tokens.
    Token accessToken;
    bool oauth2Enabled = true;
    Json::Value spec; ///< For the operations that name none.
    std::map<Json::Value, Token> oauth2Tokens;
    unsigned int issued = 0;
    /// Null with nobody signed in. Issues a token where there is none that can
    /// be used, or in any case.
    Token const* GetAccessToken(bool renew);
    /// Null also without OAuth2 and for a null spec.
    Token const* GetOAuth2Token(Json::Value const& wanted, bool renew);
    /// As it lies there, issued or not.
    Token StoredOAuth2Token(Json::Value const& wanted) const;
    bool EnableOAuth2(bool enable);

    // Servers, whose URLs a trusted caller may replace.
    Server server{};
    std::map<Server, std::map<std::wstring, std::wstring>> urlOverrides;
    std::wstring Url(std::wstring const& name) const;
    std::wstring Url(WebServicesUrlCode code) const;

    // The server process, which is imagined.
    std::wstring serverAppPath, serverAppExeFile;
    std::string serverName, serverProcessName;
    std::vector<std::string> nextArguments, arguments;
    long long processId = 0; ///< 0: not running.
    long long lastProcessId = 0;
    bool frozen = false;

    // What hosts hand over and ask back.
    std::list<WebServicesConfiguration> configurations{1}; ///< The last one counts.
    std::set<CacheType> enabledCaches, filledCaches;
    std::map<std::pair<std::wstring, int>, std::pair<std::wstring, std::wstring>> proxies;
    std::wstring proxyTitle, proxyText;
    std::deque<std::int32_t> events; ///< Oldest first.
    std::set<IWebServicesObserver*> observers;
    std::set<WebServicesUI::IWebServicesUIObserver*> uiObservers;
    unsigned long long hostWindow = 0;
    StdUtil::RetrySchedule retrySchedule;
    std::chrono::seconds killFrozenServerTimeout{60};
    std::wstring openSslModule, searchPaths, productName = L"HxSSO Sample";
    std::shared_ptr<IRsaCryptor> cryptor;

private:
    void Raise(Event event) { events.push_back(static_cast<std::int32_t>(event)); }
    void Issue(Token& token, std::wstring const& name);
};

std::wstring ServerName(Server server); ///< Empty for a server that there is not.
/// A place only: the sample stores nothing in files.
std::wstring PathOf(std::wstring const& file);

/// The state behind its mutex: the library calls from any thread, several at
/// once.
class Session {
public:
    class Access {
    public:
        explicit Access(Session& session) : lock(session.mutex), state(session.state) {}
        State* operator->() const { return &state; }

    private:
        std::lock_guard<std::mutex> lock;
        State& state;
    };

    /// Access for as long as the result lives, in `Lock()->...` for one
    /// expression. Not while the same thread has it already.
    Access Lock() { return Access(*this); }

private:
    std::mutex mutex;
    State state;
};

/// What the interfaces have in common: they share a session.
template <typename Interface>
class OnSession : public Interface {
public:
    explicit OnSession(std::shared_ptr<Session> session) : session(std::move(session)) {}

protected:
    Session::Access Lock() { return session->Lock(); }

private:
    std::shared_ptr<Session> const session;
};

} // namespace Sample
