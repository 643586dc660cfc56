// Nothing that is secret shows in the log, whatever comes of the call. The rig
// looks for it after each run; these see to it that every road is gone.

#include <cstring>
#include <iostream>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServicesPrivate.h>
#include <WebServicesConfiguration.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include <plugin/Defaults.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Secrets.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServicesUI::WebServicesAutomation;
using Halvorix::WebServicesUI::WebServicesUIManager;
using Rig::Installation;
using Rig::Outcome;
namespace Secrets = Rig::Secrets;

namespace {

/// Answers each decryption with the planted text.
class Cryptor : public RsaCryptorDefaults {
public:
    int GetMaxBlockSize() override { return 255; }
    bool RsaDecrypt(unsigned char const*, unsigned long long, unsigned char* output,
                    unsigned long long, unsigned long long* length) override
    {
        *length = std::strlen(Secrets::DecryptedToken);
        std::memcpy(output, Secrets::DecryptedToken, *length);
        return true;
    }
};

HOST_PROGRAM(UsesEverySecret)
{
    std::wstring const password = Secrets::Wide(Secrets::LoginPassword);
    std::wstring const proxyPassword = Secrets::Wide(Secrets::ProxyPassword);
    std::wstring const state = Secrets::Wide(Secrets::LoginState);
    std::wstring const consumerSecret = Secrets::Wide(Secrets::ConsumerSecret);
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, Secrets::Wide(Secrets::Scope).c_str());
    WebServicesConfiguration configuration;
    configuration.SetConsumerSecret(consumerSecret.c_str());
    configuration.SetOAuth2ConsumerSecret(consumerSecret.c_str());
    NetworkCookie cookie;
    cookie.SetValue(Secrets::CookieValue);
    NetworkCookieJar jar;
    jar.AddCookie(cookie);
    OAuth2Token token;
    wchar_t buffer[100] = {};

    report.Try("initialize", [&] { WebServicesManager::Initialize(spec); });
    report.Try("initializeUI", [&] { WebServicesUIManager::Initialize(spec); });
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    if (manager == nullptr)
        return;
    report.Try("configuration", [&] { manager->SetConfiguration(configuration); });
    report.Try("enable", [&] { manager->EnableOAuth2(spec); });
    report.Try("token", [&] {
        report("tokenAnswer", manager->GetOAuth2AccessToken(spec, token, nullptr, true));
        report("tokenText", std::wstring(token.GetToken()));
    });
    report.Try("refresh", [&] { manager->RefreshOAuth2Token(spec, true); });
    report.Try("complete", [&] { manager->CompleteLogin(jar); });
    report.Try("logout", [&] { manager->InitiateLogout(buffer, 100, jar, nullptr); });
    report.Try("proxy", [&] {
        manager->SetProxyAuthentication(L"host", 80, L"user", proxyPassword.c_str(), nullptr);
    });
    report.Try("automation",
               [&] { WebServicesAutomation::Login(L"user", password.c_str(), true); });
    report.Try("state", [&] { report("session", SSOClientPrivate::GetSessionState()); });
    report.Try("encrypt", [&] { SSOClientPrivate::Encrypt(Secrets::Wide(Secrets::ClearText)); });
    report.Try("restore",
               [&] { SSOClientPrivate::FromJsonString(&configuration, Secrets::LoginState); });
    report.Try("decrypt", [&] {
        SSOServicesPrivate::JsonToOAuth2Token(
            R"({"OAuth2TokenSpec": {"type": 1}, "EncryptedOAuth2AccessToken": "AAAA"})", token,
            std::make_shared<Cryptor>());
        report("decrypted", std::wstring(token.GetToken()));
    });
    report.Try("uninitialize", [&] { WebServicesManager::Uninitialize(); });
}

struct Answer {
    char const* name;
    std::string token;   // what the plugin does when it is asked for a token
    std::string cookies; // and for the cookies of a logout
};

std::string Quoted(std::string const& text) { return "\\\"" + text + "\\\""; }

std::string TokenText(std::string const& rest)
{
    return R"({"text": "{\"OAuth2TokenSpec\": {\"scope\": )" + Quoted(Secrets::Scope) +
           R"(}, \"OAuth2AccessToken\": )" + Quoted(Secrets::AccessToken) + rest + R"("})";
}

std::string CookieText(std::string const& rest)
{
    return R"({"text": "{\"Cookies\": [{\"Value\": )" + Quoted(Secrets::CookieValue) + "}" + rest +
           R"("})";
}

class EverySecret : public testing::TestWithParam<Answer> {};

} // namespace

TEST_P(EverySecret, StaysOutOfTheLog)
{
    Installation installation;
    Outcome const outcome = installation.Complete()
                                .Script("ISSOClient::GetOAuth2AccessToken", GetParam().token)
                                .Script("ISSOClient::InitiateLogout", GetParam().cookies)
                                .Script("ISSOClientPrivate::GetSessionState",
                                        "{\"text\": \"" + std::string(Secrets::LoginState) + "\"}")
                                .Run("UsesEverySecret");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.log.empty());
    EXPECT_EQ(outcome["session"], Secrets::LoginState);
    EXPECT_EQ(outcome["decrypted"], Secrets::DecryptedToken);
}

INSTANTIATE_TEST_SUITE_P(
    Secrets, EverySecret,
    testing::Values(
        Answer{"OfGoodAnswers", TokenText("}"), CookieText("]}")},
        Answer{"OfTextsThatAreNoJson", TokenText(""), CookieText("")},
        Answer{"OfDocumentsOfWrongTypes", TokenText(R"(, \"OAuth2TokenSpec\": 1})"),
               CookieText(", 1]}")},
        Answer{"OfMalformedBase64", TokenText(R"(, \"EncryptedOAuth2AccessToken\": \"?\"})"),
               CookieText("]}")},
        Answer{"OfRefusals", R"({"answer": 0, "text": null})", R"({"answer": 0, "text": null})"},
        Answer{"OfExceptions", R"({"throw": "no token"})", R"({"throw": "no logout"})"}),
    [](auto const& info) { return std::string(info.param.name); });

TEST(Secrets, StayOutOfTheConsoleWithoutAPlugin)
{
    Installation installation;
    Outcome const outcome = installation.Run("UsesEverySecret");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.console.empty());
    EXPECT_EQ(outcome["session"], "");
}

TEST(Secrets, ReachTheHostThroughAGoodAnswer)
{
    Installation installation;
    Outcome const outcome = installation.Complete()
                                .Script("ISSOClient::GetOAuth2AccessToken", TokenText("}"))
                                .Run("UsesEverySecret");
    EXPECT_EQ(outcome["tokenAnswer"], true);
    EXPECT_EQ(outcome["tokenText"], Secrets::AccessToken);
}

namespace {

HOST_PROGRAM(TellsASecret)
{
    if (arguments[0] == "console")
        std::cout << "x" << Secrets::AccessToken << std::endl;
    else if (arguments[0] == "errors")
        std::cerr << "cGxhbnRlZC1hY2Nlc3MtdG9rZW4tNGYxZTljMjdiNg==" << std::endl;
    else if (arguments[0] == "log")
        // A path is what the library logs as it was given.
        SSOClientPrivate::SetSSOClientConfigFileOverride(Secrets::Wide(Secrets::AccessToken));
    SSOClientPrivate::GetSessionState();
}

/// The failures that a run of that program adds to the test.
int FailuresOf(std::string const& place, std::string const& expected)
{
    testing::TestPartResultArray failures;
    {
        testing::ScopedFakeTestPartResultReporter const reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        Installation installation;
        // Read without an error, so that the console has nothing to tell.
        installation.File("work/" + std::string(Secrets::AccessToken), "{}");
        installation.Complete().Compatibility(
            R"({"ssoClientPlugin": [{"module": ")" + Rig::ModuleName("RecordingPlugin") +
                R"(", "modulePath": "{root}/server/plugin", )"
                R"("compatibleSsoServicesVersion": {"minVersion": "10"}}]})",
            "app");
        installation.ServerApp("app").Run("TellsASecret", {place});
    }
    for (int i = 0; i < failures.size(); ++i)
        EXPECT_THAT(failures.GetTestPartResult(i).message(), testing::HasSubstr(expected));
    return failures.size();
}

} // namespace

TEST(Secrets, AreFoundWhereverTheyShow)
{
    EXPECT_EQ(FailuresOf("nowhere", ""), 0);
    EXPECT_EQ(FailuresOf("console", "the console tells the secret planted-access-token"), 1);
    EXPECT_EQ(FailuresOf("errors", "the standard error tells the secret planted-access-token"), 1);
    EXPECT_GE(FailuresOf("log", "the log tells the secret planted-access-token"), 1);
}
