// The arrays that a plugin hands over are released, whatever is in them.

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include "faults/allocation/Allocator.h"
#include "faults/allocation/LentPlugin.h"
#include "framework/System.h"

using namespace Halvorix::WebServices;
using Faults::LentPlugin;
using Faults::LiveBlocks;
using Halvorix::SSOServices::SSOClientPrivate;

namespace {

class PluginTexts : public testing::Test {
protected:
    void SetUp() override
    {
        SSOClientPrivate::SetSSOClientConfigFileOverride(plugin.ConfigFile());
        WebServicesManager::Initialize(false);
    }
    void TearDown() override { WebServicesManager::Uninitialize(); }

    // Blocks that are left of a token and of a jar read from the text.
    long BlocksLeft(char const* text, bool succeeds)
    {
        LentPlugin::GiveText(text, succeeds);
        Read(); // what is made once
        long const before = LiveBlocks();
        Read();
        return LiveBlocks() - before;
    }

private:
    static void Read()
    {
        OAuth2Token token;
        NetworkCookieJar jar;
        wchar_t buffer[16];
        WebServicesManager& manager = *WebServicesManager::GetInstance();
        try {
            manager.GetOAuth2AccessToken(OAuth2TokenSpec(), token, nullptr, false);
        } catch (std::exception const&) {
        }
        try {
            manager.InitiateLogout(buffer, 16, jar, nullptr);
        } catch (std::exception const&) {
        }
    }

    LentPlugin plugin;
};

std::vector<std::string> Texts()
{
    return {"",
            " ",
            "no JSON",
            "null",
            "7",
            "[]",
            "{}",
            "{\"OAuth2AccessToken\": \"t\", \"Cookies\": [{}]}",
            "{\"OAuth2AccessToken\": [], \"Cookies\": [1]}",
            "{\"OAuth2TokenSpec\": 7, \"Cookies\": [{\"Name\": {}}]}",
            "{\"EncryptedOAuth2AccessToken\": \"?\", \"Cookies\": [{\"ExpiryDate\": \"x\"}]}",
            "{\"OAuth2AccessToken\": \"\xff\xfe\", \"Cookies\": [{\"Domain\": \"\xc3\"}]}",
            std::string(5000, '['),
            std::string(1 << 24, 'x'),
            "{\"OAuth2AccessToken\": \"" + std::string(1 << 24, 'x') + "\"}"};
}

} // namespace

TEST_F(PluginTexts, AreReleasedWhateverIsInThem)
{
    if (Rig::IsWindows())
        GTEST_SKIP() << "leaks are not counted: the runtime has operators of its own";
    EXPECT_EQ(BlocksLeft(nullptr, true), 0);
    for (std::string const& text : Texts())
        EXPECT_EQ(BlocksLeft(text.c_str(), true), 0) << text.substr(0, 80);
}

// They are the plugin's: one array of each of the two calls is left.
TEST_F(PluginTexts, BesideARefusalAreLeftAlone)
{
    if (Rig::IsWindows())
        GTEST_SKIP() << "leaks are not counted: the runtime has operators of its own";
    EXPECT_EQ(BlocksLeft(nullptr, false), 0);
    EXPECT_EQ(BlocksLeft("{}", false), 2);
}
