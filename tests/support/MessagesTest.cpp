#include "support/Messages.h"

#include <algorithm>
#include <regex>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

using namespace Halvorix::SSOServices;
using Halvorix::Log::LogLevel;

namespace {

struct Expected {
    char const* name;
    Message message;
    LogLevel level;
    wchar_t const* text;
};

// Texts and levels are relied on by whoever reads logs, so they stand here once
// more, to the letter. That none is left out, tests/docs/messages.py sees to.
constexpr Expected AllMessages[] = {
    // Errors.
    {"NoSSOClientModule", Messages::NoSSOClientModule, LogLevel::Error,
     L"Failed to obtain ISSOClientModule. ISSOClientFactory::GetSSOClientModule returned null."},
    {"NoSSOServerManager", Messages::NoSSOServerManager, LogLevel::Error,
     L"Failed to obtain ISSOServerManager. ISSOClientFactory::GetSSOServerManager returned null."},
    {"NoSSOClient", Messages::NoSSOClient, LogLevel::Error,
     L"Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."},
    {"NoSSOClientUI", Messages::NoSSOClientUI, LogLevel::Error,
     L"Failed to obtain ISSOClientUI. ISSOClientFactory::GetSSOClientUI returned null."},
    {"NoSSOClientPrivate", Messages::NoSSOClientPrivate, LogLevel::Error,
     L"Failed to obtain ISSOClientPrivate. ISSOClientFactory::GetSSOClientPrivate returned null."},
    {"PluginNotFound", Messages::PluginNotFound, LogLevel::Error,
     L"Client plugin module not found: %1%"},
    {"PluginLoadFailed", Messages::PluginLoadFailed, LogLevel::Error,
     L"Failed to load client plugin module %1%. Error: %2%"},
    {"FactoryProcMissing", Messages::FactoryProcMissing, LogLevel::Error,
     L"Failed to get factory proc from client plugin module %1%. Error: %2%"},
    {"OpenSslModuleNotFound", Messages::OpenSslModuleNotFound, LogLevel::Error,
     L"Openssl module not found: %1%"},
    {"ConfigInvalid", Messages::ConfigInvalid, LogLevel::Error,
     L"Failed to load client config file %1%. Invalid file format."},
    {"ConfigOverrideMissing", Messages::ConfigOverrideMissing, LogLevel::Error,
     L"Failed to find client config file override %1%"},
    {"ConfigOverrideTooLate", Messages::ConfigOverrideTooLate, LogLevel::Error,
     L"Failed to set client config file override %1% since client config file %2% is already "
     L"loaded"},
    {"ServerMissing", Messages::ServerMissing, LogLevel::Error,
     L"Failed to find SSO server app %1% in the following paths:\n%2%"},
    {"PluginMissing", Messages::PluginMissing, LogLevel::Error,
     L"Failed to find compatible client plugin version for HxSSOServices version %1% in version "
     L"compatibility file %2%"},
    {"PluginMissingNoFile", Messages::PluginMissingNoFile, LogLevel::Error,
     L"Failed to find compatible client plugin version for HxSSOServices version %1% since version "
     L"compatibility file %2% is not found"},
    {"OpenSslMissing", Messages::OpenSslMissing, LogLevel::Error,
     L"Failed to find compatible openssl version for HxSSOServices version %1% in version "
     L"compatibility file %2%"},
    {"OpenSslMissingNoFile", Messages::OpenSslMissingNoFile, LogLevel::Error,
     L"Failed to find compatible openssl version for HxSSOServices version %1% since version "
     L"compatibility file %2% is not found"},
    {"CompatibilityAbsent", Messages::CompatibilityAbsent, LogLevel::Error,
     L"Version compatibility file %1% not found"},
    {"CompatibilityListEmpty", Messages::CompatibilityListEmpty, LogLevel::Error,
     L"Version compatibility list is empty under key %1% in version compatibility file %2%"},
    {"CompatibilityInvalid", Messages::CompatibilityInvalid, LogLevel::Error,
     L"Failed to load file %1%. Possibly json format is not valid."},
    {"RangeInvalid", Messages::RangeInvalid, LogLevel::Error,
     L"Invalid version range in 'compatibleSsoServicesVersion' object in version compatibility "
     L"file %1%. Object ignored."},
    {"RangeMissing", Messages::RangeMissing, LogLevel::Error,
     L"Missing object 'compatibleSsoServicesVersion' in version compatibility file %1%. Object "
     L"ignored."},
    {"ModuleVersionBlank", Messages::ModuleVersionBlank, LogLevel::Error,
     L"Blank or missing key 'version' in %1% in version compatibility file %2%. Object ignored."},
    {"ModuleBlank", Messages::ModuleBlank, LogLevel::Error,
     L"Blank or missing key 'module' in %1% in version compatibility file %2%. Object ignored."},
    {"ModulePathBlank", Messages::ModulePathBlank, LogLevel::Error,
     L"Blank or missing key 'modulePath' or 'modulePathWoW64' in %1% in version compatibility file "
     L"%2%. Object ignored."},
    {"CompatibilityOverrideMissing", Messages::CompatibilityOverrideMissing, LogLevel::Error,
     L"Failed to find version compatibility file override %1%"},
    {"CompatibilityMissing", Messages::CompatibilityMissing, LogLevel::Error,
     L"Failed to find version compatibility file %1% in the following paths:\n%2%"},
    // Warnings.
    {"ConfigMissing", Messages::ConfigMissing, LogLevel::Warning,
     L"Failed to find client config file %1% in the following paths:\n%2%"},
    // Progress.
    {"Banner", Messages::Banner, LogLevel::Info,
     L"%1% module loaded (Version: %2% Config: %3% File: %4%)"},
    {"PluginLoading", Messages::PluginLoading, LogLevel::Info,
     L"Dynamically loading client plugin module %1%"},
    {"PluginLoaded", Messages::PluginLoaded, LogLevel::Info,
     L"Successfully loaded client plugin module %1%"},
    {"FactoryProcGetting", Messages::FactoryProcGetting, LogLevel::Info,
     L"Getting factory proc from client plugin module %1%"},
    {"FactoryGetting", Messages::FactoryGetting, LogLevel::Info,
     L"Getting factory from client plugin module %1%"},
    {"ConfigLoading", Messages::ConfigLoading, LogLevel::Info, L"Loading client config file %1%"},
    {"RegistryRead", Messages::RegistryRead, LogLevel::Info,
     L"Getting HxSSO path from registry: %1%"},
    {"RegistryUnavailable", Messages::RegistryUnavailable, LogLevel::Info,
     L"Unable to get HxSSO path from registry, failed with error: %1%"},
    {"ConfigOverrideSet", Messages::ConfigOverrideSet, LogLevel::Info,
     L"Client config file override set to %1%"},
    {"ConfigOverrideFound", Messages::ConfigOverrideFound, LogLevel::Info,
     L"Found client config file override at %1%"},
    {"ConfigSearching", Messages::ConfigSearching, LogLevel::Info,
     L"Searching for client config file %1% in the following paths:\n%2%"},
    {"ConfigFound", Messages::ConfigFound, LogLevel::Info, L"Found client config file at %1%"},
    {"ServerSearching", Messages::ServerSearching, LogLevel::Info,
     L"Searching for SSO server app %1% in the following paths:\n%2%"},
    {"ServerFound", Messages::ServerFound, LogLevel::Info, L"Found SSO server app at %1%"},
    {"PluginSearching", Messages::PluginSearching, LogLevel::Info,
     L"Searching for compatible client plugin version for HxSSOServices version %1% in version "
     L"compatibility file %2%"},
    {"PluginFound", Messages::PluginFound, LogLevel::Info,
     L"Found compatible client plugin for HxSSOServices version %1% in version compatibility file: "
     L"%2%"},
    {"OpenSslOverrideSearching", Messages::OpenSslOverrideSearching, LogLevel::Info,
     L"Searching for openssl override in client config file %1%"},
    {"OpenSslOverrideFound", Messages::OpenSslOverrideFound, LogLevel::Info,
     L"Found openssl override in client config file %1% and using it: %2%"},
    {"OpenSslOverrideNone", Messages::OpenSslOverrideNone, LogLevel::Info,
     L"No openssl override specified in client config file %1%"},
    {"OpenSslSearching", Messages::OpenSslSearching, LogLevel::Info,
     L"Searching for compatible openssl version for HxSSOServices version %1% in version "
     L"compatibility file %2%"},
    {"OpenSslFound", Messages::OpenSslFound, LogLevel::Info,
     L"Found compatible openssl version for HxSSOServices version %1% in version compatibility "
     L"file: %2%"},
    {"CompatibilityOverrideFound", Messages::CompatibilityOverrideFound, LogLevel::Info,
     L"Found version compatibility file override at %1%"},
    {"CompatibilitySearching", Messages::CompatibilitySearching, LogLevel::Info,
     L"Searching for version compatibility file %1% in the following paths:\n%2%"},
    {"CompatibilityFound", Messages::CompatibilityFound, LogLevel::Info,
     L"Found version compatibility file at %1%"},
};

/// How many arguments a text takes: the highest of its placeholders.
int Placeholders(std::wstring const& text)
{
    std::wregex const pattern(L"%([0-9]+)%");
    int highest = 0;
    for (std::wsregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
        highest = std::max(highest, std::stoi((*match)[1]));
    return highest;
}

std::wstring Filled(Message const& message)
{
    switch (Placeholders(message.text)) {
    case 0:
        return Compose(message);
    case 1:
        return Compose(message, L"<one>");
    case 2:
        return Compose(message, L"<one>", L"<two>");
    default:
        return Compose(message, L"<one>", L"<two>", L"<three>", L"<four>");
    }
}

} // namespace

TEST(Messages, HaveTheirTextsAndLevelsToTheLetter)
{
    for (Expected const& expected : AllMessages) {
        EXPECT_EQ(std::wstring_view(expected.message.text), expected.text) << expected.name;
        EXPECT_EQ(expected.message.level, expected.level) << expected.name;
    }
}

TEST(Messages, HaveLevelsWithTheNumbersThatLoggersKnow)
{
    EXPECT_EQ(static_cast<int>(LogLevel::Error), 2);
    EXPECT_EQ(static_cast<int>(LogLevel::Warning), 4);
    EXPECT_EQ(static_cast<int>(LogLevel::Info), 8);
}

TEST(Messages, SayNothingTwice)
{
    std::set<std::wstring_view> texts;
    for (Expected const& expected : AllMessages)
        EXPECT_TRUE(texts.insert(expected.message.text).second) << expected.name;
}

TEST(Messages, TakeTheArgumentsOfTheirPlaceholders)
{
    for (Expected const& expected : AllMessages) {
        SCOPED_TRACE(expected.name);
        std::wstring filled;
        ASSERT_NO_THROW(filled = Filled(expected.message));
        EXPECT_EQ(filled.find(L'%'), std::wstring::npos);
        if (Placeholders(expected.message.text) > 0) {
            EXPECT_NE(filled.find(L"<one>"), std::wstring::npos);
        }
    }
}

TEST(Messages, ThrowForAMissingArgument)
{
    EXPECT_ANY_THROW(Compose(Messages::PluginLoadFailed, L"one"));
    EXPECT_ANY_THROW(Compose(Messages::PluginNotFound, L"one", L"two"));
}
