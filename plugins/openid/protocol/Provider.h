#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <json/value.h>

#include "openid/platform/Http.h"
#include "openid/protocol/Answers.h"
#include "openid/protocol/IdToken.h"
#include "openid/protocol/Learnt.h"
#include "openid/protocol/Outcome.h"
#include "openid/protocol/Texts.h"
#include "support/SecretText.h"

namespace Halvorix::OpenId {

/// How a client is known to a provider.
struct Client {
    std::string issuer, clientId;
    std::string scopes; ///< Separated by blanks; contains "openid".
    std::chrono::seconds networkTimeout{30};
};

/// What a provider says of itself (OpenID Connect Discovery 1.0). Addresses that it does not
/// have are empty.
struct Metadata {
    std::string authorizationEndpoint, tokenEndpoint, userinfoEndpoint, keysUri;
    std::string revocationEndpoint, endSessionEndpoint, deviceAuthorizationEndpoint;
    std::vector<std::string> idTokenAlgorithms, scopes;
    bool issuerInResponse = false; ///< RFC 9207
};

using Secret = SSOServices::SecretText<char>;

/// What the token endpoint gave.
struct TokenAnswer {
    Secret accessToken, refreshToken, idToken; ///< Empty where there is none.
    std::string tokenType;                     ///< "Bearer"
    std::string scope; ///< Granted; as asked for if it is not told, empty if none was named.
    std::chrono::seconds lifetime{0}; ///< 0: not told.
};

/// Address and code of the device grant (RFC 8628).
struct DeviceAuthorization {
    Secret deviceCode;
    std::string userCode, verificationUri, verificationUriComplete;
    std::chrono::seconds lifetime{0}, interval{5};
};

/// One provider, asked over the network. Any thread, several at once: what was learnt is shared,
/// and no lock is held while the network is asked.
class Provider {
public:
    /// How requests are sent: SendHttp, with the host's proxy credentials.
    /// By reference, so that no copy of a body with secrets stays behind.
    using Send = std::function<HttpResponse(HttpRequest const&)>;

    /// @param whyOver asked by a thread that waits for what another one asks already
    Provider(Client client, Send send, WhyOver const& whyOver = nullptr);

    Client const& GetClient() const { return client; }
    /// Asked once an hour; what was learnt before stays good while the network is away.
    Outcome<Metadata> Discover();
    /// @param verifier PKCE's
    Outcome<TokenAnswer> ExchangeCode(std::string const& code, std::string const& redirectUri,
                                      std::string const& verifier,
                                      std::atomic<bool> const* cancelled);
    /// @param scope empty for the same as before
    Outcome<TokenAnswer> Refresh(std::string const& refreshToken, std::string const& scope);
    /// Kind Refused with the code "authorization_pending" or "slow_down" while it is not done.
    Outcome<TokenAnswer> PollDevice(std::string const& deviceCode);
    Outcome<DeviceAuthorization> AuthorizeDevice(std::string const& scope);
    /// Verified claims of an id_token by this provider's keys, which are asked anew at most once
    /// a minute for an unknown key id. Kind Network while they cannot be had.
    Outcome<Json::Value> Verify(std::string const& idToken, std::string const& nonce,
                                std::string const& subject, std::string const& accessToken);
    /// The claims about the user; those of another subject are refused. An empty object if the
    /// provider tells none.
    Outcome<Json::Value> UserInfo(std::string const& accessToken, std::string const& subject);
    /// At best effort.
    Outcome<bool> Revoke(std::string const& token, std::string const& tokenTypeHint);

private:
    HttpResponse AskAnything(HttpRequest& request, Question const& question);
    HttpResponse Post(Parameters const& parameters, Question const& question,
                      std::atomic<bool> const* cancelled);
    Outcome<Json::Value> AskJson(HttpRequest& request, Question const& question);
    Outcome<TokenAnswer> AskTokens(Parameters parameters, std::string const& scope,
                                   std::atomic<bool> const* cancelled);
    Outcome<std::vector<SigningKey>> AskKeys();

    Client const client;
    Send const send;
    Learnt<Metadata> metadata;
    Learnt<std::vector<SigningKey>> keys;
};

} // namespace Halvorix::OpenId
