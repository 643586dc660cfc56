// The search for files and modules with each allocation failing.

#include <memory>

#include <gtest/gtest.h>

#include "discovery/SSOPathResolver.h"
#include "faults/allocation/LentPlugin.h"
#include "faults/allocation/Sweep.h"

using namespace Halvorix::SSOServices;

namespace {

class DiscoveryAllocation : public testing::Test {
protected:
    Faults::LentPlugin plugin;
    std::unique_ptr<SSOPathResolver> resolver;

    Faults::Operation OnAFreshResolver()
    {
        Faults::Operation operation;
        operation.prepare = [this] {
            Version version;
            ParseVersion(version, "10.22.00.1800");
            resolver = std::make_unique<SSOPathResolver>(version, LogFunction());
            resolver->SetSSOClientConfigFileOverride(plugin.ConfigFile());
        };
        operation.discard = [this] { resolver.reset(); };
        return operation;
    }

    // Whatever was read by then: it answers, and the same each time.
    void ExpectSteadyAnswers()
    {
        EXPECT_EQ(resolver->GetSSOServerAppPath(), resolver->GetSSOServerAppPath());
        EXPECT_EQ(resolver->GetSSOClientPluginModule(), resolver->GetSSOClientPluginModule());
        EXPECT_EQ(resolver->GetOpenSslModule(), resolver->GetOpenSslModule());
        EXPECT_EQ(resolver->GetSSOServerName(), resolver->GetSSOServerName());
    }
};

} // namespace

TEST_F(DiscoveryAllocation, FailingInTheConfigurationLeavesAResolverThatAnswers)
{
    std::wstring path;
    Faults::Operation operation = OnAFreshResolver();
    operation.run = [&] { path = resolver->GetSSOServerAppPath(); };
    operation.expectGood = [&] {
        EXPECT_EQ(path.substr(path.size() - 7), L"/server");
        EXPECT_EQ(resolver->GetSSOServerName(), "Server");
        std::wstring().swap(path);
    };
    // A file that the stream could not take in whole reads as no JSON.
    operation.expectToldFailure = [&] {
        std::string const name = resolver->GetSSOServerName();
        EXPECT_TRUE(name == "Server" || name == "Halvorix.SSO.DefaultServer-v2") << name;
        EXPECT_EQ(path.empty(), name != "Server");
        std::wstring().swap(path);
    };
    operation.useAfterwards = [&] { ExpectSteadyAnswers(); };
    Faults::FailEachAllocation(operation);
}

TEST_F(DiscoveryAllocation, FailingInTheChoiceLeavesItToTheNextQuestion)
{
    std::wstring pluginModule;
    std::wstring openSslModule;
    Faults::Operation operation = OnAFreshResolver();
    auto const prepareResolver = operation.prepare;
    operation.prepare = [&] {
        prepareResolver();
        ASSERT_FALSE(resolver->GetSSOServerAppPath().empty());
    };
    operation.run = [&] {
        pluginModule = resolver->GetSSOClientPluginModule();
        openSslModule = resolver->GetOpenSslModule();
    };
    auto const forget = [&] {
        std::wstring().swap(pluginModule);
        std::wstring().swap(openSslModule);
    };
    operation.expectGood = [&] {
        EXPECT_NE(pluginModule.find(L"/BorrowingPlugin"), std::wstring::npos);
        EXPECT_NE(openSslModule.find(L"/openssl"), std::wstring::npos);
        forget();
    };
    operation.expectToldFailure = [&] {
        EXPECT_NE(resolver->GetSSOClientPluginModule(), L"");
        EXPECT_NE(resolver->GetOpenSslModule(), L"");
        forget();
    };
    // The search for the compatibility file is made once and is then settled;
    // all else is asked anew.
    operation.useAfterwards = [&] {
        EXPECT_NE(resolver->GetSSOClientPluginModule(), L"");
        EXPECT_NE(resolver->GetOpenSslModule(), L"");
        forget();
    };
    Faults::FailEachAllocation(operation);
}

TEST_F(DiscoveryAllocation, FailingInAnExpansionLeavesAText)
{
    std::wstring const original = L"%ExePath%/and/%SSOServerAppPath%/%unknown variable%/";
    std::wstring path;
    std::wstring good;
    Faults::Operation operation = OnAFreshResolver();
    auto const prepareResolver = operation.prepare;
    operation.prepare = [&] {
        prepareResolver();
        resolver->GetSSOServerAppPath();
        path = original;
    };
    operation.run = [&] { resolver->ExpandPathVariables(path); };
    operation.expectGood = [&] {
        if (good.empty())
            good = path;
        EXPECT_EQ(path, good);
        EXPECT_EQ(path.substr(path.size() - 19), L"/%unknown variable%");
    };
    // The next expansion brings it to its end.
    operation.useAfterwards = [&] {
        resolver->ExpandPathVariables(path);
        EXPECT_EQ(path, good);
    };
    operation.discard = [&] {
        resolver.reset();
        std::wstring().swap(path);
    };
    Faults::FailEachAllocation(operation);
}
