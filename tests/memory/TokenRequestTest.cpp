// The whole road, with the rig's plugin at its end.

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include "framework/Secrets.h"
#include "memory/FreedMemory.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;
using Rig::FreedMemory;
namespace Secrets = Rig::Secrets;

namespace {

/// The library with the plugin loaded, from the files beside this program.
class TokenRequest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        std::wstring config = L"%ExePath%/memory-test/SSOClient.config";
        SSOClientPrivate::ExpandPathVariables(config);
        SSOClientPrivate::SetSSOClientConfigFileOverride(config);
        WebServicesManager::Initialize();
    }
    static void TearDownTestSuite() { WebServicesManager::Uninitialize(); }

    static WebServicesManager& Manager() { return *WebServicesManager::GetInstance(); }
};

} // namespace

TEST_F(TokenRequest, LeavesNothing)
{
    FreedMemory const memory(Secrets::AccessToken);
    {
        OAuth2Token token;
        OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"a");
        ASSERT_TRUE(Manager().GetOAuth2AccessToken(spec, token, nullptr, false));
        EXPECT_EQ(token.GetTokenSize(), static_cast<int>(sizeof(Secrets::AccessToken)) - 1);
        ASSERT_TRUE(Manager().GetOAuth2AccessToken(spec, token, nullptr, false));
    }
    EXPECT_EQ(memory.WithSecret(), 0);
    EXPECT_GT(memory.Searched(), 0);
}

TEST_F(TokenRequest, LeavesNothingOfTheCookiesOfALogin)
{
    NetworkCookie cookie;
    cookie.SetValue(Secrets::CookieValue);
    NetworkCookieJar jar;
    jar.AddCookie(cookie);
    FreedMemory const memory(Secrets::CookieValue);
    EXPECT_TRUE(Manager().CompleteLogin(jar));
    EXPECT_EQ(memory.WithSecret(), 0);
    EXPECT_GT(memory.Searched(), 0);
}

// The second of the plugin's cookies is none: the exception passes the first.
TEST_F(TokenRequest, LeavesNothingOfTheCookiesOfALogoutThatThrows)
{
    FreedMemory const memory(Secrets::CookieValue);
    {
        NetworkCookieJar jar;
        wchar_t buffer[100];
        EXPECT_THROW(Manager().InitiateLogout(buffer, 100, jar, nullptr), std::exception);
        EXPECT_EQ(jar.GetCookieCount(), 1);
    }
    EXPECT_EQ(memory.WithSecret(), 0);
    EXPECT_GT(memory.Searched(), 0);
}
