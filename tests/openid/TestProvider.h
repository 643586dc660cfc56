#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include <json/value.h>

#include "openid/platform/Http.h"
#include "openid/protocol/Texts.h"

namespace Rig {

/// An OpenID Connect provider in memory, with rotation of refresh tokens and detection of their
/// reuse. One user, who agrees to everything. Any thread.
class TestProvider {
public:
    /// What it does wrong, or otherwise than most; set under its lock by Order.
    struct Behaviour {
        bool isAway = false;             ///< Nobody answers.
        std::string subject = "alice-1"; ///< Who signs in.
        /// Of all answers of the token endpoint.
        std::chrono::milliseconds delay{0};
        int keysStatus = 0; ///< The key set's answer, in place of its own.
        /// The token endpoint's answer, in place of its own, to refreshes.
        int refreshStatus = 0;
        std::string refreshBody;
        int userinfoStatus = 0, revocationStatus = 0;
        std::string subjectOfUserinfo; ///< If it is to be another one.
        std::string subjectOfRefresh;  ///< Of the id_token that a refresh then gives.
        std::string nonce;             ///< If it is to be another one.
        std::string clientOfIdToken = "client-1";
        Json::Value idTokenClaims; ///< In place of its own, in all id_tokens.
        /// What a sign-in or a refresh is told to have granted.
        std::string scopeOfSignIn, scopeOfRefresh;
        bool givesIdToken = true, givesRefreshToken = true, rotates = true;
        int lifetime = 3600; ///< 0: not told.
        /// Scopes that it knows; a refresh for others is refused, by an error or its status alone.
        std::set<std::string> scopes{"openid", "profile", "offline_access", "data:read",
                                     "Data:Read"};
        bool refusesScopesByStatusAlone = false;
        bool hasDevices = false; ///< The device grant.
        int deviceInterval = 5, deviceLifetime = 600;
        /// What polls get before the tokens: an error each, or "timeout" for no answer.
        std::deque<std::string> devicePolls;
        /// Called once a request is in hand, before it is answered.
        std::function<void(std::string const& endpoint)> onRequest;
    };

    explicit TestProvider(std::string issuer = "https://login.example");

    std::string const& Issuer() const { return issuer; }
    void Order(std::function<void(Behaviour&)> const& change);

    Halvorix::OpenId::HttpResponse Answer(Halvorix::OpenId::HttpRequest const& request);
    /// Where it sends the browser that opens an authorization address.
    std::string Redirect(std::string const& authorizationUrl);

    /// How often an endpoint was asked: "discovery", "keys", "token", "refresh", "userinfo",
    /// "revocation", "device", "poll".
    int Count(std::string const& endpoint) const;
    /// The time limit of the last request of an endpoint.
    std::chrono::milliseconds TimeoutOf(std::string const& endpoint) const;
    /// Whether a refresh token may still be used.
    bool IsGood(std::string const& refreshToken) const;
    /// How often a refresh token came that had been used before.
    int Reuses() const;
    /// All that it gave out and was given, to be looked for in files and memory: tokens, codes,
    /// verifiers, states.
    std::set<std::string> Secrets() const;
    /// The same, with its kind: "access_token", "refresh_token", "id_token", "code", "device_code",
    /// "nonce".
    std::string Last(std::string const& kind) const;
    /// Refuses all tokens that it has given so far.
    void RevokeAll();

private:
    struct Code {
        std::string challenge, redirectUri, nonce, scope;
    };
    struct RefreshToken {
        int family = 0;
        bool isUsed = false;
        std::string scope;
    };
    using Response = Halvorix::OpenId::HttpResponse;
    using Parameters = std::map<std::string, std::string>;

    std::string EndpointOf(std::string const& url) const;
    Response Discovery() const;
    Response Keys() const;
    Response Token(Parameters const& form);
    Response Exchange(Parameters const& form);
    Response Device(Parameters const& form);
    Response PollDevice(Parameters const& form);
    Response Refresh(Parameters const& form);
    Response UserInfo(std::string const& authorization) const;
    Response Revoke(Parameters const& form);
    Json::Value NewTokens(std::string const& scope, int family);
    std::string NewSecret(std::string const& kind);
    std::string IdToken(std::string const& subject, std::string const& nonce);

    std::string const issuer;
    mutable std::mutex mutex; // Of what follows.
    Behaviour behaviour;
    std::map<std::string, int> counts;
    std::map<std::string, std::chrono::milliseconds> timeouts;
    std::map<std::string, Code> codes;
    std::map<std::string, RefreshToken> refreshTokens;
    std::map<std::string, std::string> devices; // the scope by the device code
    std::set<int> revokedFamilies;
    std::set<std::string> accessTokens, secrets;
    std::map<std::string, std::string> last;
    int families = 0, reuses = 0;
};

} // namespace Rig
