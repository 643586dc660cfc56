#include "support/Messages.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "framework/ThisBuild.h"
#include "support/TextConversion.h"

using namespace Halvorix::SSOServices;
using Halvorix::Log::LogLevel;

namespace {

struct Named {
    char const* name;
    Message message;
};

#define NAMED(name)                                                                                \
    Named { #name, Messages::name }

// That none is left out, tests/docs/messages.py sees to.
constexpr Named AllMessages[] = {
    NAMED(Banner),
    NAMED(PluginNotFound),
    NAMED(PluginLoading),
    NAMED(PluginLoadFailed),
    NAMED(PluginLoaded),
    NAMED(FactoryProcGetting),
    NAMED(FactoryProcMissing),
    NAMED(FactoryGetting),
    NAMED(OpenSslModuleNotFound),
    NAMED(NoSSOClientModule),
    NAMED(NoSSOServerManager),
    NAMED(NoSSOClient),
    NAMED(NoSSOClientUI),
    NAMED(NoSSOClientPrivate),
    NAMED(ConfigOverrideFound),
    NAMED(ConfigOverrideMissing),
    NAMED(ConfigSearching),
    NAMED(ConfigFound),
    NAMED(ConfigMissing),
    NAMED(ConfigLoading),
    NAMED(ConfigInvalid),
    NAMED(ConfigOverrideSet),
    NAMED(ConfigOverrideTooLate),
    NAMED(RegistryUnavailable),
    NAMED(RegistryRead),
    NAMED(ServerSearching),
    NAMED(ServerFound),
    NAMED(ServerMissing),
    NAMED(CompatibilityOverrideFound),
    NAMED(CompatibilityOverrideMissing),
    NAMED(CompatibilitySearching),
    NAMED(CompatibilityFound),
    NAMED(CompatibilityMissing),
    NAMED(CompatibilityAbsent),
    NAMED(CompatibilityListEmpty),
    NAMED(CompatibilityInvalid),
    NAMED(ModuleBlank),
    NAMED(ModulePathBlank),
    NAMED(ModuleVersionBlank),
    NAMED(RangeMissing),
    NAMED(RangeInvalid),
    NAMED(PluginSearching),
    NAMED(PluginFound),
    NAMED(PluginMissing),
    NAMED(PluginMissingNoFile),
    NAMED(OpenSslOverrideSearching),
    NAMED(OpenSslOverrideFound),
    NAMED(OpenSslOverrideNone),
    NAMED(OpenSslSearching),
    NAMED(OpenSslFound),
    NAMED(OpenSslMissing),
    NAMED(OpenSslMissingNoFile),
};

char const* NameOf(LogLevel level)
{
    switch (level) {
    case LogLevel::Error:
        return "error";
    case LogLevel::Warning:
        return "warning";
    case LogLevel::Info:
        return "info";
    }
    return "no level";
}

/// Level and text in one line.
std::string AsTold(Message const& message)
{
    std::string line = NameOf(message.level) + std::string(": ") + WideToUtf8(message.text);
    for (std::size_t at = line.find('\n'); at != std::string::npos; at = line.find('\n', at))
        line.replace(at, 1, "\\n");
    return line;
}

/// Of each message that tests/docs/messages.txt tells, the line with its level and text.
std::map<std::string, std::string> Told()
{
    std::ifstream stream(Rig::SourceFile("tests/docs/messages.txt"));
    std::map<std::string, std::string> told;
    std::string name;
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.find_first_of(":# ") == std::string::npos)
            name = line;
        for (LogLevel const level : {LogLevel::Error, LogLevel::Warning, LogLevel::Info}) {
            if (line.rfind(NameOf(level) + std::string(": "), 0) == 0)
                told[name] = line;
        }
    }
    return told;
}

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

// Texts and levels are relied on by whoever reads logs, so they stand there once more.
TEST(Messages, HaveTheirTextsAndLevelsToTheLetter)
{
    std::map<std::string, std::string> told = Told();
    EXPECT_EQ(told.size(), std::size(AllMessages));
    for (Named const& named : AllMessages)
        EXPECT_EQ(AsTold(named.message), told[named.name]) << named.name;
}

TEST(Messages, SayNothingTwice)
{
    std::set<std::wstring_view> texts;
    for (Named const& named : AllMessages)
        EXPECT_TRUE(texts.insert(named.message.text).second) << named.name;
}

TEST(Messages, TakeTheArgumentsOfTheirPlaceholders)
{
    for (Named const& named : AllMessages) {
        SCOPED_TRACE(named.name);
        std::wstring filled;
        ASSERT_NO_THROW(filled = Filled(named.message));
        EXPECT_EQ(filled.find(L'%'), std::wstring::npos);
        if (Placeholders(named.message.text) > 0) {
            EXPECT_NE(filled.find(L"<one>"), std::wstring::npos);
        }
    }
}

TEST(Messages, ThrowForAMissingArgument)
{
    EXPECT_ANY_THROW(Compose(Messages::PluginLoadFailed, L"one"));
    EXPECT_ANY_THROW(Compose(Messages::PluginNotFound, L"one", L"two"));
}
