// What a session leaves in freed memory of the secrets that it kept.

#include <chrono>
#include <memory>
#include <string>

#include <gmock/gmock.h>

#include "framework/Secrets.h"
#include "memory/FreedMemory.h"
#include "openid/TestFolder.h"
#include "openid/interfaces/HostTexts.h"
#include "openid/protocol/Authorization.h"
#include "openid/protocol/CallbackRequest.h"
#include "openid/protocol/Texts.h"
#include "openid/session/ProxyCredentials.h"
#include "openid/session/Requests.h"
#include "openid/session/TokenClock.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;
using Rig::FreedMemory;
using Rig::TestFolder;

namespace {

std::string const Token = Rig::Secrets::AccessToken;

/// With the secret in each of its secrets, and long ones among them.
StoredLogin NewLogin()
{
    StoredLogin login;
    login.issuer = "https://login.example";
    login.clientId = "desktop";
    login.subject = "alice-1";
    login.refreshToken = Token + std::string(3000, '.');
    login.claims["name"] = "Alice";
    for (int i = 0; i < 5; ++i) {
        StoredToken token;
        token.type = std::to_string(i);
        token.text = Token + std::to_string(i);
        token.receivedAt = 1'700'000'000;
        token.lifetime = 3600;
        login.tokens.push_back(token);
    }
    return login;
}

/// Does it with every block watched. What the action hands out is the caller's.
template <class Action>
void ExpectNothingLeft(Action action)
{
    FreedMemory const memory(Token);
    action();
    EXPECT_EQ(memory.WithSecret(), 0);
    EXPECT_GT(memory.Searched(), 0);
}

} // namespace

TEST(SessionMemory, SeesWhatIsLeft)
{
    FreedMemory const memory(Token);
    std::make_unique<std::string>(Token + "left");
    EXPECT_GT(memory.WithSecret(), 0);
}

TEST(SessionMemory, HasNoSecretsOfAStoreLeft)
{
    TestFolder const folder;
    StoredLogin const login = NewLogin();
    ExpectNothingLeft([&] {
        TokenStore store(folder / "store");
        ASSERT_TRUE(store.Write(login));
        for (int i = 0; i < 3; ++i) {
            auto const read = store.Read(login.issuer, login.clientId);
            ASSERT_TRUE(read && *read);
            StoredLogin copy = **read;
            copy.refreshToken = Secret();
            copy.tokens.pop_back();
            copy.tokens.push_back(login.tokens[0]);
            ASSERT_TRUE(store.Write(copy));
        }
        TokenStore another(folder / "store");
        ASSERT_TRUE(another.Read(login.issuer, login.clientId));
        ASSERT_TRUE(store.Remove(login.issuer, login.clientId));
    });
}

TEST(SessionMemory, HasNothingLeftOfADamagedStore)
{
    TestFolder const folder;
    StoredLogin const login = NewLogin();
    ExpectNothingLeft([&] {
        TokenStore store(folder / "store");
        StoredLogin damaged = login;
        damaged.signedInAt = -1;
        ASSERT_TRUE(store.Write(damaged));
        EXPECT_FALSE(store.Read(login.issuer, login.clientId));
    });
}

TEST(SessionMemory, HasNoTokenOfAClockLeft)
{
    StoredLogin const login = NewLogin();
    StoredToken next = login.tokens[0];
    next.text = Token + "next";
    ExpectNothingLeft([&] {
        TokenClock clock([] { return std::int64_t(1'700'000'000); },
                         [] { return std::chrono::milliseconds(1); });
        for (StoredToken const& token : login.tokens)
            clock.Received("login", token);
        EXPECT_TRUE(clock.IsGood("login", login.tokens[0]));
        clock.Received("login", next);
        clock.Forget("login");
    });
}

TEST(SessionMemory, HasNothingLeftOfATokenForAHost)
{
    Secret const token(Token);
    wchar_t large[256], small[4];
    ExpectNothingLeft([&] {
        EXPECT_EQ(CopyWhole(token, large, 256), static_cast<int>(token->size()));
        EXPECT_EQ(CopyWhole(token, nullptr, 0), static_cast<int>(token->size()));
        EXPECT_EQ(CopyWhole(token, small, 4), 0);
    });
    EXPECT_EQ(std::wstring(large), ToWide(*token));
}

TEST(SessionMemory, HasNothingLeftOfAnAuthorizationAndItsAnswer)
{
    Client client;
    client.scopes = "openid offline_access";
    Metadata metadata;
    metadata.authorizationEndpoint = "https://login.example/authorization";
    AuthorizationSecrets const secrets{Token + "-state", Token + "-nonce", Token + "-verifier"};
    std::string const target = "/callback?iss=x&code=" + Token + "&state=" + Token + "-state";
    std::string const head =
        "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:1\r\nReferer: a\r\n\r\n";
    ExpectedCallback const expected{"127.0.0.1:1", secrets.state};
    ExpectNothingLeft([&] {
        Secret const url(
            AuthorizationUrl(metadata, client, "http://127.0.0.1:1/callback", secrets, "alice"));
        EXPECT_NE(url->find(Token), std::string::npos);
        CallbackAnswer answer = ReadCallback(head, expected);
        ASSERT_TRUE(answer.response);
        auto code = ReadAuthorizationResponse(*answer.response, secrets, metadata, "x");
        EXPECT_TRUE(code) << code.Why().reason;
        Secret const taken(std::move(*code));
        for (auto& parameter : *answer.response)
            Halvorix::SSOServices::Wipe(parameter.second);
    });
}

TEST(SessionMemory, HasNothingLeftOfARequest)
{
    HttpRequest request;
    request.body = "refresh_token=" + Token;
    request.headers.emplace_back("Authorization", "Bearer " + Token);
    ExpectNothingLeft([&] {
        ProxyCredentials proxies;
        ProxyCredential credential{"proxy", 3128, "user", Token};
        proxies.Set(std::move(credential));
        SendWithin(
            request, [](HttpRequest const&) { return HttpResponse(); }, proxies);
        auto found = proxies.Find("proxy", 3128);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->password, Token);
        Halvorix::SSOServices::Wipe(found->password); // which is the caller's
        proxies.Clear();
    });
}
