#include "host/SSOClientManager.h"

#include <iostream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "support/EarlyLines.h"
#include "support/LogSink.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;

namespace {

/// What goes to the console meanwhile.
class Console {
public:
    Console() : original(std::wcout.rdbuf(text.rdbuf())) {}
    ~Console() { std::wcout.rdbuf(original); }
    Console(Console const&) = delete;
    Console& operator=(Console const&) = delete;

    std::wstring Text() const { return text.str(); }

private:
    std::wostringstream text;
    std::wstreambuf* original;
};

} // namespace

TEST(SSOClientManager, IsOneUntilItIsReleased)
{
    std::shared_ptr<SSOClientManager> const first = SSOClientManager::GetInstance();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(SSOClientManager::GetInstance(), first);
    EXPECT_TRUE(SSOClientManager::ReleaseInstance());
    std::shared_ptr<SSOClientManager> const second = SSOClientManager::GetInstance();
    EXPECT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(first.use_count(), 1);
    SSOClientManager::ReleaseInstance();
}

TEST(EarlyLog, HoldsEveryLineAndShowsErrorsAtOnce)
{
    TakeEarlyLog();
    Console const console;
    for (int const level : {1, 3, 4, 8, 16})
        LogWrite(L"line", static_cast<Log::LogLevel>(level));
    EXPECT_EQ(console.Text(), L"");
    LogWrite(L"error", Log::LogLevel::Error);
    EXPECT_EQ(console.Text(), L"error\n");
    std::vector<EarlyLogEntry> const lines = TakeEarlyLines();
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[5].text, L"error");
    EXPECT_EQ(lines[5].level, Log::LogLevel::Error);
    EXPECT_EQ(static_cast<int>(lines[4].level), 16);
}

TEST(EarlyLog, IsShownWholeAndEmptiedByAFlush)
{
    TakeEarlyLog();
    Console const console;
    FlushEarlyLog();
    EXPECT_EQ(console.Text(), L"");
    LogWrite(L"first", Log::LogLevel::Info);
    LogWrite(L"second", Log::LogLevel::Error);
    LogWrite(L"third", Log::LogLevel::Warning);
    FlushEarlyLog();
    EXPECT_EQ(console.Text(), L"second\nfirst\nsecond\nthird\n");
    EXPECT_TRUE(TakeEarlyLog().IsEmpty());
}

TEST(Resolver, LosesItsLinesWithoutACallback)
{
    SSOPathResolver resolver({"10"}, LogFunction());
    TakeEarlyLog();
    Console const console;
    EXPECT_EQ(resolver.GetSSOServerProcessName(), "");
    EXPECT_EQ(resolver.GetSSOServerName(), "");
    EXPECT_EQ(resolver.GetSSOServerAppPath(), L"");
    EXPECT_EQ(resolver.GetSSOServerName(), "Halvorix.SSO.DefaultServer-v2");
    EXPECT_EQ(resolver.GetSSOServerProcessName(), "Halvorix.SSO.DefaultServer-v2");
    EXPECT_EQ(console.Text(), L"");
    EXPECT_TRUE(TakeEarlyLog().IsEmpty());
}

TEST(Resolver, TellsOfAnOverrideBeforeItIsStored)
{
    std::vector<std::wstring> seen;
    bool throws = false;
    SSOClientManager* asked = nullptr;
    SSOClientManager manager([&](std::wstring const& text, Log::LogLevel) {
        if (text.find(L"override set to") == std::wstring::npos)
            return;
        seen.push_back(asked->Ask(&SSOPathResolver::GetSSOClientConfigFileOverride));
        if (throws)
            throw std::runtime_error("full");
    });
    asked = &manager;
    manager.SetSSOClientConfigFileOverride(L"first");
    manager.SetSSOClientConfigFileOverride(L"second");
    EXPECT_EQ(manager.Ask(&SSOPathResolver::GetSSOClientConfigFile), L"second");
    throws = true;
    EXPECT_THROW(manager.SetSSOClientConfigFileOverride(L"third"), std::runtime_error);
    EXPECT_EQ(manager.Ask(&SSOPathResolver::GetSSOClientConfigFileOverride), L"second");
    EXPECT_EQ(seen, (std::vector<std::wstring>{L"", L"first", L"second"}));
}

// A search that came between has no part in it; a load has the last word.
TEST(Resolver, AsksAgainWhatAnOverrideMeetsBeforeItIsStored)
{
    for (bool const loads : {false, true}) {
        std::wstring found;
        std::wstring errors;
        SSOClientManager* asked = nullptr;
        SSOClientManager manager([&](std::wstring const& text, Log::LogLevel) {
            if (text.find(L"override set to") != std::wstring::npos) {
                if (loads)
                    asked->Ask(&SSOPathResolver::GetSSOServerAppPath);
                found = asked->Ask(&SSOPathResolver::GetSSOClientConfigFile);
            }
            if (text.rfind(L"Failed to set", 0) == 0)
                errors += text;
        });
        asked = &manager;
        manager.SetSSOClientConfigFileOverride(L"late");
        EXPECT_EQ(manager.Ask(&SSOPathResolver::GetSSOClientConfigFileOverride),
                  loads ? L"" : L"late");
        EXPECT_EQ(manager.Ask(&SSOPathResolver::GetSSOClientConfigFile), loads ? found : L"late");
        EXPECT_EQ(errors, loads ? L"Failed to set client config file override late since client "
                                  L"config file " +
                                      found + L" is already loaded"
                                : L"");
    }
}
