// The road to the plugin with each allocation on it failing.

#include <algorithm>
#include <locale>

#include <boost/locale/info.hpp>
#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "faults/allocation/Allocator.h"
#include "faults/allocation/LentPlugin.h"
#include "faults/allocation/Sweep.h"
#include "host/SSOClientManager.h"
#include "host/SupportFileSearchPaths.h"
#include "support/LogSink.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;
using Faults::LentPlugin;
using Halvorix::WebServicesUI::WebServicesUIManager;

namespace {

bool PluginIsThere()
{
    std::shared_ptr<ISSOClient> client;
    SSOClientManager::GetInstance()->GetSSOClient(client);
    return client != nullptr;
}

bool HasLibrarysLocale() { return std::has_facet<boost::locale::info>(std::locale()); }

} // namespace

TEST(AllocationFailure, OfTheManagerLeavesNoneOrAWholeOne)
{
    Faults::Operation operation;
    operation.prepare = [] {
        LentPlugin::Reset();
        std::locale::global(std::locale::classic());
    };
    operation.run = [] { SSOClientManager::GetInstance(); };
    operation.expectGood = [] { EXPECT_TRUE(HasLibrarysLocale()); };
    // The next use completes what this one left.
    operation.useAfterwards = [] {
        EXPECT_NE(SSOClientManager::GetInstance(), nullptr);
        EXPECT_TRUE(HasLibrarysLocale());
    };
    operation.discard = operation.prepare;
    // Boost's generator of locales loses the facet that it is about to install.
    operation.blocksThatOthersLose = 1;
    Faults::FailEachAllocation(operation);
}

namespace {

class PluginLoadAllocation : public testing::Test {
protected:
    LentPlugin plugin;

    void SetUp() override
    {
        SSOClientManager::GetInstance(); // sets the locale, which stays
    }

    void PrepareLoaded()
    {
        plugin.RenewManager();
        ASSERT_TRUE(PluginIsThere());
    }
};

/// With the plugin there from the beginning to the end.
class PluginCallAllocation : public PluginLoadAllocation {
protected:
    void SetUp() override
    {
        PluginLoadAllocation::SetUp();
        PrepareLoaded();
        WebServicesManager::Initialize(false);
    }
    void TearDown() override { WebServicesManager::Uninitialize(); }
};

} // namespace

TEST_F(PluginLoadAllocation, FailingLeavesAManagerThatAnswers)
{
    bool answer = false;
    int goodLines = 0;
    Faults::Operation operation;
    operation.prepare = [&] {
        plugin.RenewManager();
        answer = false;
    };
    operation.run = [&] { answer = PluginIsThere(); };
    operation.expectGood = [&] {
        EXPECT_TRUE(answer);
        EXPECT_EQ(LentPlugin::FactoryCalls(), 1);
        EXPECT_TRUE(TakeEarlyLog().IsEmpty());
        goodLines = std::max(goodLines, LentPlugin::Lines());
        EXPECT_EQ(LentPlugin::Lines(), goodLines);
    };
    // A file that the stream could not take in whole reads as no JSON: then
    // there is no plugin, or none that knows of an OpenSSL module.
    operation.expectToldFailure = [&] {
        EXPECT_EQ(answer, LentPlugin::FactoryCalls() == 1);
        EXPECT_EQ(answer, PluginIsThere());
    };
    // What was begun is not begun anew; the plugin is there if it came that far.
    operation.useAfterwards = [&] {
        bool const isThere = PluginIsThere();
        EXPECT_EQ(isThere, LentPlugin::FactoryCalls() == 1);
        EXPECT_EQ(isThere, PluginIsThere());
    };
    operation.discard = [] { LentPlugin::Reset(); };
    Faults::FailEachAllocation(operation);
}

// It is counted and no more: a document of the spec would need memory.
TEST_F(PluginCallAllocation, ASecondInitializeConvertsNoSpec)
{
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"data:read user:profile");
    WebServicesUIManager::Initialize(false);
    {
        Faults::Failure const failure(1, Faults::FailureMode::FromThereOn);
        EXPECT_TRUE(WebServicesManager::Initialize(spec));
        EXPECT_TRUE(WebServicesUIManager::Initialize(spec));
        EXPECT_FALSE(Faults::Failure::HasHappened());
    }
    for (int i = 0; i < 2; ++i) {
        WebServicesUIManager::Uninitialize();
        WebServicesManager::Uninitialize();
    }
}

TEST_F(PluginLoadAllocation, FailingInInitializeLeavesTheCountsAtOne)
{
    bool initialized = false;
    auto const uninitialize = [] {
        WebServicesUIManager::Uninitialize();
        WebServicesManager::Uninitialize();
        LentPlugin::Reset();
    };
    Faults::Operation operation;
    operation.prepare = [&] {
        PrepareLoaded();
        initialized = false;
    };
    operation.run = [&] { initialized = WebServicesUIManager::Initialize(OAuth2TokenSpec()); };
    operation.expectGood = [&] {
        EXPECT_TRUE(initialized);
        EXPECT_NE(WebServicesUIManager::GetInstance(), nullptr);
        EXPECT_NE(WebServicesManager::GetInstance(), nullptr);
    };
    operation.useAfterwards = [&] {
        EXPECT_EQ(WebServicesUIManager::GetInstance(), nullptr);
        WebServicesUIManager::Uninitialize();
        EXPECT_FALSE(WebServicesUIManager::IsInitialized());
    };
    operation.discard = uninitialize;
    Faults::FailEachAllocation(operation);
}

TEST_F(PluginLoadAllocation, FailingInAListOfSearchPathsKeepsTheOldOrTheNew)
{
    Faults::Operation operation;
    operation.prepare = [&] {
        PrepareLoaded();
        StoreSupportFileSearchPaths({L"the old path that needs memory"});
    };
    operation.run = [] {
        WebServicesManager::SetSupportFileSearchPaths(L"the first path of all;;the second path");
    };
    operation.expectGood = [] {
        EXPECT_EQ(SupportFileSearchPaths(),
                  (std::vector<std::wstring>{L"the first path of all", L"the second path"}));
    };
    operation.useAfterwards = [] { EXPECT_GE(SupportFileSearchPaths().size(), 1u); };
    operation.discard = [] {
        StoreSupportFileSearchPaths({});
        LentPlugin::Reset();
    };
    Faults::FailEachAllocation(operation);
}

namespace {

constexpr char const* TokenDocument =
    R"({"OAuth2AccessToken": "a token that needs memory", "OAuth2TokenSpec":
        {"type": 3, "scope": "user:profile data:read", "legacy": true}})";
constexpr char const* JarDocument =
    R"({"Cookies": [{"Name": "a name that needs memory", "Domain": "login.sample.example"},
                    {"Name": "another that needs memory", "Path": "/somewhere/else"}]})";

} // namespace

TEST_F(PluginCallAllocation, FailingReleasesTheTokenTextOfThePlugin)
{
    LentPlugin::GiveText(TokenDocument);
    bool answer = false;
    std::unique_ptr<OAuth2Token> token;
    Faults::Operation operation;
    operation.prepare = [&] {
        token = std::make_unique<OAuth2Token>();
        answer = false;
    };
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"user:profile data:read");
    operation.run = [&] {
        answer =
            WebServicesManager::GetInstance()->GetOAuth2AccessToken(spec, *token, nullptr, false);
    };
    operation.expectGood = [&] {
        EXPECT_TRUE(answer);
        EXPECT_EQ(token->GetToken(), std::wstring(L"a token that needs memory"));
    };
    // A text that the stream could not take in whole reads as no JSON.
    operation.expectToldFailure = [&] {
        if (answer)
            operation.expectGood();
        else
            EXPECT_FALSE(token->IsValid());
    };
    operation.useAfterwards = [&] { OAuth2Token const copy(*token); };
    operation.discard = [&] { token.reset(); };
    Faults::FailEachAllocation(operation);
}

TEST_F(PluginCallAllocation, FailingReleasesTheJarTextOfThePlugin)
{
    LentPlugin::GiveText(JarDocument);
    bool answer = false;
    wchar_t buffer[16];
    std::unique_ptr<NetworkCookieJar> jar;
    Faults::Operation operation;
    operation.prepare = [&] {
        jar = std::make_unique<NetworkCookieJar>();
        jar->AddCookie({});
        answer = false;
    };
    operation.run = [&] {
        answer = WebServicesManager::GetInstance()->InitiateLogout(buffer, 16, *jar, nullptr);
    };
    operation.expectGood = [&] {
        EXPECT_TRUE(answer);
        EXPECT_EQ(jar->GetCookieCount(), 2);
    };
    operation.expectToldFailure = [&] { EXPECT_EQ(jar->GetCookieCount(), answer ? 2 : 1); };
    operation.useAfterwards = [&] {
        EXPECT_LE(jar->GetCookieCount(), 2);
        jar->AddCookie({});
        jar->DeleteAll();
    };
    operation.discard = [&] { jar.reset(); };
    Faults::FailEachAllocation(operation);
}

TEST_F(PluginCallAllocation, FailingInAForwarderReachesTheCaller)
{
    wchar_t buffer[64];
    NetworkCookieJar jar;
    jar.AddCookie({});
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"user:profile data:read");
    bool completed = false;
    int length = 0;
    Faults::Operation operation;
    operation.run = [&] {
        WebServicesManager* const manager = WebServicesManager::GetInstance();
        completed = manager->CompleteLogin(jar);
        manager->EnableOAuth2(spec);
        length = SSOServerManager::GetSSOServerAppFile(buffer, 64);
    };
    operation.expectGood = [&] {
        EXPECT_TRUE(completed);
        EXPECT_EQ(length, 29);
    };
    Faults::FailEachAllocation(operation);
}
