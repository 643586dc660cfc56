// Hosts with another locale than the tests' own.

#include <clocale>
#include <filesystem>
#include <locale>

#include <gmock/gmock.h>

#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServicesPrivate.h>
#include <WebServicesManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/ThisBuild.h"
#include "host/Expected.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::OAuth2TokenSpec;
using Halvorix::WebServices::OAuth2TokenType;
using Halvorix::WebServices::WebServicesManager;
using Rig::Installation;
using Rig::Outcome;
using testing::ElementsAreArray;

namespace {

HOST_PROGRAM(LivesInItsLocale)
{
    // As hosts do; messages stay as they are.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_NUMERIC, "");
    WebServicesManager::Initialize(false);
    report("loggedIn", WebServicesManager::GetInstance()->IsLoggedIn());
    std::wstring path = L"%EXEPATH%|%ssoservicesmodulepath%|%SSOSERVERAPPEXEDIRPATH%";
    SSOClientPrivate::ExpandPathVariables(path);
    report("path", path);
    std::string document;
    OAuth2TokenSpec const spec(static_cast<OAuth2TokenType>(1234567), L"\u00dc a");
    SSOServicesPrivate::OAuth2TokenSpecToJson(spec, document);
    report("document", document);
    report("global", std::locale() == std::locale::classic() ? "classic" : "set");
}

struct Locale {
    char const* name;
    char const* language;
    char const* characters;
};

} // namespace

class LocaleOfTheHost : public testing::TestWithParam<Locale> {};

// Names of files are UTF-8 on Linux whatever the locale says, numbers are the same in
// all of them, and the Turkish I is a letter like any other.
TEST_P(LocaleOfTheHost, ChangesNothingOfTheLoad)
{
    if (Rig::IsSanitized())
        GTEST_SKIP() << "the C library loses memory of its own for the folders of LOCPATH";
    auto const [name, language, characters] = GetParam();
    if (Rig::IsWindows() && std::string(characters) != "UTF-8")
        GTEST_SKIP() << "on Windows the locale decides which file a narrow name means";
    Installation installation("Bücher ☃");
    if (!installation.UseLocale(language, characters))
        GTEST_SKIP() << "localedef cannot make " << language << '.' << characters << " here";
    installation.Complete().ClientConfig(
        R"({"ssoServer": {"searchPaths": "{root}/server", "serverName": 1.5}})");
    Outcome const outcome = installation.Run("LivesInItsLocale");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["global"], "set");
    EXPECT_EQ(outcome["loggedIn"], true);
    EXPECT_EQ(outcome["path"], "{root}/app|{root}/lib|{root}/server");
    EXPECT_EQ(outcome["document"],
              "{\n\t\"legacy\" : false,\n\t\"scope\" : \"a \\u00dc\",\n\t\"type\" : 1234567\n}");
    EXPECT_EQ(outcome.Called(R"(ISSOServerManager::SetSSOServerName("1.5"))"), 1);
    EXPECT_THAT(outcome.log, ElementsAreArray(Rig::LinesOfGoodLoad()));
}

INSTANTIATE_TEST_SUITE_P(Locale, LocaleOfTheHost,
                         testing::Values(Locale{"German", "de_DE", "UTF-8"},
                                         Locale{"Turkish", "tr_TR", "UTF-8"},
                                         Locale{"GermanOfOneByte", "de_DE", "ISO-8859-1"},
                                         Locale{"Japanese", "ja_JP", "EUC-JP"}),
                         [](auto const& info) { return std::string(info.param.name); });
